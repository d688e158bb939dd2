#ifndef CLS_LIST_WRITER_H
#define CLS_LIST_WRITER_H

#include "cls_WriteVisitor.h"

/// Adds entries to a list. The visitor of the list owns it, so that a caller that finishes it must
/// leave it alone; a caller that fails may delete it.
class XH_API cls_ListWriter {
public:
  ~cls_ListWriter();

  void WriteNull(unsigned int typeId);
  bool Finish();

private:
  friend class cls_WriteVisitor;

  explicit cls_ListWriter(const cls_WriteVisitor& list);

  const cls_WriteVisitor& m_visitor;
};

class XH_API cls_WriteRequestListObj {
public:
  explicit cls_WriteRequestListObj(cls_ListWriter& list) : m_list(&list) {}

private:
  friend class cls_WriteVisitor;

  cls_ListWriter* m_list;
};

#endif
