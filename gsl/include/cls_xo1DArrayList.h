#ifndef CLS_XO1DARRAYLIST_H
#define CLS_XO1DARRAYLIST_H

#include "cls_ListReader.h"
#include "cls_ListWriter.h"
#include "cls_Uid.h"
#include "cow_1DArray.h"
#include "gsl_Export.h"
#include "gsl_ModelSegment.h"
#include "gsl_Point.h"

#include <cstddef>
#include <memory>
#include <utility>

/// Persistent list of values of class T. Copies share the elements until one of them changes, and
/// they keep the identity. A move takes the identity along and leaves its source empty, with a
/// fresh identity.
///
/// Record  the elements in order, each a full record; none is null.
/// Errors  reading throws nex_Exception for a record that is not a list, and for an entry that is
///         not a T. Every change may throw std::bad_alloc; the list is then as it was.
template <class T>
class GSL_API cls_xo1DArrayList {
public:
  /// The list is empty and has a fresh identity.
  cls_xo1DArrayList();
  /// Reads the elements of the record, under the identity that the caller read for the list. An
  /// absent record has no elements.
  cls_xo1DArrayList(const cls_ReadVisitor& visitor, const cls_Uid& identity);
  cls_xo1DArrayList(const cls_xo1DArrayList&) = default;
  cls_xo1DArrayList(cls_xo1DArrayList&& other) noexcept;
  cls_xo1DArrayList& operator=(const cls_xo1DArrayList&) = default;
  cls_xo1DArrayList& operator=(cls_xo1DArrayList&& other) noexcept;

  std::size_t Count() const { return m_elements.Count(); }
  [[nodiscard]] bool IsEmpty() const { return m_elements.IsEmpty(); }
  /// The index is not checked. The reference is valid until the list changes.
  const T& operator[](std::size_t i) const { return m_elements[i]; }
  /// Returns the elements in order. They are valid until the list changes.
  const T* begin() const { return m_elements.begin(); }
  const T* end() const { return m_elements.end(); }
  /// `value` may be an element of this list.
  void Append(const T& value);
  void Clear();

  const cow_1DArray<T>& Elements() const { return m_elements; }
  const cls_Uid& Uid() const { return m_uid; }

  void DBWrite(const cls_WriteVisitor& visitor) const;

  static constexpr unsigned int TypeId() { return cls_kCollectionTypeId; }
  static constexpr cls_CollectionType CollectionType() { return cls_ObjectList; }

private:
  cow_1DArray<T> m_elements;
  cls_Uid m_uid;
};

template <class T>
cls_xo1DArrayList<T>::cls_xo1DArrayList() : m_uid(cls_Uid::AllocateUid()) {}

template <class T>
cls_xo1DArrayList<T>::cls_xo1DArrayList(const cls_ReadVisitor& visitor, const cls_Uid& identity)
    : m_uid(identity) {
  const std::unique_ptr<cls_ListReader> list(visitor.GetListReader());
  while (list->HasNext())
    Append(list->ReadValue<T>());
}

template <class T>
cls_xo1DArrayList<T>::cls_xo1DArrayList(cls_xo1DArrayList&& other) noexcept
    : m_elements(std::move(other.m_elements)),
      m_uid(std::exchange(other.m_uid, cls_Uid::AllocateUid())) {}

template <class T>
cls_xo1DArrayList<T>& cls_xo1DArrayList<T>::operator=(cls_xo1DArrayList&& other) noexcept {
  if (this == &other) return *this;
  m_elements = std::move(other.m_elements);
  m_uid = std::exchange(other.m_uid, cls_Uid::AllocateUid());
  return *this;
}

template <class T>
void cls_xo1DArrayList<T>::Append(const T& value) {
  m_elements.Append(value);
}

template <class T>
void cls_xo1DArrayList<T>::Clear() {
  m_elements.Clear();
}

template <class T>
void cls_xo1DArrayList<T>::DBWrite(const cls_WriteVisitor& visitor) const {
  if (visitor.StartWrite(TypeId(), m_uid) == 0) return;
  visitor.CheckCollectionType(cls_ObjectList);
  std::unique_ptr<cls_ListWriter> list(visitor.GetListWriter());
  for (std::size_t i = 0; i < Count(); ++i) {
    const cls_WriteRequestListObj request(*list);
    m_elements[i].DBWrite(cls_WriteVisitor(request));
  }
  if (!list->Finish()) static_cast<void>(list.release());
}

extern template class GSL_API cow_1DArray<gsl_ModelSegment>;
extern template class GSL_API cow_1DArray<gsl_Point>;
extern template class GSL_API cls_xo1DArrayList<gsl_ModelSegment>;
extern template class GSL_API cls_xo1DArrayList<gsl_Point>;

#endif
