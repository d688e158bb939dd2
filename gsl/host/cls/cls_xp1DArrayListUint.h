#ifndef CLS_XP1DARRAYLISTUINT_H
#define CLS_XP1DARRAYLISTUINT_H

#include "cls_AttributeType.h"
#include "cls_Uid.h"
#include "mem_Export.h"

#include <cstddef>
#include <vector>

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

  std::size_t Count() const { return elements.size(); }
  [[nodiscard]] bool IsEmpty() const { return elements.empty(); }
  /// No range check.
  unsigned int operator[](std::size_t i) const { return elements[i]; }
  /// The elements in order; valid until the list changes.
  const unsigned int* begin() const { return elements.data(); }
  const unsigned int* end() const { return elements.data() + elements.size(); }
  void Append(unsigned int value) { elements.push_back(value); }
  void Clear() { elements.clear(); }

  const cls_Uid& Uid() const { return uid; }

  void DBWrite(const cls_WriteVisitor& visitor) const;

  static constexpr unsigned int TypeId() { return cls_kCollectionTypeId; }
  static constexpr cls_CollectionType CollectionType() { return cls_UnsignedList; }

  /// Returns whether the elements are the same in the same order. Identities are not compared.
  [[nodiscard]] friend bool operator==(const cls_xp1DArrayListUint& a,
                                       const cls_xp1DArrayListUint& b) {
    return a.elements == b.elements;
  }
  [[nodiscard]] friend bool operator!=(const cls_xp1DArrayListUint& a,
                                       const cls_xp1DArrayListUint& b) {
    return !(a == b);
  }

private:
  std::vector<unsigned int> elements;
  cls_Uid uid;
};

#endif
