#ifndef OMI_SINGLETON_H
#define OMI_SINGLETON_H

#include "mem_Export.h"

#include <new>

/// The one object of class T in the process.
///
/// One library instantiates the class (`template class omi_Singleton<T>;`) and exports T. The
/// header of T declares it `extern template`, so that every shared library reaches the same
/// pointer.
///
/// Threads  nothing here is locked: the first Instance() and Destroy() need the process's one
///          starting or stopping thread. Instance() afterwards is a plain read.
template <class T>
class GSL_HOST_API omi_Singleton {
public:
  /// Creates the object on the first call, and again after Destroy().
  static T& Instance() {
    if (instance == nullptr) Create();
    return *instance;
  }

  /// Returns true between the first Instance() and Destroy(). Creates nothing.
  [[nodiscard]] static bool Exists() { return instance != nullptr; }

  /// Deletes the object, if there is one. A later Instance() makes a fresh object.
  static void Destroy();

private:
  static void Create();

  static T* instance;
};

template <class T>
T* omi_Singleton<T>::instance = nullptr;

template <class T>
void omi_Singleton<T>::Create() {
  // The pointer is set before the constructor runs, so that a constructor that asks for the
  // instance finds this object instead of recursing.
  instance = static_cast<T*>(::operator new(sizeof(T)));
  try {
    ::new (static_cast<void*>(instance)) T;
  } catch (...) {
    ::operator delete(static_cast<void*>(instance));
    instance = nullptr;
    throw;
  }
}

template <class T>
void omi_Singleton<T>::Destroy() {
  T* const object = instance;
  instance = nullptr;
  delete object;
}

#endif
