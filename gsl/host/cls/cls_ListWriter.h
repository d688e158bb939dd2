#ifndef CLS_LIST_WRITER_H
#define CLS_LIST_WRITER_H

#include "cls_WriteVisitor.h"
#include "mem_Export.h"

/// Writes the entries of a list in order.
class GSL_HOST_API cls_ListWriter {
public:
  cls_ListWriter(const cls_ListWriter&) = delete;
  cls_ListWriter& operator=(const cls_ListWriter&) = delete;

  /// Writes an entry that holds nothing, so that later entries keep their positions.
  void WriteNull(unsigned int typeId);

  /// Ends the list. Returns whether the caller must delete the writer now.
  [[nodiscard]] bool Finish();

private:
  friend class cls_WriteVisitor;

  explicit cls_ListWriter(const cls_WriteVisitor& list);

  const cls_WriteVisitor& m_list;
};

/// Asks for the next entry of a list; the visitor made from it writes that entry's record.
class GSL_HOST_API cls_WriteRequestListObj {
public:
  /// Asks for the next entry of the list.
  explicit cls_WriteRequestListObj(cls_ListWriter& listWriter) : m_writer(listWriter) {}

private:
  friend class cls_WriteVisitor;

  cls_ListWriter& m_writer;
};

#endif
