#include "FailingAllocation.h"

#include <cstdlib>
#include <new>

namespace {

constexpr int kUnlimited = -1;
thread_local int successesLeft = kUnlimited;
thread_local int refused = 0;

void* AllocateOrThrow(std::size_t size) {
  if (void* const block = std::malloc(size > 0 ? size : 1)) return block;
  throw std::bad_alloc();
}

void* AllocateOrNull(std::size_t size) {
  if (successesLeft == 0) {
    ++refused;
    return nullptr;
  }
  if (successesLeft > 0) --successesLeft;
  return std::malloc(size > 0 ? size : 1);
}

} // namespace

FailingAllocation::FailingAllocation(int successes) {
  refused = 0;
  successesLeft = successes;
}

FailingAllocation::~FailingAllocation() {
  successesLeft = kUnlimited;
}

int FailingAllocation::Refused() const {
  return refused;
}

// All operators are replaced, so that every block is allocated and released in the same way.
void* operator new(std::size_t size) {
  return AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
  return AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return AllocateOrNull(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return AllocateOrNull(size);
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}
