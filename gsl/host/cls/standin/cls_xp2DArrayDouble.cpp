#include "cls_xp2DArrayDouble.h"

#include "cls_ReadVisitor.h"
#include "cls_WriteVisitor.h"

#include <utility>

cls_xp2DArrayDouble::cls_xp2DArrayDouble(std::size_t rowCount, std::size_t columnCount,
                                         const cls_Uid& identity)
    : m_rows(rowCount), m_columns(columnCount), m_entries(rowCount * columnCount, 0.0),
      m_uid(identity) {}

cls_xp2DArrayDouble::cls_xp2DArrayDouble(const cls_ReadVisitor& visitor)
    : m_rows(0), m_columns(0), m_uid(visitor.GetUid()) {
  visitor.ReadDoubles(m_entries, m_rows, m_columns);
}

cls_xp2DArrayDouble::cls_xp2DArrayDouble(cls_xp2DArrayDouble&& other) noexcept
    : m_rows(std::exchange(other.m_rows, 0)), m_columns(std::exchange(other.m_columns, 0)),
      m_entries(std::exchange(other.m_entries, {})),
      m_uid(std::exchange(other.m_uid, cls_Uid::AllocateUid())) {}

cls_xp2DArrayDouble& cls_xp2DArrayDouble::operator=(cls_xp2DArrayDouble&& other) noexcept {
  if (this == &other) return *this;
  m_rows = std::exchange(other.m_rows, 0);
  m_columns = std::exchange(other.m_columns, 0);
  m_entries = std::exchange(other.m_entries, {});
  m_uid = std::exchange(other.m_uid, cls_Uid::AllocateUid());
  return *this;
}

void cls_xp2DArrayDouble::DBWrite(const cls_WriteVisitor& visitor) const {
  if (visitor.StartWrite(TypeId(), m_uid) == 0) return;
  visitor.WriteDoubles(m_entries.data(), m_rows, m_columns);
}
