#ifndef OMU_TYPE_DESCRIPTION_H
#define OMU_TYPE_DESCRIPTION_H

class omu_InterfaceObj;
class omu_PrimTuple;
class omu_Primitive;

using omu_Method = omu_Primitive* (omu_InterfaceObj::*)(const omu_PrimTuple& arguments);

struct omu_MethodEntry {
  const char* title;
  omu_Method run;
  int atLeast;
  int atMost;
};

struct omu_MemberEntry {
  const char* title;
  omu_Primitive* (omu_InterfaceObj::*reader)() const;
  void (omu_InterfaceObj::*writer)(const omu_Primitive& value);
  void (omu_InterfaceObj::*eraser)();
};

#endif
