#include "mem_Memory.h"
#include "mem_Modules.h"
#include "xh_Journal.h"
#include "xh_Memory.h"

#include <atomic>
#include <cstdlib>
#include <new>
#include <string>

namespace {

std::atomic<unsigned long> requests{0};
std::atomic<long> live{0};
thread_local bool failing = false;
thread_local unsigned long allowed = 0;

bool Refused() {
  if (!failing) return false;
  if (allowed == 0) return true;
  --allowed;
  return false;
}

void* TakeOrThrow(std::size_t size, std::size_t alignment) {
  void* const block = xh_Memory::Take(size, alignment);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

std::string& Journal() {
  // A stop writes too, and must not need memory.
  static std::string& journal = []() -> std::string& {
    std::string& made = *new std::string;
    made.reserve(1 << 16);
    return made;
  }();
  return journal;
}

void Note(char sign, const char* prefix) {
  if (Journal().size() + 16 > Journal().capacity()) return;
  Journal() += sign;
  Journal() += prefix;
  Journal() += ' ';
}

} // namespace

unsigned long xh_Memory::Requests() {
  return requests;
}

long xh_Memory::LiveBlocks() {
  return live;
}

void xh_Memory::FailAfter(unsigned long count) {
  allowed = count;
  failing = true;
}

void xh_Memory::StopFailing() {
  failing = false;
}

void* xh_Memory::Take(unsigned long size, unsigned long alignment) {
  if (Refused()) return nullptr;
  void* block = nullptr;
  if (alignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__) {
    block = std::malloc(size != 0 ? size : 1);
  } else if (posix_memalign(&block, alignment, size) != 0) {
    block = nullptr;
  }
  if (block == nullptr) return nullptr;
  ++requests;
  ++live;
  return block;
}

void xh_Memory::Release(void* block) {
  if (block == nullptr) return;
  --live;
  std::free(block);
}

void* mem_Malloc(std::size_t size) {
  return size != 0 ? xh_Memory::Take(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__) : nullptr;
}

void mem_Free(void* block) {
  xh_Memory::Release(block);
}

const char* xh_Journal() {
  return Journal().c_str();
}

#define XH_LIBRARY(prefix)                                                                         \
  void prefix##_initialize(int&) {                                                                 \
    Note('+', #prefix);                                                                            \
  }                                                                                                \
  void prefix##_finalize(int&) {                                                                   \
    Note('-', #prefix);                                                                            \
  }

XH_LIBRARY(mem)
XH_LIBRARY(typ)
XH_LIBRARY(pnt)
XH_LIBRARY(omni)
XH_LIBRARY(atr)
XH_LIBRARY(cow)
XH_LIBRARY(nex)
XH_LIBRARY(g3d)
XH_LIBRARY(omu)

// Every heap object of the process comes from this host.

constexpr std::size_t kDefault = __STDCPP_DEFAULT_NEW_ALIGNMENT__;

XH_API void* operator new(std::size_t size) {
  return TakeOrThrow(size, kDefault);
}
XH_API void* operator new[](std::size_t size) {
  return TakeOrThrow(size, kDefault);
}
XH_API void* operator new(std::size_t size, std::align_val_t alignment) {
  return TakeOrThrow(size, static_cast<std::size_t>(alignment));
}
XH_API void* operator new[](std::size_t size, std::align_val_t alignment) {
  return TakeOrThrow(size, static_cast<std::size_t>(alignment));
}
XH_API void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return xh_Memory::Take(size, kDefault);
}
XH_API void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return xh_Memory::Take(size, kDefault);
}
XH_API void* operator new(std::size_t size, std::align_val_t a, const std::nothrow_t&) noexcept {
  return xh_Memory::Take(size, static_cast<std::size_t>(a));
}
XH_API void* operator new[](std::size_t size, std::align_val_t a, const std::nothrow_t&) noexcept {
  return xh_Memory::Take(size, static_cast<std::size_t>(a));
}

XH_API void operator delete(void* block) noexcept {
  xh_Memory::Release(block);
}
XH_API void operator delete[](void* block) noexcept {
  xh_Memory::Release(block);
}
XH_API void operator delete(void* block, std::size_t) noexcept {
  xh_Memory::Release(block);
}
XH_API void operator delete[](void* block, std::size_t) noexcept {
  xh_Memory::Release(block);
}
XH_API void operator delete(void* block, std::align_val_t) noexcept {
  xh_Memory::Release(block);
}
XH_API void operator delete[](void* block, std::align_val_t) noexcept {
  xh_Memory::Release(block);
}
XH_API void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
  xh_Memory::Release(block);
}
XH_API void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
  xh_Memory::Release(block);
}
XH_API void operator delete(void* block, const std::nothrow_t&) noexcept {
  xh_Memory::Release(block);
}
XH_API void operator delete[](void* block, const std::nothrow_t&) noexcept {
  xh_Memory::Release(block);
}
