#include "cls_Uid.h"

// Whatever the storage held: here a number that is never the same.
cls_Uid::cls_Uid() noexcept {
  static std::uint64_t garbage = 1;
  m_number = garbage *= 3;
}
