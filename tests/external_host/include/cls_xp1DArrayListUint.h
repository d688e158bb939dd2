#ifndef CLS_XP1DARRAYLISTUINT_H
#define CLS_XP1DARRAYLISTUINT_H

#include "cls_AttributeType.h"
#include "cls_Uid.h"

#include <deque>

class cls_ReadVisitor;
class cls_WriteVisitor;

class XH_API cls_xp1DArrayListUint {
public:
  cls_xp1DArrayListUint();
  explicit cls_xp1DArrayListUint(const cls_ReadVisitor& visitor);
  ~cls_xp1DArrayListUint();
  cls_xp1DArrayListUint(const cls_xp1DArrayListUint&);
  cls_xp1DArrayListUint& operator=(const cls_xp1DArrayListUint&);

  void DBWrite(const cls_WriteVisitor& visitor) const;
  static constexpr unsigned int TypeId() { return cls_kCollectionTypeId; }
  static constexpr cls_CollectionType CollectionType() { return cls_UnsignedList; }

  std::deque<unsigned int>& xh_Numbers() { return m_numbers; }
  const std::deque<unsigned int>& xh_Numbers() const { return m_numbers; }

private:
  std::deque<unsigned int> m_numbers;
  cls_Uid m_uid;
};

#endif
