#ifndef CLS_WRITE_VISITOR_H
#define CLS_WRITE_VISITOR_H

#include "cls_FieldHandle.h"
#include "cow_COW.h"
#include "xh_Record.h"

class cls_ListWriter;
class cls_WriteRequestListObj;

/// Writes one record into the place that its constructor names.
class XH_API cls_WriteVisitor {
public:
  cls_WriteVisitor(const cls_WriteVisitor& parent, const cls_FieldHandle& field);
  template <class T, class Cloner>
  cls_WriteVisitor(const cls_WriteVisitor& parent, const cls_FieldHandle& field,
                   const cow_COW<T, Cloner>& holder)
      : cls_WriteVisitor(parent, field) {
    m_shared = holder.xh_Object();
  }
  explicit cls_WriteVisitor(const cls_WriteRequestListObj& request);
  cls_WriteVisitor(const cls_WriteVisitor&) = delete;
  ~cls_WriteVisitor();

  int StartWrite(unsigned int typeId, const cls_Uid& uid) const;
  void WriteInteger(const cls_FieldHandle& field, int value) const;
  void WriteDouble(const cls_FieldHandle& field, double value) const;
  void WriteBoolean(const cls_FieldHandle& field, bool value) const;
  void WriteString(const cls_FieldHandle& field, const cow_String& value) const;
  void WriteNullObject(const cls_FieldHandle& field, unsigned int typeId) const;
  void CheckCollectionType(int type) const;
  cls_ListWriter* GetListWriter() const;

  cls_WriteVisitor(xh_Saving& saving, std::shared_ptr<xh_Record>& root);
  xh_Record& xh_Started() const;

private:
  friend class cls_ListWriter;

  xh_Field& Append(const cls_FieldHandle& field, xh_Field::Kind kind) const;

  xh_Saving* m_saving;
  std::shared_ptr<xh_Record> m_holder; ///< null for a root
  std::shared_ptr<xh_Record>* m_root;  ///< null for every other record
  std::string m_name;
  std::shared_ptr<const void> m_shared;
  mutable std::shared_ptr<xh_Record> m_record;
  mutable cls_ListWriter* m_list;
};

#endif
