#include "FailingMemory.h"

#include <limits>
#include <new>

namespace {

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();
thread_local std::size_t limitBytes = kNoLimit;

} // namespace

FailingMemory::FailingMemory(std::size_t limit) {
  limitBytes = limit;
}
FailingMemory::~FailingMemory() {
  limitBytes = kNoLimit;
}

// They replace the standard ones in the whole program, the library included.
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  if (size >= limitBytes) return nullptr;
  try {
    return ::operator new[](size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  if (size >= limitBytes) return nullptr;
  try {
    return ::operator new[](size, alignment);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
