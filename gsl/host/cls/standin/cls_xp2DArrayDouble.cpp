#include "cls_xp2DArrayDouble.h"

#include "cls_ReadVisitor.h"
#include "cls_WriteVisitor.h"

#include <utility>

cls_xp2DArrayDouble::cls_xp2DArrayDouble(std::size_t rowCount, std::size_t columnCount,
                                         const cls_Uid& identity)
    : rows(rowCount), columns(columnCount), entries(rowCount * columnCount, 0.0), uid(identity) {}

cls_xp2DArrayDouble::cls_xp2DArrayDouble(const cls_ReadVisitor& visitor)
    : rows(0), columns(0), uid(visitor.GetUid()) {
  visitor.ReadDoubles(entries, rows, columns);
}

cls_xp2DArrayDouble::cls_xp2DArrayDouble(cls_xp2DArrayDouble&& other) noexcept
    : rows(std::exchange(other.rows, 0)), columns(std::exchange(other.columns, 0)),
      entries(std::exchange(other.entries, {})),
      uid(std::exchange(other.uid, cls_Uid::AllocateUid())) {}

cls_xp2DArrayDouble& cls_xp2DArrayDouble::operator=(cls_xp2DArrayDouble&& other) noexcept {
  if (this == &other) return *this;
  rows = std::exchange(other.rows, 0);
  columns = std::exchange(other.columns, 0);
  entries = std::exchange(other.entries, {});
  uid = std::exchange(other.uid, cls_Uid::AllocateUid());
  return *this;
}

void cls_xp2DArrayDouble::DBWrite(const cls_WriteVisitor& visitor) const {
  if (visitor.StartWrite(TypeId(), uid) == 0) return;
  visitor.WriteDoubles(entries.data(), rows, columns);
}
