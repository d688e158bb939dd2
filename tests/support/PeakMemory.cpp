#include "PeakMemory.h"

#include <atomic>
#include <cstdlib>
#include <malloc.h>
#include <new>

namespace {

std::atomic<std::size_t> held{0};
std::atomic<std::size_t> most{0};

void* Allocate(std::size_t size) {
  void* const block = std::malloc(size != 0 ? size : 1);
  if (block == nullptr) return nullptr;
  const std::size_t now = held += malloc_usable_size(block);
  if (now > most) most = now;
  return block;
}

void* AllocateOrThrow(std::size_t size) {
  if (void* const block = Allocate(size)) return block;
  throw std::bad_alloc();
}

void Release(void* block) {
  if (block != nullptr) held -= malloc_usable_size(block);
  std::free(block);
}

} // namespace

PeakMemory::PeakMemory() : m_before(held) {
  most = m_before;
}

std::size_t PeakMemory::Bytes() const {
  return most - m_before;
}

void* operator new(std::size_t size) {
  return AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
  return AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void operator delete(void* block) noexcept {
  Release(block);
}
void operator delete[](void* block) noexcept {
  Release(block);
}
void operator delete(void* block, std::size_t) noexcept {
  Release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  Release(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
  Release(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
  Release(block);
}
