#ifndef COW_STRING_H
#define COW_STRING_H

#include "xh_Export.h"

#include <cstddef>

/// Text with a buffer of its own: short texts lie inside the object, and nothing is shared.
class XH_API cow_String {
public:
  cow_String() noexcept;
  explicit cow_String(const char* text);
  cow_String(const char* bytes, std::size_t length);
  cow_String(const cow_String& other);
  cow_String(cow_String&& other) noexcept;
  cow_String& operator=(const cow_String& other);
  cow_String& operator=(cow_String&& other) noexcept;
  ~cow_String();

  const char* CStr() const noexcept;
  std::size_t Length() const noexcept;

private:
  static constexpr std::size_t kShort = 23;

  std::size_t m_length;
  union {
    char m_inside[kShort + 1];
    char* m_outside;
  };
};

XH_API bool operator==(const cow_String& a, const cow_String& b) noexcept;

#endif
