#include "AllocationCounter.h"

#include "TestScale.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {
std::atomic<long> allocations{0};

void Count() {
  allocations.fetch_add(1, std::memory_order_relaxed);
}
} // namespace

long AllocationCount() {
  return allocations.load(std::memory_order_relaxed);
}

#if defined(__GLIBC__) && !TEST_UNDER_SANITIZER

// Every allocation of the process ends here: the program's definitions come before the C library's.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

__attribute__((visibility("default"))) void* malloc(std::size_t size) {
  Count();
  return __libc_malloc(size);
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) {
  Count();
  return __libc_calloc(count, size);
}

__attribute__((visibility("default"))) void* realloc(void* block, std::size_t size) {
  Count();
  return __libc_realloc(block, size);
}

__attribute__((visibility("default"))) void* aligned_alloc(std::size_t alignment,
                                                           std::size_t size) {
  Count();
  return __libc_memalign(alignment, size);
}
}

#else

// A sanitizer owns malloc, but the operators that the library could use can still be counted.
void* operator new(std::size_t size) {
  Count();
  if (void* const block = std::malloc(size != 0 ? size : 1)) return block;
  throw std::bad_alloc();
}

void* operator new[](std::size_t size) {
  return ::operator new(size);
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

#endif
