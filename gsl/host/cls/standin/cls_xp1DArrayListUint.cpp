#include "cls_xp1DArrayListUint.h"

#include "cls_ReadVisitor.h"
#include "cls_WriteVisitor.h"

#include <utility>

cls_xp1DArrayListUint::cls_xp1DArrayListUint() : m_uid(cls_Uid::AllocateUid()) {}

cls_xp1DArrayListUint::cls_xp1DArrayListUint(const cls_ReadVisitor& visitor)
    : m_uid(visitor.GetUid()) {
  visitor.ReadUnsigneds(m_elements);
}

cls_xp1DArrayListUint::cls_xp1DArrayListUint(cls_xp1DArrayListUint&& other) noexcept
    : m_elements(std::exchange(other.m_elements, {})),
      m_uid(std::exchange(other.m_uid, cls_Uid::AllocateUid())) {}

cls_xp1DArrayListUint& cls_xp1DArrayListUint::operator=(cls_xp1DArrayListUint&& other) noexcept {
  if (this == &other) return *this;
  m_elements = std::exchange(other.m_elements, {});
  m_uid = std::exchange(other.m_uid, cls_Uid::AllocateUid());
  return *this;
}

void cls_xp1DArrayListUint::DBWrite(const cls_WriteVisitor& visitor) const {
  if (visitor.StartWrite(TypeId(), m_uid) == 0) return;
  visitor.WriteUnsigneds(m_elements.data(), m_elements.size());
}
