#include "OneFailingAllocation.h"

#include "TestScale.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constexpr long kNever = -1;
thread_local long successesLeft = kNever;
thread_local bool hasFailed = false;

bool FailsNow() {
  if (successesLeft == kNever) return false;
  const bool fails = successesLeft == 0;
  --successesLeft;
  hasFailed = hasFailed || fails;
  return fails;
}

} // namespace

OneFailingAllocation::OneFailingAllocation(long successes) {
  hasFailed = false;
  successesLeft = successes;
}

OneFailingAllocation::~OneFailingAllocation() {
  successesLeft = kNever;
}

bool OneFailingAllocation::HasFailed() const {
  return hasFailed;
}

#if defined(__GLIBC__) && !TEST_UNDER_SANITIZER

// The program's definitions come before the C library's, and operator new calls malloc.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

__attribute__((visibility("default"))) void* malloc(std::size_t size) {
  return FailsNow() ? nullptr : __libc_malloc(size);
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) {
  return FailsNow() ? nullptr : __libc_calloc(count, size);
}

__attribute__((visibility("default"))) void* realloc(void* block, std::size_t size) {
  return FailsNow() ? nullptr : __libc_realloc(block, size);
}
}

#else

void* operator new(std::size_t size) {
  void* const block = FailsNow() ? nullptr : std::malloc(size != 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void* operator new[](std::size_t size) {
  return ::operator new(size);
}

// The sanitizer's own would come from another heap than the deletes below expect.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return FailsNow() ? nullptr : std::malloc(size != 0 ? size : 1);
}

void* operator new[](std::size_t size, const std::nothrow_t& none) noexcept {
  return ::operator new(size, none);
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
