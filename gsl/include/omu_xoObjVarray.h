#ifndef OMU_XO_OBJ_VARRAY_H
#define OMU_XO_OBJ_VARRAY_H

#include "cls_ClassRegistrar.h"
#include "cls_ListReader.h"
#include "cls_ListWriter.h"
#include "cls_Uid.h"
#include "gsl_Dot.h"
#include "gsl_Export.h"
#include "gsl_Plane.h"
#include "gsl_StLine.h"
#include "omu_ObjVarray.h"

#include <memory>
#include <utility>

/// Name and type id of the persistent array of T: specialised for every class that has one, with
/// `kName` and `kTypeId`.
template <class T>
struct omu_xoObjVarrayTable;

/// Persistent array that owns datum entities; an entry may be null and keeps its position.
///
/// Record    "growthRatio_", then "data_": the entries in order, each a full record of its own
///           class. Objects that carry the same uid are therefore all kept.
/// Identity  the array and its data record each have a uid. A constructor makes fresh uids, and a
///           record keeps the stored uids. The two owner uids belong to the caller: the array keeps
///           pointers, and neither owns nor stores them.
/// Moves     take the identities and the owners along. The source is then empty, with fresh
///           identities and without owners.
/// Errors    reading throws nex_Exception for a record of another class, a field of another kind,
///           and an element that is not a T; std::bad_alloc.
template <class T>
class GSL_API omu_xoObjVarray : public omu_ObjVarray<T> {
public:
  omu_xoObjVarray();
  /// Makes an empty array with that capacity and growth ratio.
  omu_xoObjVarray(unsigned int initialCapacity, double ratio);
  /// Makes an empty array that belongs to these owners.
  omu_xoObjVarray(const cls_Uid* firstOwner, const cls_Uid* secondOwner);
  /// Makes an empty array with owners, capacity and growth ratio.
  omu_xoObjVarray(const cls_Uid* firstOwner, const cls_Uid* secondOwner,
                  unsigned int initialCapacity, double ratio);
  /// A missing growth ratio reads as 0.0; missing data reads as no entries.
  omu_xoObjVarray(const cls_ReadVisitor& visitor, const cls_Uid* firstOwner,
                  const cls_Uid* secondOwner);
  omu_xoObjVarray(omu_xoObjVarray&& other) noexcept;
  omu_xoObjVarray& operator=(omu_xoObjVarray&& other) noexcept;
  ~omu_xoObjVarray() override;

  virtual unsigned int DynTypeId() const;
  virtual void DBWrite(const cls_WriteVisitor& visitor) const;
  static void InitializeMetadata(cls_ClassRegistrar& registrar);

  const cls_Uid& Uid() const { return m_uid; }
  const cls_Uid& DataUid() const { return m_dataUid; }
  /// Returns the owners passed to the constructor, or null.
  const cls_Uid* FirstOwner() const { return m_owners[0]; }
  /// Returns the second owner, or null.
  const cls_Uid* SecondOwner() const { return m_owners[1]; }

  static constexpr unsigned int TypeId() { return omu_xoObjVarrayTable<T>::kTypeId; }

private:
  void DBWriteData(const cls_WriteVisitor& visitor) const;
  void DBReadData(const cls_ReadVisitor& visitor);

  static constexpr cls_FieldHandle kGrowthRatio = {-1, "growthRatio_"};
  static constexpr cls_FieldHandle kData = {-1, "data_"};

  cls_Uid m_uid;
  cls_Uid m_dataUid;
  const cls_Uid* m_owners[2];
};

template <class T>
omu_xoObjVarray<T>::omu_xoObjVarray() : omu_xoObjVarray(nullptr, nullptr) {}

template <class T>
omu_xoObjVarray<T>::omu_xoObjVarray(unsigned int initialCapacity, double ratio)
    : omu_xoObjVarray(nullptr, nullptr, initialCapacity, ratio) {}

template <class T>
omu_xoObjVarray<T>::omu_xoObjVarray(const cls_Uid* firstOwner, const cls_Uid* secondOwner)
    : m_uid(cls_Uid::AllocateUid()),
      m_dataUid(cls_Uid::AllocateUid()), m_owners{firstOwner, secondOwner} {}

template <class T>
omu_xoObjVarray<T>::omu_xoObjVarray(const cls_Uid* firstOwner, const cls_Uid* secondOwner,
                                    unsigned int initialCapacity, double ratio)
    : omu_ObjVarray<T>(initialCapacity, ratio), m_uid(cls_Uid::AllocateUid()),
      m_dataUid(cls_Uid::AllocateUid()), m_owners{firstOwner, secondOwner} {}

template <class T>
omu_xoObjVarray<T>::omu_xoObjVarray(const cls_ReadVisitor& visitor, const cls_Uid* firstOwner,
                                    const cls_Uid* secondOwner)
    : m_uid(visitor.GetUid()), m_owners{firstOwner, secondOwner} {
  visitor.CheckTypeId(TypeId());
  this->SetGrowthRatio(visitor.ReadDouble(kGrowthRatio, 0.0));
  DBReadData(cls_ReadVisitor(visitor, kData));
}

template <class T>
omu_xoObjVarray<T>::omu_xoObjVarray(omu_xoObjVarray&& other) noexcept
    : omu_ObjVarray<T>(static_cast<omu_ObjVarray<T>&&>(other)),
      m_uid(std::exchange(other.m_uid, cls_Uid::AllocateUid())),
      m_dataUid(std::exchange(other.m_dataUid, cls_Uid::AllocateUid())),
      m_owners{std::exchange(other.m_owners[0], nullptr),
               std::exchange(other.m_owners[1], nullptr)} {}

template <class T>
omu_xoObjVarray<T>& omu_xoObjVarray<T>::operator=(omu_xoObjVarray&& other) noexcept {
  if (this == &other) return *this;
  omu_ObjVarray<T>::operator=(static_cast<omu_ObjVarray<T>&&>(other));
  m_uid = std::exchange(other.m_uid, cls_Uid::AllocateUid());
  m_dataUid = std::exchange(other.m_dataUid, cls_Uid::AllocateUid());
  for (int i = 0; i < 2; ++i)
    m_owners[i] = std::exchange(other.m_owners[i], nullptr);
  return *this;
}

template <class T>
omu_xoObjVarray<T>::~omu_xoObjVarray() = default;

template <class T>
unsigned int omu_xoObjVarray<T>::DynTypeId() const {
  return TypeId();
}

template <class T>
void omu_xoObjVarray<T>::DBWrite(const cls_WriteVisitor& visitor) const {
  if (visitor.StartWrite(TypeId(), m_uid) == 0) return;
  visitor.WriteDouble(kGrowthRatio, this->GrowthRatio());
  DBWriteData(cls_WriteVisitor(visitor, kData));
}

template <class T>
void omu_xoObjVarray<T>::DBWriteData(const cls_WriteVisitor& visitor) const {
  if (visitor.StartWrite(cls_kCollectionTypeId, m_dataUid) == 0) return;
  visitor.CheckCollectionType(cls_ObjectList);
  std::unique_ptr<cls_ListWriter> list(visitor.GetListWriter());
  for (unsigned int i = 0; i < this->Count(); ++i) {
    if (const T* const element = (*this)[i]) {
      const cls_WriteRequestListObj request(*list);
      element->DBWrite(cls_WriteVisitor(request));
    } else {
      list->WriteNull(T::TypeId());
    }
  }
  // A writer that is not done yet stays with the visitor.
  if (!list->Finish()) static_cast<void>(list.release());
}

template <class T>
void omu_xoObjVarray<T>::DBReadData(const cls_ReadVisitor& visitor) {
  m_dataUid = visitor.GetUid();
  const std::unique_ptr<cls_ListReader> list(visitor.GetListReader());
  while (list->HasNext()) {
    std::unique_ptr<T> element(list->ReadObject<T>());
    this->add(element.get());
    static_cast<void>(element.release());
  }
}

template <class T>
void omu_xoObjVarray<T>::InitializeMetadata(cls_ClassRegistrar& registrar) {
  registrar
      .AddClassMD(new cls_TypeAdapter<omu_xoObjVarray>(omu_xoObjVarrayTable<T>::kName, 800, 1u))
      .AddAttribute(kGrowthRatio.Name(), cls_DoubleAttribute, 1, cls_NoCollection)
      .AddAttribute(kData.Name(), cls_ObjectAttribute, cls_kCollectionTypeId, cls_ObjectList);
}

/// The array of datum points.
template <>
struct omu_xoObjVarrayTable<gsl_Dot> {
  static constexpr const char* kName = "gsl_DotArray";
  static constexpr unsigned int kTypeId = 0x030A000Eu;
};
/// The array of planes.
template <>
struct omu_xoObjVarrayTable<gsl_Plane> {
  static constexpr const char* kName = "gsl_PlaneArray";
  static constexpr unsigned int kTypeId = 0x030A000Du;
};
/// The array of lines.
template <>
struct omu_xoObjVarrayTable<gsl_StLine> {
  static constexpr const char* kName = "gsl_LineArray";
  static constexpr unsigned int kTypeId = 0x030A000Au;
};

extern template class GSL_API omu_ObjVarray<gsl_Dot>;
extern template class GSL_API omu_ObjVarray<gsl_Plane>;
extern template class GSL_API omu_ObjVarray<gsl_StLine>;
extern template class GSL_API omu_xoObjVarray<gsl_Dot>;
extern template class GSL_API omu_xoObjVarray<gsl_Plane>;
extern template class GSL_API omu_xoObjVarray<gsl_StLine>;

#endif
