#include "HostAllocator.h"

#include "TestScale.h"
#include "mem_Memory.h"

#include <dlfcn.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>

namespace {

std::atomic<long> liveBlocks{0};
std::atomic<long> allocationsAround{0};
std::atomic<void*> lastCallerAround{nullptr};

std::atomic<bool> isWatching{false};
std::atomic<bool> isMallocIncluded{false};
std::atomic<long> askedCount{0};
std::atomic<long> failsAt{-1};
/// Is true while one of the functions below takes its block from malloc.
thread_local bool isInside = false;

bool FailsNow() {
  return isWatching && askedCount++ == failsAt;
}

/// Counts a block, unless malloc counts it.
void* Counted(void* block, bool isNew) {
  if (!SeesAllocationsAround() && block != nullptr && isNew) {
    liveBlocks.fetch_add(1, std::memory_order_relaxed);
  }
  return block;
}

void* Take(std::size_t size, std::size_t alignment = 0) {
  if (FailsNow()) return nullptr;
  const std::size_t bytes = size != 0 ? size : 1;
  isInside = true;
  void* const block =
      alignment == 0
          ? std::malloc(bytes)
          : std::aligned_alloc(alignment, (bytes + alignment - 1) / alignment * alignment);
  isInside = false;
  return Counted(block, true);
}

void* TakeOrThrow(std::size_t size, std::size_t alignment = 0) {
  if (void* const block = Take(size, alignment)) return block;
  throw std::bad_alloc();
}

void Return(void* block) {
  if (block == nullptr) return;
  if (!SeesAllocationsAround()) liveBlocks.fetch_sub(1, std::memory_order_relaxed);
  std::free(block);
}

} // namespace

long LiveBlocks() {
  return liveBlocks.load(std::memory_order_relaxed);
}

long AllocationsAround() {
  return allocationsAround.load(std::memory_order_relaxed);
}

std::string LastAllocationAround() {
  Dl_info where = {};
  if (dladdr(lastCallerAround.load(), &where) == 0) return "?";
  return std::string(where.dli_fname) + ": " + (where.dli_sname != nullptr ? where.dli_sname : "?");
}

FailingNth::FailingNth(long successes, Allocations which) {
  askedCount = 0;
  failsAt = successes;
  isMallocIncluded = which == Allocations::All;
  isWatching = true;
}

FailingNth::~FailingNth() {
  isWatching = false;
}

bool FailingNth::HasFailed() const {
  return failsAt >= 0 && askedCount > failsAt;
}

long FailingNth::Asked() const {
  return askedCount;
}

// The program's definitions come before those of the host and of the C++ library.

void* mem_Malloc(std::size_t size) {
  return size != 0 ? Take(size) : nullptr;
}

void* mem_Realloc(void* block, std::size_t size) {
  if (size == 0) {
    Return(block);
    return nullptr;
  }
  if (FailsNow()) return nullptr;
  isInside = true;
  void* const grown = std::realloc(block, size);
  isInside = false;
  return Counted(grown, block == nullptr);
}

void mem_Free(void* block) {
  Return(block);
}

// clang-format off
void* operator new(std::size_t size) { return TakeOrThrow(size); }
void* operator new[](std::size_t size) { return TakeOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Take(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Take(size); }
void* operator new(std::size_t size, std::align_val_t to) { return TakeOrThrow(size, static_cast<std::size_t>(to)); }
void* operator new[](std::size_t size, std::align_val_t to) { return TakeOrThrow(size, static_cast<std::size_t>(to)); }
void* operator new(std::size_t size, std::align_val_t to, const std::nothrow_t&) noexcept { return Take(size, static_cast<std::size_t>(to)); }
void* operator new[](std::size_t size, std::align_val_t to, const std::nothrow_t&) noexcept { return Take(size, static_cast<std::size_t>(to)); }
void operator delete(void* block) noexcept { Return(block); }
void operator delete[](void* block) noexcept { Return(block); }
void operator delete(void* block, std::size_t) noexcept { Return(block); }
void operator delete[](void* block, std::size_t) noexcept { Return(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { Return(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { Return(block); }
void operator delete(void* block, std::align_val_t) noexcept { Return(block); }
void operator delete[](void* block, std::align_val_t) noexcept { Return(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { Return(block); }
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept { Return(block); }
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept { Return(block); }
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept { Return(block); }
// clang-format on

#if defined(__GLIBC__) && !TEST_UNDER_SANITIZER

bool SeesAllocationsAround() {
  return true;
}

namespace {

enum class Caller { Exception, Records, Other };

/// Finds who asks for memory, by its code.
Caller Identify(void* code) {
  Dl_info where = {};
  if (dladdr(code, &where) == 0) return Caller::Other;
  // The storage of exceptions in flight belongs to the language.
  const std::string_view function = where.dli_sname != nullptr ? where.dli_sname : "";
  if (function == "__cxa_allocate_exception") return Caller::Exception;
  if (function == "__cxa_allocate_dependent_exception") return Caller::Exception;
  // The store of records serves programs without a host, too.
  const std::string_view library = where.dli_fname != nullptr ? where.dli_fname : "";
  const bool isRecords = library.find("libgsl_records") != std::string_view::npos;
  return isRecords ? Caller::Records : Caller::Other;
}

/// Remembers callers, because finding their names takes longer than most operations.
Caller CallerOf(void* code) {
  constexpr std::size_t kPlaces = 1024;
  struct Known {
    void* code;
    Caller caller;
  };
  static thread_local Known known[kPlaces] = {};
  Known& place = known[reinterpret_cast<std::uintptr_t>(code) / 4 % kPlaces];
  if (place.code != code) place = {code, Identify(code)};
  return place.caller;
}

/// Returns whether an allocation that the host does not see fails.
bool FailsAround(void* code) {
  if (!isWatching || isInside) return false;
  isInside = true;
  const Caller caller = CallerOf(code);
  isInside = false;
  if (caller == Caller::Exception) return false;
  if (caller != Caller::Records) {
    allocationsAround.fetch_add(1, std::memory_order_relaxed);
    lastCallerAround = code;
  }
  return isMallocIncluded && FailsNow();
}

void* NewBlock(void* block) {
  if (block == nullptr) {
    errno = ENOMEM;
  } else {
    liveBlocks.fetch_add(1, std::memory_order_relaxed);
  }
  return block;
}

} // namespace

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

void __libc_free(void* block);

#define REPLACED __attribute__((visibility("default")))

REPLACED void* malloc(std::size_t size) {
  return NewBlock(FailsAround(__builtin_return_address(0)) ? nullptr : __libc_malloc(size));
}

REPLACED void* calloc(std::size_t count, std::size_t size) {
  return NewBlock(FailsAround(__builtin_return_address(0)) ? nullptr : __libc_calloc(count, size));
}

REPLACED void free(void* block) {
  if (block == nullptr) return;
  liveBlocks.fetch_sub(1, std::memory_order_relaxed);
  __libc_free(block);
}

REPLACED void* realloc(void* block, std::size_t size) {
  if (block == nullptr) {
    return NewBlock(FailsAround(__builtin_return_address(0)) ? nullptr : __libc_malloc(size));
  }
  if (size == 0) {
    free(block);
    return nullptr;
  }
  void* const grown =
      FailsAround(__builtin_return_address(0)) ? nullptr : __libc_realloc(block, size);
  if (grown == nullptr) errno = ENOMEM;
  return grown;
}

REPLACED void* memalign(std::size_t alignment, std::size_t size) {
  return NewBlock(FailsAround(__builtin_return_address(0)) ? nullptr
                                                           : __libc_memalign(alignment, size));
}

REPLACED void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return NewBlock(FailsAround(__builtin_return_address(0)) ? nullptr
                                                           : __libc_memalign(alignment, size));
}

REPLACED int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  void* const made = NewBlock(
      FailsAround(__builtin_return_address(0)) ? nullptr : __libc_memalign(alignment, size));
  if (made == nullptr) return ENOMEM;
  *block = made;
  return 0;
}
}

#else

bool SeesAllocationsAround() {
  return false;
}

#endif
