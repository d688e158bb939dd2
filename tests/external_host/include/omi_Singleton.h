#ifndef OMI_SINGLETON_H
#define OMI_SINGLETON_H

#include "xh_Registry.h"

#include <new>
#include <typeinfo>

/// The one object of class T. The registry of the process knows it by the name of the class, so
/// every library finds the same object, whichever library instantiates this template.
template <class T>
class XH_API omi_Singleton {
public:
  static T& Instance() {
    void* found = xh_Registry::Find(typeid(T).name());
    return found != nullptr ? *static_cast<T*>(found) : Make();
  }

  static bool Exists() { return xh_Registry::Find(typeid(T).name()) != nullptr; }

  static void Destroy() {
    void* const found = xh_Registry::Find(typeid(T).name());
    xh_Registry::Set(typeid(T).name(), nullptr);
    delete static_cast<T*>(found);
  }

private:
  static T& Make() {
    void* const place = ::operator new(sizeof(T));
    // The constructor may ask for the object.
    xh_Registry::Set(typeid(T).name(), place);
    try {
      return *::new (place) T;
    } catch (...) {
      xh_Registry::Set(typeid(T).name(), nullptr);
      ::operator delete(place);
      throw;
    }
  }
};

#endif
