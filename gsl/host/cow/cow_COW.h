#ifndef COW_COW_H
#define COW_COW_H

#include "cow_Owners.h"
#include "mem_Export.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

/// Shared holder of one T. Copies share the object, and a holder clones the object before it
/// changes it.
///
/// Cloner    Clone(const T&) returns a new heap object or null. After a null, the operation that
///           asked for the clone has no effect and reports it. The last holder deletes the object,
///           through the virtual destructor where T has one.
/// Memory    a holder of an object costs one pointer and one shared block with the count. A block
///           that finds no memory counts like a clone that is null.
/// Threads   the count is atomic: holders of one object may be copied, unshared and destroyed in
///           different threads at once. One holder is used by one thread at a time.
template <class T, class Cloner>
class cow_COW {
public:
  /// Makes an empty holder.
  cow_COW() noexcept = default;
  /// Holds a clone of `source`. The holder is empty when the clone is null.
  explicit cow_COW(const T& source) : cow_COW(Adopt(Cloner::Clone(source))) {}
  cow_COW(const cow_COW& other) noexcept : m_shared(Acquired(other.m_shared)) {}
  cow_COW(cow_COW&& other) noexcept : m_shared(std::exchange(other.m_shared, nullptr)) {}
  cow_COW& operator=(const cow_COW& other) noexcept;
  cow_COW& operator=(cow_COW&& other) noexcept;
  ~cow_COW() { Release(m_shared); }

  /// Takes over a heap object without cloning it. The holder is empty for null.
  static cow_COW Adopt(T* object);

  /// Returns whether no object is held.
  [[nodiscard]] bool IsEmpty() const noexcept { return m_shared == nullptr; }
  /// Returns whether an object is held.
  explicit operator bool() const noexcept { return !IsEmpty(); }
  /// Returns the object, or null. It is valid while this holder keeps it.
  const T* Get() const noexcept { return m_shared != nullptr ? m_shared->object.get() : nullptr; }
  /// Requires that the holder is not empty, and does not check it.
  const T& operator*() const noexcept { return *m_shared->object; }
  /// Returns the object that is held.
  const T* operator->() const noexcept { return m_shared->object.get(); }

  /// Returns the object to be changed. When other holders share the object, this holder clones it
  /// first. Returns null, and changes nothing, for an empty holder and when the clone is null.
  T* Unshared();

  /// Releases the object.
  void Clear() noexcept { Release(std::exchange(m_shared, nullptr)); }

  /// Returns whether both hold the same object. Two empty holders share nothing.
  [[nodiscard]] bool SharesWith(const cow_COW& other) const noexcept {
    return m_shared != nullptr && m_shared == other.m_shared;
  }
  /// Returns the number of holders of the object, 0 for an empty holder. Another thread may change
  /// the number meanwhile.
  std::size_t Owners() const noexcept {
    return m_shared != nullptr ? m_shared->owners.load(std::memory_order_relaxed) : 0;
  }

private:
  struct Shared {
    std::atomic<std::size_t> owners;
    std::unique_ptr<T> object;
  };

  [[nodiscard]] static Shared* Acquired(Shared* s) noexcept {
    if (s != nullptr) cow_Owners::Add(s->owners);
    return s;
  }

  static void Release(Shared* s) noexcept {
    if (s != nullptr && cow_Owners::RemoveLast(s->owners)) delete s;
  }

  Shared* m_shared = nullptr;
};

template <class T, class Cloner>
cow_COW<T, Cloner> cow_COW<T, Cloner>::Adopt(T* object) {
  std::unique_ptr<T> owned(object);
  cow_COW holder;
  if (owned != nullptr) holder.m_shared = new (std::nothrow) Shared{{1}, std::move(owned)};
  return holder;
}

template <class T, class Cloner>
cow_COW<T, Cloner>& cow_COW<T, Cloner>::operator=(const cow_COW& other) noexcept {
  if (m_shared == other.m_shared) return *this;
  Release(std::exchange(m_shared, Acquired(other.m_shared)));
  return *this;
}

template <class T, class Cloner>
cow_COW<T, Cloner>& cow_COW<T, Cloner>::operator=(cow_COW&& other) noexcept {
  if (this == &other) return *this;
  Release(std::exchange(m_shared, std::exchange(other.m_shared, nullptr)));
  return *this;
}

template <class T, class Cloner>
T* cow_COW<T, Cloner>::Unshared() {
  if (m_shared == nullptr) return nullptr;
  // Pairs with the release by a former owner, so that its reads come before our writes.
  if (m_shared->owners.load(std::memory_order_acquire) != 1) {
    cow_COW clone(*m_shared->object);
    if (clone.IsEmpty()) return nullptr;
    std::swap(m_shared, clone.m_shared);
  }
  return m_shared->object.get();
}

#endif
