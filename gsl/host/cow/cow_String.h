#ifndef COW_STRING_H
#define COW_STRING_H

#include "cow_Owners.h"
#include "mem_Export.h"

#include <atomic>
#include <cstddef>
#include <string_view>
#include <utility>

/// Reference-counted immutable text; copies share one buffer. The text consists of bytes, not of
/// characters, and has a terminating zero. The count is atomic: copies in different threads are
/// independent. Copying bytes throws std::bad_alloc; copying a text does not.
class GSL_HOST_API cow_String {
public:
  /// Makes the empty text without an allocation.
  cow_String() noexcept = default;
  /// Copies the bytes up to the terminating zero. Null makes the empty text.
  cow_String(const char* text);
  /// Copies `length` bytes, which may hold zeros.
  cow_String(const char* bytes, std::size_t length);
  cow_String(const cow_String& other) noexcept : m_shared(other.m_shared) {
    if (m_shared != nullptr) cow_Owners::Add(m_shared->owners);
  }
  cow_String(cow_String&& other) noexcept : m_shared(std::exchange(other.m_shared, nullptr)) {}
  cow_String& operator=(const cow_String& other) noexcept;
  cow_String& operator=(cow_String&& other) noexcept;
  ~cow_String() {
    if (m_shared != nullptr) Release(m_shared);
  }

  /// Returns the number of bytes.
  std::size_t Length() const noexcept { return m_shared != nullptr ? m_shared->length : 0; }
  [[nodiscard]] bool IsEmpty() const noexcept { return Length() == 0; }
  /// Returns the bytes with a terminating zero; never null. They are valid while a copy of this
  /// text exists.
  const char* CStr() const noexcept {
    return m_shared != nullptr ? reinterpret_cast<const char*>(m_shared + 1) : "";
  }
  /// Returns whether both are empty or share one buffer.
  [[nodiscard]] bool SharesWith(const cow_String& other) const noexcept {
    return m_shared == other.m_shared;
  }

  /// Compare byte by byte.
  friend GSL_HOST_API bool operator==(const cow_String& a, const cow_String& b) noexcept;
  [[nodiscard]] friend bool operator!=(const cow_String& a, const cow_String& b) noexcept {
    return !(a == b);
  }
  friend GSL_HOST_API bool operator<(const cow_String& a, const cow_String& b) noexcept;

private:
  /// Header of a buffer; the bytes and their terminating zero follow it in the same block.
  struct Shared {
    std::atomic<std::size_t> owners;
    std::size_t length;
  };

  [[nodiscard]] static Shared* Make(const char* bytes, std::size_t length);
  static void Destroy(Shared* shared) noexcept;

  static void Release(Shared* shared) noexcept {
    if (cow_Owners::RemoveLast(shared->owners)) Destroy(shared);
  }

  Shared* m_shared = nullptr;
};

template <>
struct std::hash<cow_String> {
  std::size_t operator()(const cow_String& text) const noexcept {
    return std::hash<std::string_view>()(std::string_view(text.CStr(), text.Length()));
  }
};

#endif
