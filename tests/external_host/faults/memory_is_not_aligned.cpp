#include "xh_Export.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t kShift = 24;

} // namespace

// The blocks lie 8 bytes beside the border that the compiler relies on.
XH_API void* operator new(std::size_t size) {
  return static_cast<char*>(std::malloc(size + kShift)) + kShift;
}
XH_API void operator delete(void* block) noexcept {
  if (block != nullptr) std::free(static_cast<char*>(block) - kShift);
}
XH_API void operator delete(void* block, std::size_t) noexcept {
  ::operator delete(block);
}
