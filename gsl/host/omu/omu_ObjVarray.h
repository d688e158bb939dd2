#ifndef OMU_OBJ_VARRAY_H
#define OMU_OBJ_VARRAY_H

#include "mem_Export.h"
#include "omu_BaseVarray.h"

#include <cstddef>
#include <iterator>

/// Array that owns heap objects of class T, or of classes derived from it; an entry may be null.
/// It is a thin layer over omu_BaseVarray. A move leaves its source empty.
template <class T>
class GSL_HOST_API omu_ObjVarray : public omu_BaseVarray {
public:
  /// Iterates over the entries in order. An empty entry is null.
  class Iterator {
  public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = T*;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = T*;

    /// Points to the element at `place`.
    explicit Iterator(void* const* place = nullptr) : m_at(place) {}
    [[nodiscard]] T* operator*() const { return static_cast<T*>(*m_at); }
    [[nodiscard]] T* operator[](std::ptrdiff_t n) const { return static_cast<T*>(m_at[n]); }
    Iterator& operator++() { return *this += 1; }
    Iterator& operator--() { return *this -= 1; }
    Iterator operator++(int) { return Iterator(m_at++); }
    Iterator operator--(int) { return Iterator(m_at--); }
    Iterator& operator+=(std::ptrdiff_t n) {
      m_at += n;
      return *this;
    }
    Iterator& operator-=(std::ptrdiff_t n) { return *this += -n; }
    friend Iterator operator+(Iterator i, std::ptrdiff_t n) { return i += n; }
    friend Iterator operator+(std::ptrdiff_t n, Iterator i) { return i += n; }
    friend Iterator operator-(Iterator i, std::ptrdiff_t n) { return i -= n; }
    friend std::ptrdiff_t operator-(Iterator a, Iterator b) { return a.m_at - b.m_at; }
    [[nodiscard]] friend bool operator==(Iterator a, Iterator b) { return a.m_at == b.m_at; }
    [[nodiscard]] friend bool operator!=(Iterator a, Iterator b) { return a.m_at != b.m_at; }
    [[nodiscard]] friend bool operator<(Iterator a, Iterator b) { return a.m_at < b.m_at; }
    [[nodiscard]] friend bool operator>(Iterator a, Iterator b) { return b < a; }
    [[nodiscard]] friend bool operator<=(Iterator a, Iterator b) { return !(b < a); }
    [[nodiscard]] friend bool operator>=(Iterator a, Iterator b) { return !(a < b); }

  private:
    void* const* m_at;
  };

  omu_ObjVarray();
  /// Makes an empty array with that capacity and growth ratio.
  omu_ObjVarray(unsigned int initialCapacity, double ratio);
  omu_ObjVarray(omu_ObjVarray&& other) noexcept;
  /// Deletes the elements that the array had.
  omu_ObjVarray& operator=(omu_ObjVarray&& other) noexcept;
  /// Deletes the elements.
  ~omu_ObjVarray() override;

  /// Returns null for an empty entry. The array keeps the object. Does not check the range.
  [[nodiscard]] T* operator[](unsigned int i) const { return static_cast<T*>(Entry(i)); }

  /// The iterators are valid until the array changes.
  Iterator begin() const { return Iterator(Entries()); }
  Iterator end() const { return begin() + static_cast<std::ptrdiff_t>(Count()); }

  /// Appends an element, or null, and takes it over. Requires that the element is in no array.
  /// After an exception the caller still owns it.
  void Add(T* element) { add(element); }
  /// Takes the element out and leaves null. The caller owns the element. Does not check the range.
  [[nodiscard]] T* Release(unsigned int i);
  /// Deletes the elements and keeps the storage.
  void Clear();
};

template <class T>
omu_ObjVarray<T>::omu_ObjVarray() = default;

template <class T>
omu_ObjVarray<T>::omu_ObjVarray(unsigned int initialCapacity, double ratio)
    : omu_BaseVarray(initialCapacity, ratio) {}

template <class T>
omu_ObjVarray<T>::omu_ObjVarray(omu_ObjVarray&& other) noexcept = default;

template <class T>
omu_ObjVarray<T>& omu_ObjVarray<T>::operator=(omu_ObjVarray&& other) noexcept {
  if (this == &other) return *this;
  Clear();
  omu_BaseVarray::operator=(static_cast<omu_BaseVarray&&>(other));
  return *this;
}

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
