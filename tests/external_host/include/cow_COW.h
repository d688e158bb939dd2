#ifndef COW_COW_H
#define COW_COW_H

#include "xh_Export.h"

#include <atomic>
#include <memory>
#include <utility>

/// Holder over the standard library's shared pointer.
template <class T, class Cloner>
class XH_API cow_COW {
public:
  cow_COW() noexcept = default;
  explicit cow_COW(const T& source) : m_object(Cloner::Clone(source)) {}

  bool IsEmpty() const noexcept { return m_object == nullptr; }
  const T& operator*() const noexcept { return *m_object; }
  const T* operator->() const noexcept { return m_object.get(); }

  T* Unshared() {
    if (m_object == nullptr) return nullptr;
    if (m_object.use_count() != 1) {
      std::shared_ptr<T> own(Cloner::Clone(*m_object));
      if (own == nullptr) return nullptr;
      m_object = std::move(own);
    }
    // Former owners have read the object before they let it go.
    std::atomic_thread_fence(std::memory_order_acquire);
    return m_object.get();
  }

  const std::shared_ptr<T>& xh_Object() const noexcept { return m_object; }
  static cow_COW xh_Of(std::shared_ptr<T> object) noexcept {
    cow_COW holder;
    holder.m_object = std::move(object);
    return holder;
  }

private:
  std::shared_ptr<T> m_object;
};

#endif
