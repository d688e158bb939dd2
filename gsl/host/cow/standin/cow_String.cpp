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

  static void Release(Shared* shared) {
    if (shared == nullptr) return;
    if (shared->owners.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    shared->~Shared();
    ::operator delete(static_cast<void*>(shared));
  }
};

cow_String::cow_String(const char* text)
    : shared(text != nullptr ? Shared::Make(text, std::strlen(text)) : nullptr) {}

cow_String::cow_String(const char* bytes, std::size_t length)
    : shared(Shared::Make(bytes, length)) {}

cow_String::cow_String(const cow_String& other) noexcept : shared(other.shared) {
  Shared::Acquire(shared);
}

cow_String::cow_String(cow_String&& other) noexcept
    : shared(std::exchange(other.shared, nullptr)) {}

cow_String& cow_String::operator=(const cow_String& other) noexcept {
  Shared::Acquire(other.shared);
  Shared::Release(shared);
  shared = other.shared;
  return *this;
}

cow_String& cow_String::operator=(cow_String&& other) noexcept {
  std::swap(shared, other.shared);
  return *this;
}

cow_String::~cow_String() {
  Shared::Release(shared);
}

std::size_t cow_String::Length() const noexcept {
  return shared != nullptr ? shared->length : 0;
}

const char* cow_String::CStr() const noexcept {
  return shared != nullptr ? shared->Bytes() : "";
}

bool operator==(const cow_String& a, const cow_String& b) noexcept {
  if (a.SharesWith(b)) return true;
  return a.Length() == b.Length() && std::memcmp(a.CStr(), b.CStr(), a.Length()) == 0;
}

bool operator<(const cow_String& a, const cow_String& b) noexcept {
  return std::string_view(a.CStr(), a.Length()) < std::string_view(b.CStr(), b.Length());
}
