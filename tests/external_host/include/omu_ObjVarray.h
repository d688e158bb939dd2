#ifndef OMU_OBJ_VARRAY_H
#define OMU_OBJ_VARRAY_H

#include "xh_Pages.h"

/// Array that owns its elements.
template <class T>
class XH_API omu_ObjVarray {
public:
  omu_ObjVarray() : m_ratio(1.5) {}
  omu_ObjVarray(unsigned int, double ratio) : m_ratio(ratio) {}
  omu_ObjVarray(omu_ObjVarray&&) noexcept = default;
  omu_ObjVarray& operator=(omu_ObjVarray&& other) noexcept {
    if (this == &other) return *this;
    DeleteAll();
    m_pages = static_cast<xh_Pages&&>(other.m_pages);
    m_ratio = other.m_ratio;
    return *this;
  }
  virtual ~omu_ObjVarray() { DeleteAll(); }

  unsigned int Count() const { return m_pages.Count(); }
  T* operator[](unsigned int i) const { return static_cast<T*>(m_pages.At(i)); }
  double GrowthRatio() const { return m_ratio; }
  void SetGrowthRatio(double ratio) { m_ratio = ratio; }
  void add(void* element) { m_pages.Push(element); }

private:
  void DeleteAll() {
    while (m_pages.Count() != 0)
      delete static_cast<T*>(m_pages.Pop());
  }

  xh_Pages m_pages;
  double m_ratio;
};

#endif
