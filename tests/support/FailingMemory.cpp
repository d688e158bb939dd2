#include "FailingMemory.h"

#include <algorithm>
#include <limits>
#include <new>

namespace {

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();
thread_local std::size_t limitBytes = kNoLimit;
thread_local std::size_t largestAsked = 0;

bool IsRefused(std::size_t size) {
  largestAsked = std::max(largestAsked, size);
  return size >= limitBytes;
}

} // namespace

FailingMemory::FailingMemory(std::size_t limit) {
  limitBytes = limit;
  largestAsked = 0;
}
FailingMemory::~FailingMemory() {
  limitBytes = kNoLimit;
}

std::size_t FailingMemory::LargestAsked() const {
  return largestAsked;
}

// These operators replace the standard operators in the whole program and the library.
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  if (IsRefused(size)) return nullptr;
  try {
    return ::operator new[](size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  if (IsRefused(size)) return nullptr;
  try {
    return ::operator new[](size, alignment);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
