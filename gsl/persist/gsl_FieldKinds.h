#ifndef GSL_FIELD_KINDS_H
#define GSL_FIELD_KINDS_H

#include "cls_AttributeType.h"
#include "cls_FieldHandle.h"
#include "cls_ReadVisitor.h"
#include "cls_WriteVisitor.h"
#include "cls_xp1DArrayListUint.h"
#include "cls_xp2DArrayDouble.h"
#include "cow_COW.h"
#include "omu_PrimEnum.h"

#include <string_view>
#include <type_traits>
#include <vector>

/// How a member of type T is registered, written and read. A missing field reads as the default of
/// its kind: 0, 0.0, false, an empty text, a record without fields. The member to be read has a
/// value, of which nothing is left; after an exception it may be read in part. Take reads it from a
/// run of the host, where kInRuns says that it can be in one.

struct gsl_Attribute {
  cls_AttributeType type;
  unsigned int argument;
  cls_CollectionType collection;
};

/// An object writes itself through DBWrite. Its constructor reads it, and refuses a record of
/// another class.
template <class T>
struct gsl_ObjectKind {
  static constexpr gsl_Attribute kAttribute = {cls_ObjectAttribute, T::TypeId(), cls_NoCollection};

  static void Write(const cls_WriteVisitor& visitor, const cls_FieldHandle& field, const T& value) {
    value.DBWrite(cls_WriteVisitor(visitor, field));
  }
  static void Read(const cls_ReadVisitor& visitor, const cls_FieldHandle& field, T& value) {
    value = T(cls_ReadVisitor(visitor, field));
  }
  static constexpr bool kInRuns = true;
  template <class Run>
  static void Take(Run& run, const cls_FieldHandle& field, T& value) {
    run.TakeObject([&](const cls_ReadVisitor& visitor) { Read(visitor, field, value); });
  }
};

template <class T, class = void>
struct gsl_FieldKind : gsl_ObjectKind<T> {};

/// A collection is read and written in the same way.
template <class T>
struct gsl_CollectionKind : gsl_ObjectKind<T> {
  static constexpr gsl_Attribute kAttribute = {cls_ObjectAttribute, T::TypeId(),
                                               T::CollectionType()};
};

/// A list is read where it is.
template <>
struct gsl_FieldKind<cls_xp1DArrayListUint> : gsl_CollectionKind<cls_xp1DArrayListUint> {
  template <class Run>
  static void Take(Run& run, const cls_FieldHandle& field, cls_xp1DArrayListUint& list) {
    if (!run.TakeUnsigneds(list)) gsl_ObjectKind::Take(run, field, list);
  }
};
template <>
struct gsl_FieldKind<cls_xp2DArrayDouble> : gsl_CollectionKind<cls_xp2DArrayDouble> {};

/// A shared object is stored once per save and is shared again after reading. A null reads as an
/// empty holder.
template <class T, class Cloner>
struct gsl_FieldKind<cow_COW<T, Cloner>> {
  static constexpr gsl_Attribute kAttribute = {cls_ObjectAttribute, T::TypeId(), cls_NoCollection};

  static void Write(const cls_WriteVisitor& visitor, const cls_FieldHandle& field,
                    const cow_COW<T, Cloner>& holder) {
    if (holder.IsEmpty()) {
      visitor.WriteNullObject(field, T::TypeId());
    } else {
      holder->DBWrite(cls_WriteVisitor(visitor, field, holder));
    }
  }
  static void Read(const cls_ReadVisitor& visitor, const cls_FieldHandle& field,
                   cow_COW<T, Cloner>& holder) {
    visitor.ReadObject(field, holder);
  }
  // A run has no shared objects.
  static constexpr bool kInRuns = false;
};

template <>
struct gsl_FieldKind<int> {
  static constexpr gsl_Attribute kAttribute = {cls_IntegerAttribute, 1, cls_NoCollection};

  static void Write(const cls_WriteVisitor& visitor, const cls_FieldHandle& field, int value) {
    visitor.WriteInteger(field, value);
  }
  static void Read(const cls_ReadVisitor& visitor, const cls_FieldHandle& field, int& value) {
    value = visitor.ReadInteger(field, 0);
  }
  static constexpr bool kInRuns = true;
  template <class Run>
  static void Take(Run& run, const cls_FieldHandle&, int& value) {
    value = run.TakeInteger();
  }
};

template <>
struct gsl_FieldKind<double> {
  static constexpr gsl_Attribute kAttribute = {cls_DoubleAttribute, 1, cls_NoCollection};

  static void Write(const cls_WriteVisitor& visitor, const cls_FieldHandle& field, double value) {
    visitor.WriteDouble(field, value);
  }
  static void Read(const cls_ReadVisitor& visitor, const cls_FieldHandle& field, double& value) {
    value = visitor.ReadDouble(field, 0.0);
  }
  static constexpr bool kInRuns = true;
  template <class Run>
  static void Take(Run& run, const cls_FieldHandle&, double& value) {
    value = run.TakeDouble();
  }
};

template <>
struct gsl_FieldKind<bool> {
  static constexpr gsl_Attribute kAttribute = {cls_BooleanAttribute, 1, cls_NoCollection};

  static void Write(const cls_WriteVisitor& visitor, const cls_FieldHandle& field, bool value) {
    visitor.WriteBoolean(field, value);
  }
  static void Read(const cls_ReadVisitor& visitor, const cls_FieldHandle& field, bool& value) {
    value = visitor.ReadBoolean(field, false);
  }
  static constexpr bool kInRuns = true;
  template <class Run>
  static void Take(Run& run, const cls_FieldHandle&, bool& value) {
    value = run.TakeBoolean();
  }
};

/// The names of the values of an enumeration, as its primitive gives them. They are made once.
template <class E>
class gsl_EnumNames {
public:
  static const gsl_EnumNames& All() {
    // It is never destroyed: objects may be saved until the process ends.
    static const gsl_EnumNames& names = *new gsl_EnumNames;
    return names;
  }

  /// Returns null for a value that the enumeration does not have.
  const cow_String* NameOf(E value) const {
    for (const Row& row : m_rows) {
      if (row.value == value) return &row.name;
    }
    return nullptr;
  }
  /// Returns null for a name that the enumeration does not have.
  const E* ValueOf(std::string_view name) const {
    for (const Row& row : m_rows) {
      if (row.bytes == name) return &row.value;
    }
    return nullptr;
  }

private:
  struct Row {
    E value;
    cow_String name;
    std::string_view bytes; ///< of the name
  };

  gsl_EnumNames() {
    for (const omu_PrimEnumEntry* row = omu_PrimEnumTable<E>::Entries(); row->name != nullptr;
         ++row) {
      const auto value = static_cast<E>(row->value);
      m_rows.push_back({value, omu_PrimEnum<E, 1>(value).AsString(), {}});
    }
    // A copy of a text may have a buffer of its own, so the rows are in their places first.
    for (Row& row : m_rows)
      row.bytes = {row.name.CStr(), row.name.Length()};
  }

  std::vector<Row> m_rows;
};

/// An enumeration is stored by name. A value or a name that it does not have throws.
template <class E>
struct gsl_FieldKind<E, std::enable_if_t<std::is_enum_v<E>>> {
  static constexpr gsl_Attribute kAttribute = {cls_EnumerationAttribute, 1, cls_NoCollection};

  static void Write(const cls_WriteVisitor& visitor, const cls_FieldHandle& field, E value) {
    const cow_String* const name = gsl_EnumNames<E>::All().NameOf(value);
    if (name != nullptr) return visitor.WriteString(field, *name);
    // The primitive refuses the value.
    visitor.WriteString(field, omu_PrimEnum<E, 1>(value).AsString());
  }
  static void Read(const cls_ReadVisitor& visitor, const cls_FieldHandle& field, E& value) {
    value = ValueOf(visitor.ReadString(field, cow_String()));
  }
  static constexpr bool kInRuns = true;
  template <class Run>
  static void Take(Run& run, const cls_FieldHandle&, E& value) {
    const auto valueOf = [](const cow_String& name) { return static_cast<int>(ValueOf(name)); };
    value = static_cast<E>(run.TakeNamed(&gsl_EnumNames<E>::All(), valueOf));
  }

private:
  static E ValueOf(const cow_String& name) {
    const E* const known = gsl_EnumNames<E>::All().ValueOf({name.CStr(), name.Length()});
    // The primitive refuses the name. An empty name is not valid, so a missing field throws.
    return known != nullptr ? *known : static_cast<E>(omu_PrimEnum<E, 1>(name).GetValue());
  }
};

#endif
