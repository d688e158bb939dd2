#ifndef COW_BODY_H
#define COW_BODY_H

#include <atomic>
#include <cstddef>
#include <utility>

/// A value that copies share until one of them writes. The count is atomic: copies in different
/// threads are independent. Nothing is allocated before the first write.
template <class T>
class cow_Body {
public:
  cow_Body() noexcept = default;
  cow_Body(const cow_Body& other) noexcept : shared(other.shared) { Acquire(); }
  cow_Body(cow_Body&& other) noexcept : shared(std::exchange(other.shared, nullptr)) {}
  cow_Body& operator=(const cow_Body& other) noexcept {
    cow_Body copy(other);
    std::swap(shared, copy.shared);
    return *this;
  }
  /// Leaves the source without a value.
  cow_Body& operator=(cow_Body&& other) noexcept {
    if (this == &other) return *this;
    Release();
    shared = std::exchange(other.shared, nullptr);
    return *this;
  }
  ~cow_Body() { Release(); }

  /// Returns null before the first write.
  const T* Read() const noexcept { return shared != nullptr ? &shared->value : nullptr; }

  /// Returns the value after copying it away from the other owners.
  T& Write() {
    if (shared == nullptr) {
      shared = new Shared{{1}, T()};
    } else if (IsShared()) {
      Shared* const own = new Shared{{1}, shared->value};
      Release();
      shared = own;
    }
    return shared->value;
  }

  [[nodiscard]] bool SharesWith(const cow_Body& other) const noexcept {
    return shared == other.shared;
  }
  /// Returns whether another owner holds the value. That owner may release the value meanwhile.
  [[nodiscard]] bool IsShared() const noexcept {
    return shared != nullptr && shared->owners.load(std::memory_order_acquire) != 1;
  }

private:
  struct Shared {
    std::atomic<std::size_t> owners;
    T value;
  };

  void Acquire() noexcept {
    if (shared != nullptr) shared->owners.fetch_add(1, std::memory_order_relaxed);
  }
  void Release() noexcept {
    if (shared != nullptr && shared->owners.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      delete shared;
    }
  }

  Shared* shared = nullptr;
};

#endif
