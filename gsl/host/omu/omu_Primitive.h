#ifndef OMU_PRIMITIVE_H
#define OMU_PRIMITIVE_H

#include "cow_String.h"

/// Base of the values that the scripting layer hands around.
class GSL_HOST_API omu_Primitive {
public:
  virtual ~omu_Primitive();
  virtual bool operator==(const omu_Primitive& other) const = 0;
  bool operator!=(const omu_Primitive& other) const { return !(*this == other); }
  /// A heap copy of the dynamic type that the caller owns.
  virtual omu_Primitive* Copy() const = 0;
  /// The value as text. The style is for kinds of value that have several; 0 is the plain one.
  virtual cow_String AsString(int style = 0) const = 0;

protected:
  omu_Primitive() = default;
  omu_Primitive(const omu_Primitive&) = default;
  omu_Primitive& operator=(const omu_Primitive&) = default;
};

#endif
