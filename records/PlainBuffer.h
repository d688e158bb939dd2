#ifndef RECORDS_PLAIN_BUFFER_H
#define RECORDS_PLAIN_BUFFER_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

#include <sys/mman.h>

namespace gsl_records {

/// Returns the number of bytes from there to the next beginning of a page of that size.
inline std::size_t ToPage(const void* memory, std::size_t page) {
  return (page - reinterpret_cast<std::uintptr_t>(memory) % page) % page;
}

/// A growing array of plain values. It grows by realloc, which moves the pages of a large array
/// instead of copying them, so that growing does not hold the array twice.
template <class T>
class PlainBuffer {
  static_assert(std::is_trivially_copyable_v<T>);

public:
  PlainBuffer() = default;
  ~PlainBuffer() {
    if (!m_isBorrowed) std::free(m_items);
  }
  PlainBuffer(const PlainBuffer&) = delete;
  PlainBuffer& operator=(const PlainBuffer&) = delete;
  PlainBuffer(PlainBuffer&& other) noexcept
      : m_items(std::exchange(other.m_items, nullptr)), m_size(std::exchange(other.m_size, 0)),
        m_capacity(std::exchange(other.m_capacity, 0)),
        m_isBorrowed(std::exchange(other.m_isBorrowed, false)) {}
  PlainBuffer& operator=(PlainBuffer&& other) noexcept {
    std::swap(m_items, other.m_items);
    std::swap(m_size, other.m_size);
    std::swap(m_capacity, other.m_capacity);
    std::swap(m_isBorrowed, other.m_isBorrowed);
    return *this;
  }

  /// Returns an array that reads values of somebody else, who keeps them as long as the array
  /// lives. Room for a further value copies them.
  static PlainBuffer Borrowed(const T* items, std::size_t count) {
    PlainBuffer buffer;
    buffer.m_items = const_cast<T*>(items);
    buffer.m_size = buffer.m_capacity = count;
    buffer.m_isBorrowed = true;
    return buffer;
  }

  std::size_t Size() const { return m_size; }
  std::size_t BytesHeld() const { return m_isBorrowed ? 0 : m_capacity * kItemSize; }
  T* Begin() { return m_items; }
  const T* Begin() const { return m_items; }
  T& operator[](std::size_t i) { return m_items[i]; }
  const T& operator[](std::size_t i) const { return m_items[i]; }
  T& Back() { return m_items[m_size - 1]; }
  const T& Back() const { return m_items[m_size - 1]; }

  /// Returns the end, after which there is room for that many further values.
  T* Room(std::size_t count) {
    if (count > m_capacity - m_size) Grow(count);
    return m_items + m_size;
  }
  /// Ends at a place that Room made reachable, or earlier.
  void SetEnd(const T* end) { m_size = static_cast<std::size_t>(end - m_items); }
  void Truncate(std::size_t size) {
    m_size = size;
    // What is borrowed is never written.
    if (m_isBorrowed) m_capacity = size;
  }
  /// Copies what is borrowed.
  void Own() {
    if (!m_isBorrowed) return;
    if (m_size != 0) {
      Grow(0);
    } else {
      *this = PlainBuffer();
    }
  }
  /// Gives the pages of the values before `end` back to the system, where it takes them; those of
  /// the values before `begin` are given back. The values may be lost; the array may be destroyed
  /// or truncated to nothing.
  void ForgetUntil(std::size_t begin, std::size_t end) const {
#if defined(__linux__) && defined(MADV_DONTNEED)
    constexpr std::size_t kPage = std::size_t{1} << 16;
    const std::size_t front = ToPage(m_items, kPage);
    const auto down = [front](std::size_t bytes) {
      return bytes < front ? front : bytes - (bytes - front) % kPage;
    };
    const std::size_t first = down(begin * kItemSize);
    const std::size_t last = down(end * kItemSize);
    if (!m_isBorrowed && last > first) {
      madvise(reinterpret_cast<char*>(m_items) + first, last - first, MADV_DONTNEED);
    }
#else
    static_cast<void>(begin);
    static_cast<void>(end);
#endif
  }
  void Append(const T& value) {
    *Room(1) = value;
    ++m_size;
  }
  void Append(const T* values, std::size_t count) {
    if (count == 0) return;
    std::memcpy(static_cast<void*>(Room(count)), values, count * kItemSize);
    m_size += count;
  }

private:
  // A value may be a pointer.
  static constexpr std::size_t kItemSize = sizeof(T); // NOLINT(bugprone-sizeof-expression)

  void Grow(std::size_t count) {
    constexpr std::size_t kFirst = 64;
    std::size_t capacity = m_capacity + m_capacity / 2 + kFirst;
    if (capacity < m_size + count || m_isBorrowed) capacity = m_size + count;
    void* const grown =
        std::realloc(m_isBorrowed ? nullptr : static_cast<void*>(m_items), capacity * kItemSize);
    if (grown == nullptr) throw std::bad_alloc();
    if (m_isBorrowed && m_size != 0) std::memcpy(grown, m_items, m_size * kItemSize);
    m_items = static_cast<T*>(grown);
    m_capacity = capacity;
    m_isBorrowed = false;
  }

  T* m_items = nullptr;
  std::size_t m_size = 0;
  std::size_t m_capacity = 0;
  bool m_isBorrowed = false;
};

} // namespace gsl_records

#endif
