#ifndef OMU_INTERFACE_OBJ_H
#define OMU_INTERFACE_OBJ_H

#include "omu_Shortcut.h"
#include "omu_TypeDescription.h"

/// An object of the scripting layer. Scripts call its methods by name.
class XH_API omu_InterfaceObj {
public:
  explicit omu_InterfaceObj(const omu_Shortcut& shortcut);
  omu_InterfaceObj(const omu_InterfaceObj&);
  omu_InterfaceObj& operator=(const omu_InterfaceObj&);

  virtual omu_InterfaceObj* Copy() const = 0;
  virtual ~omu_InterfaceObj();

  const char* xh_TypeName() const { return m_typeName; }
  const omu_Shortcut& xh_Place() const { return m_place; }
  /// Throws nex_CommandException for an unknown name or a wrong number of arguments.
  omu_Primitive* xh_Call(const char* method, const omu_PrimTuple& arguments);

protected:
  void DescribeType(const char* typeName, const omu_MethodEntry* methods,
                    const omu_MemberEntry* members, const void* oldMethods, const void* oldMembers);

private:
  omu_Shortcut m_place;
  const char* m_typeName;
  const omu_MethodEntry* m_methods;
};

#endif
