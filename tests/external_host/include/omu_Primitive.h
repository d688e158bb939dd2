#ifndef OMU_PRIMITIVE_H
#define OMU_PRIMITIVE_H

#include "cow_String.h"

/// A value of the scripting layer.
class XH_API omu_Primitive {
public:
  virtual omu_Primitive* Copy() const = 0;
  virtual bool operator==(const omu_Primitive& other) const = 0;
  virtual ~omu_Primitive();
};

#endif
