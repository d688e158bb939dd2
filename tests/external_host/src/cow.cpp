#include "cow_String.h"

#include <cstring>
#include <utility>

cow_String::cow_String() noexcept : m_length(0), m_inside{} {}

cow_String::cow_String(const char* text)
    : cow_String(text, text != nullptr ? std::strlen(text) : 0) {}

cow_String::cow_String(const char* bytes, std::size_t length) : m_length(length), m_inside{} {
  char* target = m_inside;
  if (length > kShort) target = m_outside = new char[length + 1];
  if (length != 0) std::memcpy(target, bytes, length);
  target[length] = '\0';
}

cow_String::cow_String(const cow_String& other) : cow_String(other.CStr(), other.m_length) {}

cow_String::cow_String(cow_String&& other) noexcept : m_length(other.m_length) {
  std::memcpy(m_inside, other.m_inside, sizeof m_inside);
  other.m_length = 0;
  other.m_inside[0] = '\0';
}

cow_String& cow_String::operator=(const cow_String& other) {
  if (this != &other) *this = cow_String(other);
  return *this;
}

cow_String& cow_String::operator=(cow_String&& other) noexcept {
  std::swap(m_length, other.m_length);
  char kept[sizeof m_inside];
  std::memcpy(kept, m_inside, sizeof kept);
  std::memcpy(m_inside, other.m_inside, sizeof kept);
  std::memcpy(other.m_inside, kept, sizeof kept);
  return *this;
}

cow_String::~cow_String() {
  if (m_length > kShort) delete[] m_outside;
}

const char* cow_String::CStr() const noexcept {
  return m_length > kShort ? m_outside : m_inside;
}

std::size_t cow_String::Length() const noexcept {
  return m_length;
}

bool operator==(const cow_String& a, const cow_String& b) noexcept {
  return a.Length() == b.Length() && std::memcmp(a.CStr(), b.CStr(), a.Length()) == 0;
}
