#ifndef GSL_RECORD_LAYOUT_H
#define GSL_RECORD_LAYOUT_H

#include "cls_ClassRegistrar.h"
#include "cls_TypeAdapter.h"
#include "cls_Uid.h"
#include "gsl_FieldKinds.h"

#include <new>
#include <tuple>
#include <type_traits>
#include <utility>

/// The record of class C, in one table. A specialisation has
///   Stored     the type of the table's members: C, or the form in which C is stored;
///   kAdapter   how the class registers;
///   kFields    a tuple of gsl_Field in write order.
/// Writer, reader and registration walk the same table, so that they cannot disagree.
template <class C>
struct gsl_RecordLayout;

struct gsl_RecordAdapter {
  const char* name;
  int number;
  /// True when a function that destroys an instance is registered too.
  bool hasDtor;
};

template <class Stored, class Member>
struct gsl_Field {
  cls_FieldHandle handle;
  Member Stored::*member;

  constexpr gsl_Field(int index, const char* name, Member Stored::*where)
      : handle(index, name), member(where) {}
};

/// Writes the fields of `stored` into a record that was started.
template <class C>
void gsl_WriteFields(const cls_WriteVisitor& visitor,
                     const typename gsl_RecordLayout<C>::Stored& stored) {
  const auto write = [&](const auto& field) {
    using Member = std::decay_t<decltype(stored.*field.member)>;
    gsl_FieldKind<Member>::Write(visitor, field.handle, stored.*field.member);
  };
  std::apply([&](const auto&... field) { (write(field), ...); }, gsl_RecordLayout<C>::kFields);
}

/// Writes the record of `stored` under the identity of its object.
template <class C>
void gsl_WriteRecord(const cls_WriteVisitor& visitor, const cls_Uid& uid,
                     const typename gsl_RecordLayout<C>::Stored& stored) {
  if (visitor.StartWrite(C::TypeId(), uid) == 0) return;
  gsl_WriteFields<C>(visitor, stored);
}

/// Overwrites every field of `stored`; the caller reads the identity. Throws for a record of
/// another class, whether it is a root or nested. A record of a derived class is read, and so is an
/// absent record.
template <class C>
void gsl_ReadRecord(const cls_ReadVisitor& visitor, typename gsl_RecordLayout<C>::Stored& stored) {
  visitor.CheckTypeId(C::TypeId());
  const auto read = [&](const auto& field) {
    using Member = std::decay_t<decltype(stored.*field.member)>;
    gsl_FieldKind<Member>::Read(visitor, field.handle, stored.*field.member);
  };
  std::apply([&](const auto&... field) { (read(field), ...); }, gsl_RecordLayout<C>::kFields);
}

template <class C>
void gsl_DestroyInstance(void* object) {
  C* const instance = static_cast<C*>(object);
  if constexpr (std::has_virtual_destructor_v<C>) {
    delete instance;
  } else if (instance != nullptr) {
    // A value class: the instance is a C, not an object of a derived class.
    instance->C::~C();
    ::operator delete(object);
  }
}

template <class C>
void gsl_RegisterRecord(cls_ClassRegistrar& registrar) {
  constexpr gsl_RecordAdapter kAdapter = gsl_RecordLayout<C>::kAdapter;
  cls_ClassMetadata& metadata =
      registrar.AddClassMD(new cls_TypeAdapter<C>(kAdapter.name, kAdapter.number, 1u));
  if constexpr (kAdapter.hasDtor) metadata.AddDtor(&gsl_DestroyInstance<C>);
  const auto add = [&](const auto& field) {
    using Stored = typename gsl_RecordLayout<C>::Stored;
    using Member = std::decay_t<decltype(std::declval<Stored&>().*field.member)>;
    constexpr gsl_Attribute kAttribute = gsl_FieldKind<Member>::kAttribute;
    metadata.AddAttribute(field.handle.Name(), kAttribute.type, kAttribute.argument,
                          kAttribute.collection);
  };
  std::apply([&](const auto&... field) { (add(field), ...); }, gsl_RecordLayout<C>::kFields);
}

#endif
