#include "cow_String.h"

__attribute__((visibility("default"))) bool operator==(const cow_String& a,
                                                       const cow_String& b) noexcept {
  return a.Length() == b.Length();
}
