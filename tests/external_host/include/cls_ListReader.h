#ifndef CLS_LIST_READER_H
#define CLS_LIST_READER_H

#include "cls_ReadVisitor.h"

class XH_API cls_ListReader {
public:
  explicit cls_ListReader(const cls_ReadVisitor& list);
  ~cls_ListReader();

  bool HasNext() const;

  template <class T>
  T* ReadObject() {
    return cls_ReadVisitor(m_loading, Take()).template xh_Make<T>();
  }

  template <class T>
  T ReadValue() {
    const cls_ReadVisitor entry(m_loading, Take());
    RefuseNull(entry);
    entry.CheckTypeId(T::TypeId());
    return T(entry);
  }

private:
  std::shared_ptr<xh_Record> Take();
  static void RefuseNull(const cls_ReadVisitor& entry);

  xh_Loading& m_loading;
  std::shared_ptr<xh_Record> m_list;
  std::size_t m_next;
};

#endif
