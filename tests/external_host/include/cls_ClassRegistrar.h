#ifndef CLS_CLASS_REGISTRAR_H
#define CLS_CLASS_REGISTRAR_H

#include "cls_ClassMetadata.h"

class XH_API cls_ClassRegistrar {
public:
  /// Takes the description over.
  cls_ClassMetadata& AddClassMD(const xh_Class* described);
  bool InheritanceCheck(unsigned int dynType, unsigned int queried) const;

  cls_ClassRegistrar();
  ~cls_ClassRegistrar();
  cls_ClassMetadata* xh_Find(unsigned int typeId) const;
  /// The flags of the classes that register from now on.
  void xh_SetFlags(int flags) { m_flags = flags; }
  std::list<cls_ClassMetadata>& xh_Classes() { return m_classes; }

private:
  mutable std::list<cls_ClassMetadata> m_classes;
  int m_flags = 0;
};

#endif
