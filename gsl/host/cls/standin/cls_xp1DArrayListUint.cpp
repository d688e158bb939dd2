#include "cls_xp1DArrayListUint.h"

#include "cls_ReadVisitor.h"
#include "cls_WriteVisitor.h"

#include <utility>

cls_xp1DArrayListUint::cls_xp1DArrayListUint() : uid(cls_Uid::AllocateUid()) {}

cls_xp1DArrayListUint::cls_xp1DArrayListUint(const cls_ReadVisitor& visitor)
    : uid(visitor.GetUid()) {
  visitor.ReadUnsigneds(elements);
}

cls_xp1DArrayListUint::cls_xp1DArrayListUint(cls_xp1DArrayListUint&& other) noexcept
    : elements(std::exchange(other.elements, {})),
      uid(std::exchange(other.uid, cls_Uid::AllocateUid())) {}

cls_xp1DArrayListUint& cls_xp1DArrayListUint::operator=(cls_xp1DArrayListUint&& other) noexcept {
  if (this == &other) return *this;
  elements = std::exchange(other.elements, {});
  uid = std::exchange(other.uid, cls_Uid::AllocateUid());
  return *this;
}

void cls_xp1DArrayListUint::DBWrite(const cls_WriteVisitor& visitor) const {
  if (visitor.StartWrite(TypeId(), uid) == 0) return;
  visitor.WriteUnsigneds(elements.data(), elements.size());
}
