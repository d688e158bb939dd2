#include "cow_String.h"

#include <cstring>
#include <new>
#include <utility>

cow_String::Shared* cow_String::Make(const char* bytes, std::size_t length) {
  if (length == 0) return nullptr;
  void* const block = ::operator new(sizeof(Shared) + length + 1);
  Shared* const made = ::new (block) Shared{{1}, length};
  char* const copy = reinterpret_cast<char*>(made + 1);
  std::memcpy(copy, bytes, length);
  copy[length] = '\0';
  return made;
}

void cow_String::Destroy(Shared* shared) noexcept {
  shared->~Shared();
  ::operator delete(static_cast<void*>(shared));
}

cow_String::cow_String(const char* text)
    : m_shared(text != nullptr ? Make(text, std::strlen(text)) : nullptr) {}

cow_String::cow_String(const char* bytes, std::size_t length) : m_shared(Make(bytes, length)) {}

cow_String& cow_String::operator=(const cow_String& other) noexcept {
  if (other.m_shared != nullptr) cow_Owners::Add(other.m_shared->owners);
  if (m_shared != nullptr) Release(m_shared);
  m_shared = other.m_shared;
  return *this;
}

cow_String& cow_String::operator=(cow_String&& other) noexcept {
  std::swap(m_shared, other.m_shared);
  return *this;
}

bool operator==(const cow_String& a, const cow_String& b) noexcept {
  if (a.SharesWith(b)) return true;
  return a.Length() == b.Length() && std::memcmp(a.CStr(), b.CStr(), a.Length()) == 0;
}

bool operator<(const cow_String& a, const cow_String& b) noexcept {
  return std::string_view(a.CStr(), a.Length()) < std::string_view(b.CStr(), b.Length());
}
