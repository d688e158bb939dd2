#ifndef RECORDS_PLAIN_BUFFER_H
#define RECORDS_PLAIN_BUFFER_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

#include <sys/mman.h>

namespace gsl_records {

/// A growing array of plain values. It grows by realloc, which moves the pages of a large array
/// instead of copying them, so that growing does not hold the array twice.
template <class T>
class PlainBuffer {
  static_assert(std::is_trivially_copyable_v<T>);

public:
  PlainBuffer() = default;
  ~PlainBuffer() { std::free(m_items); }
  PlainBuffer(const PlainBuffer&) = delete;
  PlainBuffer& operator=(const PlainBuffer&) = delete;
  PlainBuffer(PlainBuffer&& other) noexcept
      : m_items(std::exchange(other.m_items, nullptr)), m_size(std::exchange(other.m_size, 0)),
        m_capacity(std::exchange(other.m_capacity, 0)) {}
  PlainBuffer& operator=(PlainBuffer&& other) noexcept {
    std::swap(m_items, other.m_items);
    std::swap(m_size, other.m_size);
    std::swap(m_capacity, other.m_capacity);
    return *this;
  }

  std::size_t Size() const { return m_size; }
  std::size_t BytesHeld() const { return m_capacity * sizeof(T); }
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
  void Truncate(std::size_t size) { m_size = size; }
  void Append(const T& value) {
    *Room(1) = value;
    ++m_size;
  }
  void Append(const T* values, std::size_t count) {
    if (count == 0) return;
    std::memcpy(static_cast<void*>(Room(count)), values, count * sizeof(T));
    m_size += count;
  }

private:
  void Grow(std::size_t count) {
    constexpr std::size_t kFirst = 64;
    std::size_t capacity = m_capacity + m_capacity / 2 + kFirst;
    if (capacity < m_size + count) capacity = m_size + count;
    void* const grown = std::realloc(static_cast<void*>(m_items), capacity * sizeof(T));
    if (grown == nullptr) throw std::bad_alloc();
    m_items = static_cast<T*>(grown);
    m_capacity = capacity;
    // An array that grows in steps moves, and loses its large pages.
    if (2 * count >= capacity) PreferLargePages();
  }

  /// Small pages, which the system hands out one by one, take longer than filling them.
  void PreferLargePages() {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    constexpr std::uintptr_t kHugePage = std::uintptr_t{1} << 21;
    const auto begin = reinterpret_cast<std::uintptr_t>(m_items);
    const std::uintptr_t first = (begin + kHugePage - 1) / kHugePage * kHugePage;
    const std::uintptr_t end = (begin + m_capacity * sizeof(T)) / kHugePage * kHugePage;
    if (end > first + kHugePage) {
      madvise(static_cast<void*>(reinterpret_cast<char*>(m_items) + (first - begin)), end - first,
              MADV_HUGEPAGE);
    }
#endif
  }

  T* m_items = nullptr;
  std::size_t m_size = 0;
  std::size_t m_capacity = 0;
};

} // namespace gsl_records

#endif
