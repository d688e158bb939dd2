#ifndef COW_1DARRAY_H
#define COW_1DARRAY_H

#include "xh_Export.h"

#include <cstddef>
#include <vector>

/// Array whose copies are copied at once.
template <class T>
class XH_API cow_1DArray {
public:
  std::size_t Count() const { return m_elements.size(); }
  bool IsEmpty() const { return m_elements.empty(); }
  const T& operator[](std::size_t i) const { return m_elements[i]; }
  const T* begin() const { return m_elements.data(); }
  const T* end() const { return m_elements.data() + m_elements.size(); }
  void Append(const T& value) { m_elements.push_back(value); }
  void Clear() { m_elements.clear(); }

private:
  std::vector<T> m_elements;
};

#endif
