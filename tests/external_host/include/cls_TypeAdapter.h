#ifndef CLS_TYPE_ADAPTER_H
#define CLS_TYPE_ADAPTER_H

#include "xh_Export.h"

#include <type_traits>

class cls_ReadVisitor;

/// What this host knows of a class: functions in place of virtual operations.
struct XH_API xh_Class {
  const char* name;
  int number;
  unsigned int argument;
  unsigned int typeId;
  void* (*make)(const cls_ReadVisitor& visitor);
};

template <class T>
class XH_API cls_TypeAdapter : public xh_Class {
public:
  cls_TypeAdapter(const char* className, int classNumber, unsigned int classArgument)
      : xh_Class{className, classNumber, classArgument, T::TypeId(), &Make} {}

private:
  static void* Make(const cls_ReadVisitor& visitor) {
    if constexpr (std::is_constructible_v<T, const cls_ReadVisitor&>) {
      return new T(visitor);
    } else {
      return new T(visitor, nullptr, nullptr);
    }
  }
};

#endif
