#ifndef GSL_RECORD_LAYOUT_H
#define GSL_RECORD_LAYOUT_H

#include "cls_ClassRegistrar.h"
#include "cls_TypeAdapter.h"
#include "cls_Uid.h"
#include "gsl_FieldKinds.h"

// A host may take the fields of a record in one run.
#if __has_include("cls_ReadRun.h")
#include "cls_ReadRun.h"
#else
class cls_ReadRun;
#endif

#include <array>
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

/// The fields of a layout as a run of the host takes them.
template <class C, class Run>
class gsl_RunLayout {
  static constexpr std::size_t kCount = std::tuple_size_v<decltype(gsl_RecordLayout<C>::kFields)>;
  using Rows = std::array<typename Run::Field, kCount>;

  template <class Stored, class Member>
  static constexpr typename Run::Field RowOf(const gsl_Field<Stored, Member>& field) {
    return {field.handle.Name(), gsl_FieldKind<Member>::kAttribute.type};
  }
  static constexpr Rows kRows = std::apply(
      [](const auto&... field) { return Rows{RowOf(field)...}; }, gsl_RecordLayout<C>::kFields);

public:
  static constexpr typename Run::Fields kFields = {kRows.data(), kCount};
};

/// Takes every field of `stored` from a run that fits.
template <class C, class Run>
void gsl_TakeFields(Run& run, typename gsl_RecordLayout<C>::Stored& stored) {
  const auto take = [&](const auto& field) {
    using Member = std::decay_t<decltype(stored.*field.member)>;
    gsl_FieldKind<Member>::Take(run, field.handle, stored.*field.member);
  };
  std::apply([&](const auto&... field) { (take(field), ...); }, gsl_RecordLayout<C>::kFields);
}

/// Whether a field of a layout holds an object.
template <class Stored, class... Members>
constexpr bool gsl_AnyHoldsAnObject(const std::tuple<gsl_Field<Stored, Members>...>&) {
  return ((gsl_FieldKind<Members>::kAttribute.type == cls_ObjectAttribute) || ...);
}

/// Takes the field that holds an object of class C, of which `uid` and `stored` are parts. Where
/// its record does not fit, `read` reads the object. Inlined, both runs stay in registers.
template <class C, class Run, class Read>
[[gnu::always_inline]] inline void gsl_TakeObject(Run& run, cls_Uid& uid,
                                                  typename gsl_RecordLayout<C>::Stored& stored,
                                                  const Read& read) {
  static_assert(!gsl_AnyHoldsAnObject(gsl_RecordLayout<C>::kFields), "a nested run has no visitor");
  Run own(run, C::TypeId(), gsl_RunLayout<C, Run>::kFields);
  if (!own.Fits()) return run.TakeObject(read);
  uid = own.GetUid();
  gsl_TakeFields<C>(own, stored);
  run.SkipObject(own);
}

/// Reads every field of `stored` in one run. Returns false, and reads nothing, where the host has
/// no runs or the record does not fit.
template <class C, class Run>
[[nodiscard]] bool gsl_ReadInRun(const cls_ReadVisitor& visitor,
                                 typename gsl_RecordLayout<C>::Stored& stored) {
#if __has_include("cls_ReadRun.h")
  Run run(visitor, gsl_RunLayout<C, Run>::kFields);
  if (run.Fits()) gsl_TakeFields<C>(run, stored);
  return run.Fits();
#else
  static_cast<void>(visitor);
  static_cast<void>(stored);
  return false;
#endif
}

/// Whether each field of a layout can be in a run.
template <class Stored, class... Members>
constexpr bool gsl_AllInRuns(const std::tuple<gsl_Field<Stored, Members>...>&) {
  return (gsl_FieldKind<Members>::kInRuns && ...);
}

/// Overwrites every field of `stored`; the caller reads the identity. Throws for a record of
/// another class, whether it is a root or nested. A record of a derived class is read, and so is an
/// absent record.
template <class C>
void gsl_ReadRecord(const cls_ReadVisitor& visitor, typename gsl_RecordLayout<C>::Stored& stored) {
  visitor.CheckTypeId(C::TypeId());
  if constexpr (gsl_AllInRuns(gsl_RecordLayout<C>::kFields)) {
    if (gsl_ReadInRun<C, cls_ReadRun>(visitor, stored)) return;
  }
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
