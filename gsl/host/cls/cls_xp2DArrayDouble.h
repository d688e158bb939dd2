#ifndef CLS_XP2DARRAYDOUBLE_H
#define CLS_XP2DARRAYDOUBLE_H

#include "cls_AttributeType.h"
#include "cls_Uid.h"
#include "mem_Export.h"

#include <cstddef>
#include <vector>

class cls_ReadVisitor;
class cls_WriteVisitor;

/// Persistent matrix of doubles, row by row. A copy keeps the identity of its source. A move takes
/// the identity along and leaves the source 0 by 0, with a fresh identity.
class GSL_HOST_API cls_xp2DArrayDouble {
public:
  /// Makes a matrix of zeros. The identity is fresh unless the caller passes an identity.
  cls_xp2DArrayDouble(std::size_t rowCount, std::size_t columnCount,
                      const cls_Uid& identity = cls_Uid::AllocateUid());
  /// Reads the matrix. It is 0 by 0 for an absent record.
  explicit cls_xp2DArrayDouble(const cls_ReadVisitor& visitor);
  cls_xp2DArrayDouble(const cls_xp2DArrayDouble&) = default;
  cls_xp2DArrayDouble(cls_xp2DArrayDouble&& other) noexcept;
  /// After std::bad_alloc the matrix is as it was.
  cls_xp2DArrayDouble& operator=(const cls_xp2DArrayDouble& other) {
    m_entries = other.m_entries;
    m_rows = other.m_rows;
    m_columns = other.m_columns;
    m_uid = other.m_uid;
    return *this;
  }
  cls_xp2DArrayDouble& operator=(cls_xp2DArrayDouble&& other) noexcept;

  std::size_t Rows() const { return m_rows; }
  std::size_t Columns() const { return m_columns; }
  /// Does not check the range.
  double operator()(std::size_t row, std::size_t column) const {
    return m_entries[row * m_columns + column];
  }
  /// Does the same for an entry that is to be changed.
  double& operator()(std::size_t row, std::size_t column) {
    return m_entries[row * m_columns + column];
  }
  /// Returns the entries row by row.
  const double* begin() const { return m_entries.data(); }
  const double* end() const { return m_entries.data() + m_entries.size(); }
  double* begin() { return m_entries.data(); }
  double* end() { return m_entries.data() + m_entries.size(); }
  const cls_Uid& Uid() const { return m_uid; }

  void DBWrite(const cls_WriteVisitor& visitor) const;

  static constexpr unsigned int TypeId() { return cls_kCollectionTypeId; }
  static constexpr cls_CollectionType CollectionType() { return cls_DoubleMatrix; }

private:
  std::size_t m_rows;
  std::size_t m_columns;
  std::vector<double> m_entries;
  cls_Uid m_uid;
};

#endif
