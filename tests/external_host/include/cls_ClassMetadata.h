#ifndef CLS_CLASS_METADATA_H
#define CLS_CLASS_METADATA_H

#include "cls_AttributeType.h"
#include "cls_TypeAdapter.h"

#include <list>
#include <memory>
#include <vector>

struct XH_API xh_Attribute {
  const char* name;
  cls_AttributeType type;
  unsigned int argument;
  cls_CollectionType collection;
};

class XH_API cls_ClassMetadata {
public:
  cls_ClassMetadata& AddDtor(void (*destroy)(void* object));
  cls_ClassMetadata& AddAttribute(const char* name, cls_AttributeType type, unsigned int argument,
                                  cls_CollectionType collection);

  explicit cls_ClassMetadata(const xh_Class* theClass);
  ~cls_ClassMetadata();
  /// Describes the class again.
  void xh_Forget(const xh_Class* theClass);
  const xh_Class& xh_Described() const { return *m_class; }
  const std::vector<xh_Attribute>& xh_Attributes() const { return m_attributes; }
  using xh_Destroy = void (*)(void*);
  xh_Destroy xh_Destroyer() const { return m_destroy; }
  void xh_SetBase(unsigned int typeId) { m_base = typeId; }
  unsigned int xh_Base() const { return m_base; }
  int xh_Flags() const { return m_flags; }
  void xh_SetFlags(int flags) { m_flags = flags; }

private:
  std::unique_ptr<const xh_Class> m_class;
  std::vector<xh_Attribute> m_attributes;
  void (*m_destroy)(void*) = nullptr;
  unsigned int m_base = 0;
  int m_flags = 0;
};

#endif
