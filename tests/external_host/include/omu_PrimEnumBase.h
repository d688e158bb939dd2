#ifndef OMU_PRIM_ENUM_BASE_H
#define OMU_PRIM_ENUM_BASE_H

#include "atr_String.h"
#include "cow_Map.h"
#include "omu_Primitive.h"

class cls_ReadVisitor;

class XH_API omu_PrimEnumBase : public omu_Primitive {
public:
  omu_PrimEnumBase();
  explicit omu_PrimEnumBase(const cls_ReadVisitor& visitor);
  omu_PrimEnumBase(const omu_PrimEnumBase&);
  omu_PrimEnumBase& operator=(const omu_PrimEnumBase&);
  ~omu_PrimEnumBase() override;

  int GetValue() const;
  const atr_String& GetString() const;
  cow_String AsString() const;
  cow_String PermissibleValuesAsString() const;
  bool operator==(const omu_Primitive& other) const override;
  virtual cow_Map<cow_String, unsigned int> PermissibleValues() const = 0;

protected:
  void Set(int value, const char* name);

private:
  atr_String m_name;
  int m_value;
};

#endif
