#ifndef CLS_XP1DARRAYLISTUINT_H
#define CLS_XP1DARRAYLISTUINT_H

#include "cls_AttributeType.h"
#include "cls_Uid.h"
#include "mem_Export.h"

#include <cstddef>
#include <vector>

class cls_ReadRun;
class cls_ReadVisitor;
class cls_WriteVisitor;

/// Persistent list of unsigned integers. A copy keeps the identity of its source. A move takes the
/// identity along and leaves the source empty, with a fresh identity.
class GSL_HOST_API cls_xp1DArrayListUint {
public:
  /// Makes an empty list with a fresh identity.
  cls_xp1DArrayListUint();
  /// Reads the list. It is empty for an absent record.
  explicit cls_xp1DArrayListUint(const cls_ReadVisitor& visitor);
  cls_xp1DArrayListUint(const cls_xp1DArrayListUint&) = default;
  cls_xp1DArrayListUint(cls_xp1DArrayListUint&& other) noexcept;
  cls_xp1DArrayListUint& operator=(const cls_xp1DArrayListUint&) = default;
  cls_xp1DArrayListUint& operator=(cls_xp1DArrayListUint&& other) noexcept;

  std::size_t Count() const { return m_elements.size(); }
  [[nodiscard]] bool IsEmpty() const { return m_elements.empty(); }
  /// Does not check the range.
  unsigned int operator[](std::size_t i) const { return m_elements[i]; }
  /// Return the elements in order. They are valid until the list changes.
  const unsigned int* begin() const { return m_elements.data(); }
  const unsigned int* end() const { return m_elements.data() + m_elements.size(); }
  /// Adds the value at the end.
  void Append(unsigned int value) { m_elements.push_back(value); }
  void Clear() { m_elements.clear(); }

  const cls_Uid& Uid() const { return m_uid; }

  void DBWrite(const cls_WriteVisitor& visitor) const;

  static constexpr unsigned int TypeId() { return cls_kCollectionTypeId; }
  static constexpr cls_CollectionType CollectionType() { return cls_UnsignedList; }

  /// Returns whether the elements are the same in the same order. Identities are not compared.
  [[nodiscard]] friend bool operator==(const cls_xp1DArrayListUint& a,
                                       const cls_xp1DArrayListUint& b) {
    return a.m_elements == b.m_elements;
  }
  [[nodiscard]] friend bool operator!=(const cls_xp1DArrayListUint& a,
                                       const cls_xp1DArrayListUint& b) {
    return !(a == b);
  }

private:
  friend class cls_ReadRun;

  std::vector<unsigned int> m_elements;
  cls_Uid m_uid;
};

#endif
