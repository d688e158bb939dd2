#ifndef CLS_XP2DARRAYDOUBLE_H
#define CLS_XP2DARRAYDOUBLE_H

#include "cls_AttributeType.h"
#include "cls_Uid.h"

#include <cstddef>
#include <vector>

class cls_ReadVisitor;
class cls_WriteVisitor;

/// A matrix of rows.
class XH_API cls_xp2DArrayDouble {
public:
  cls_xp2DArrayDouble(std::size_t rows, std::size_t columns, const cls_Uid& uid);
  explicit cls_xp2DArrayDouble(const cls_ReadVisitor& visitor);
  ~cls_xp2DArrayDouble();
  cls_xp2DArrayDouble(const cls_xp2DArrayDouble&);
  cls_xp2DArrayDouble& operator=(const cls_xp2DArrayDouble&);

  std::size_t Rows() const { return m_lines.size(); }
  std::size_t Columns() const { return m_columns; }
  double operator()(std::size_t row, std::size_t column) const { return m_lines[row][column]; }
  double& operator()(std::size_t row, std::size_t column) { return m_lines[row][column]; }
  void DBWrite(const cls_WriteVisitor& visitor) const;
  static constexpr unsigned int TypeId() { return cls_kCollectionTypeId; }
  static constexpr cls_CollectionType CollectionType() { return cls_DoubleMatrix; }

private:
  std::vector<std::vector<double>> m_lines;
  std::size_t m_columns;
  cls_Uid m_uid;
};

#endif
