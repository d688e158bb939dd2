#ifndef CLS_READ_VISITOR_H
#define CLS_READ_VISITOR_H

#include "cls_FieldHandle.h"
#include "cow_COW.h"
#include "xh_Record.h"

class cls_ListReader;

/// Reads one record, or is null if there is no record.
class XH_API cls_ReadVisitor {
public:
  cls_ReadVisitor(const cls_ReadVisitor& parent, const cls_FieldHandle& field);
  cls_ReadVisitor(const cls_ReadVisitor&) = delete;
  ~cls_ReadVisitor();

  cls_Uid GetUid() const;
  int ReadInteger(const cls_FieldHandle& field, int defaultValue) const;
  double ReadDouble(const cls_FieldHandle& field, double defaultValue) const;
  bool ReadBoolean(const cls_FieldHandle& field, bool defaultValue) const;
  cow_String ReadString(const cls_FieldHandle& field, const cow_String& defaultValue) const;
  void CheckTypeId(unsigned int typeId) const;
  cls_ListReader* GetListReader() const;

  template <class T, class Cloner>
  void ReadObject(const cls_FieldHandle& field, cow_COW<T, Cloner>& holder) const {
    const cls_ReadVisitor child(*this, field);
    std::shared_ptr<void> known = child.xh_Known();
    if (known == nullptr && child.m_record != nullptr) {
      known = std::shared_ptr<T>(child.xh_Make<T>());
      m_loading->read[child.m_record.get()] = known;
    }
    holder = cow_COW<T, Cloner>::xh_Of(std::static_pointer_cast<T>(known));
  }

  cls_ReadVisitor(xh_Loading& loading, std::shared_ptr<xh_Record> record);
  const xh_Record* xh_Get() const { return m_record.get(); }
  xh_Loading& xh_Load() const { return *m_loading; }
  /// Returns null for a null record.
  template <class T>
  T* xh_Make() const {
    if (m_record == nullptr) return nullptr;
    if (m_record->typeId == T::TypeId()) return new T(*this);
    return static_cast<T*>(xh_MakeDerived(T::TypeId()));
  }

private:
  friend class cls_ListReader;

  std::shared_ptr<void> xh_Known() const;
  void* xh_MakeDerived(unsigned int typeId) const;
  const xh_Field* Find(const cls_FieldHandle& field, xh_Field::Kind kind) const;

  xh_Loading* m_loading;
  std::shared_ptr<xh_Record> m_record;
};

#endif
