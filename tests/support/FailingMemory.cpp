#include "FailingMemory.h"

#include "mem_Memory.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

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

// The program's definition comes before the host's, also for the library. The host frees the
// blocks.
void* mem_Malloc(std::size_t size) {
  if (size == 0 || IsRefused(size)) return nullptr;
  return std::malloc(size);
}
