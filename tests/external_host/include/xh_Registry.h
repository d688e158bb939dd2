#ifndef XH_REGISTRY_H
#define XH_REGISTRY_H

#include "xh_Export.h"

/// The objects of which the process has one, by the name of their type. Every call is safe from any
/// thread.
class XH_API xh_Registry {
public:
  /// Returns null for a type without an object.
  static void* Find(const char* typeName) noexcept;
  /// Replaces the object of the type. Null removes it.
  static void Set(const char* typeName, void* object);
};

#endif
