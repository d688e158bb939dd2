#include "cow_String.h"

#include <atomic>
#include <cstring>
#include <new>
#include <utility>

/// Header of a buffer; the bytes and their terminating zero follow it in the same block.
struct cow_String::Shared {
  std::atomic<std::size_t> owners;
  std::size_t length;

  char* Bytes() { return reinterpret_cast<char*>(this + 1); }

  static Shared* Make(const char* bytes, std::size_t length) {
    if (length == 0) return nullptr;
    void* const block = ::operator new(sizeof(Shared) + length + 1);
    Shared* const made = ::new (block) Shared{{1}, length};
    std::memcpy(made->Bytes(), bytes, length);
    made->Bytes()[length] = '\0';
    return made;
  }

  static void Acquire(Shared* shared) {
    if (shared != nullptr) shared->owners.fetch_add(1, std::memory_order_relaxed);
  }
};

void cow_String::Release(Shared* shared) noexcept {
  if (shared == nullptr || shared->owners.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  shared->~Shared();
  ::operator delete(static_cast<void*>(shared));
}

cow_String::cow_String(const char* text)
    : m_shared(text != nullptr ? Shared::Make(text, std::strlen(text)) : nullptr) {}

cow_String::cow_String(const char* bytes, std::size_t length)
    : m_shared(Shared::Make(bytes, length)) {}

cow_String::cow_String(const cow_String& other) noexcept : m_shared(other.m_shared) {
  Shared::Acquire(m_shared);
}

cow_String& cow_String::operator=(const cow_String& other) noexcept {
  Shared::Acquire(other.m_shared);
  Release(m_shared);
  m_shared = other.m_shared;
  return *this;
}

cow_String& cow_String::operator=(cow_String&& other) noexcept {
  std::swap(m_shared, other.m_shared);
  return *this;
}

std::size_t cow_String::Length() const noexcept {
  return m_shared != nullptr ? m_shared->length : 0;
}

const char* cow_String::CStr() const noexcept {
  return m_shared != nullptr ? m_shared->Bytes() : "";
}

bool operator==(const cow_String& a, const cow_String& b) noexcept {
  if (a.SharesWith(b)) return true;
  return a.Length() == b.Length() && std::memcmp(a.CStr(), b.CStr(), a.Length()) == 0;
}

bool operator<(const cow_String& a, const cow_String& b) noexcept {
  return std::string_view(a.CStr(), a.Length()) < std::string_view(b.CStr(), b.Length());
}
