#ifndef COW_BODY_H
#define COW_BODY_H

#include "cow_Owners.h"

#include <atomic>
#include <cstddef>
#include <utility>

/// A value that copies share until one of them writes. The count is atomic: copies in different
/// threads are independent. Nothing is allocated before the first write.
template <class T>
class cow_Body {
public:
  cow_Body() noexcept = default;
  /// Takes a value, which no other copy shares.
  explicit cow_Body(T&& value) : m_shared(new Shared{{1}, std::move(value)}) {}
  cow_Body(const cow_Body& other) noexcept : m_shared(other.m_shared) { Acquire(); }
  cow_Body(cow_Body&& other) noexcept : m_shared(std::exchange(other.m_shared, nullptr)) {}
  cow_Body& operator=(const cow_Body& other) noexcept {
    cow_Body copy(other);
    std::swap(m_shared, copy.m_shared);
    return *this;
  }
  /// Leaves the source without a value.
  cow_Body& operator=(cow_Body&& other) noexcept {
    if (this == &other) return *this;
    Release();
    m_shared = std::exchange(other.m_shared, nullptr);
    return *this;
  }
  ~cow_Body() { Release(); }

  /// Returns null before the first write.
  const T* Read() const noexcept { return m_shared != nullptr ? &m_shared->value : nullptr; }

  /// Returns the value after copying it away from the other owners.
  T& Write() {
    if (m_shared == nullptr) {
      m_shared = new Shared{{1}, T()};
    } else if (IsShared()) {
      Shared* const own = new Shared{{1}, m_shared->value};
      Release();
      m_shared = own;
    }
    return m_shared->value;
  }

  [[nodiscard]] bool SharesWith(const cow_Body& other) const noexcept {
    return m_shared == other.m_shared;
  }
  /// Returns whether another owner holds the value. That owner may release the value meanwhile.
  [[nodiscard]] bool IsShared() const noexcept {
    return m_shared != nullptr && m_shared->owners.load(std::memory_order_acquire) != 1;
  }

private:
  struct Shared {
    std::atomic<std::size_t> owners;
    T value;
  };

  void Acquire() noexcept {
    if (m_shared != nullptr) cow_Owners::Add(m_shared->owners);
  }
  void Release() noexcept {
    if (m_shared != nullptr && cow_Owners::RemoveLast(m_shared->owners)) delete m_shared;
  }

  Shared* m_shared = nullptr;
};

#endif
