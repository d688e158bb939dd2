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
  std::size_t Count() const { return body.Read() != nullptr ? body.Read()->size() : 0; }
  [[nodiscard]] bool IsEmpty() const { return Count() == 0; }
  /// Does not check the range. The element is valid until this array changes.
  const T& operator[](std::size_t i) const { return (*body.Read())[i]; }

  /// The elements in order; valid until this array changes.
  const T* begin() const { return body.Read() != nullptr ? body.Read()->data() : nullptr; }
  const T* end() const { return begin() + Count(); }

  /// Returns an element that may be changed; the array is copied away from its other owners first.
  /// Does not check the range.
  T& Writable(std::size_t i) { return body.Write()[i]; }
  /// `value` may be an element of this array.
  void Append(const T& value) {
    if (body.IsShared()) {
      // The other owners may delete the element meanwhile.
      T kept(value);
      body.Write().push_back(std::move(kept));
    } else {
      body.Write().push_back(value);
    }
  }
  void Clear() { body = cow_Body<std::vector<T>>(); }

  [[nodiscard]] bool SharesWith(const cow_1DArray& other) const {
    return body.SharesWith(other.body);
  }

private:
  cow_Body<std::vector<T>> body;
};

#endif
