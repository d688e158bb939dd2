#ifndef GSL_SWEEP_ARRAY_H
#define GSL_SWEEP_ARRAY_H

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>
#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace gsl_sweep {

/// A plain array that is not initialised and lies on huge pages where it is large. First use of
/// fresh memory takes a large part of the time that a body takes.
template <class T>
class Array {
  static_assert(std::is_trivially_copyable<T>::value && std::is_trivially_destructible<T>::value,
                "elements are neither made nor destroyed");

public:
  Array() = default;
  explicit Array(std::size_t count) : m_count(count) {
    constexpr std::size_t kCacheLine = 64;
    constexpr std::size_t kHugePage = std::size_t{2} << 20;
    if (count == 0) return;
    if (count > (static_cast<std::size_t>(-1) - kHugePage) / sizeof(T)) throw std::bad_alloc();
    const bool isLarge = count * sizeof(T) >= 2 * kHugePage;
    const std::size_t unit = isLarge ? kHugePage : kCacheLine;
    const std::size_t bytes = (count * sizeof(T) + unit - 1) / unit * unit;
    void* memory = std::aligned_alloc(unit, bytes);
    if (memory == nullptr) throw std::bad_alloc();
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    if (isLarge) madvise(memory, bytes, MADV_HUGEPAGE);
#endif
    m_data = static_cast<T*>(memory);
  }
  ~Array() {
    std::free(m_data);
  }
  Array(const Array&) = delete;
  Array& operator=(const Array&) = delete;
  Array(Array&& other) noexcept {
    swap(other);
  }
  Array& operator=(Array&& other) noexcept {
    Array taken(std::move(other));
    swap(taken);
    return *this;
  }
  void swap(Array& other) noexcept {
    std::swap(m_data, other.m_data);
    std::swap(m_count, other.m_count);
  }

  Array Copy() const {
    Array result(m_count);
    if (m_count > 0) std::memcpy(result.m_data, m_data, Bytes());
    return result;
  }

  /// Leaves out the elements from `count` on; the memory stays.
  void Shorten(std::size_t count) {
    m_count = count;
  }

  T* data() {
    return m_data;
  }
  const T* data() const {
    return m_data;
  }
  std::size_t size() const {
    return m_count;
  }
  T& operator[](std::size_t k) {
    return m_data[k];
  }
  const T& operator[](std::size_t k) const {
    return m_data[k];
  }
  T* begin() {
    return m_data;
  }
  T* end() {
    return m_data + m_count;
  }
  const T* begin() const {
    return m_data;
  }
  const T* end() const {
    return m_data + m_count;
  }
  std::size_t Bytes() const {
    return m_count * sizeof(T);
  }

private:
  T* m_data = nullptr;
  std::size_t m_count = 0;
};

} // namespace gsl_sweep

#endif
