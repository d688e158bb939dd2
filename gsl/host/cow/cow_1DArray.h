#ifndef COW_1DARRAY_H
#define COW_1DARRAY_H

#include "cow_Body.h"
#include "mem_Export.h"

#include <cstddef>
#include <utility>
#include <vector>

/// Copy-on-write array of values. A move leaves its source empty.
///
/// Threads  copies are independent; one array follows the rules of the standard containers.
template <class T>
class GSL_HOST_API cow_1DArray {
public:
  std::size_t Count() const { return m_body.Read() != nullptr ? m_body.Read()->size() : 0; }
  [[nodiscard]] bool IsEmpty() const { return Count() == 0; }
  /// Does not check the range. The element is valid until this array changes.
  const T& operator[](std::size_t i) const { return (*m_body.Read())[i]; }

  /// Return the elements in order. They are valid until this array changes.
  const T* begin() const { return m_body.Read() != nullptr ? m_body.Read()->data() : nullptr; }
  const T* end() const { return begin() + Count(); }

  /// Returns an element that may be changed; the array is copied away from its other owners first.
  /// Does not check the range.
  T& Writable(std::size_t i) { return m_body.Write()[i]; }
  /// `value` may be an element of this array. After an exception the array is as it was.
  void Append(const T& value) {
    if (m_body.Read() != nullptr && !m_body.IsShared()) {
      m_body.Write().push_back(value);
      return;
    }
    // An exception on the way leaves the array with what it has.
    std::vector<T> grown;
    grown.reserve(Count() + 1);
    grown.insert(grown.end(), begin(), end());
    grown.push_back(value);
    m_body = cow_Body<std::vector<T>>(std::move(grown));
  }
  void Clear() { m_body = cow_Body<std::vector<T>>(); }

  [[nodiscard]] bool SharesWith(const cow_1DArray& other) const {
    return m_body.SharesWith(other.m_body);
  }

private:
  cow_Body<std::vector<T>> m_body;
};

#endif
