#ifndef OMU_OBJ_VARRAY_H
#define OMU_OBJ_VARRAY_H

#include "mem_Export.h"
#include "omu_BaseVarray.h"

/// Array that owns heap objects of class T, or of classes derived from it; an entry may be null.
/// A thin layer over omu_BaseVarray.
template <class T>
class GSL_HOST_API omu_ObjVarray : public omu_BaseVarray {
public:
  omu_ObjVarray();
  omu_ObjVarray(unsigned int initialCapacity, double ratio);
  /// Deletes the elements.
  ~omu_ObjVarray() override;

  /// Null for an empty entry; the array keeps the object. No range check.
  T* operator[](unsigned int i) const { return static_cast<T*>(Entry(i)); }

  /// Appends an element, or null, and takes it over: it must not be in an array already. On an
  /// exception it is still the caller's.
  void Add(T* element) { add(element); }
  /// Takes the element out, leaving null; it is the caller's now. No range check.
  T* Release(unsigned int i);
  /// Deletes the elements and keeps the storage.
  void Clear();
};

template <class T>
omu_ObjVarray<T>::omu_ObjVarray() = default;

template <class T>
omu_ObjVarray<T>::omu_ObjVarray(unsigned int initialCapacity, double ratio)
    : omu_BaseVarray(initialCapacity, ratio) {}

template <class T>
omu_ObjVarray<T>::~omu_ObjVarray() {
  Clear();
}

template <class T>
T* omu_ObjVarray<T>::Release(unsigned int i) {
  T* const element = (*this)[i];
  SetEntry(i, nullptr);
  return element;
}

template <class T>
void omu_ObjVarray<T>::Clear() {
  for (unsigned int i = 0; i < Count(); ++i)
    delete (*this)[i];
  ForgetEntries();
}

#endif
