#ifndef OMU_PRIM_ENUM_H
#define OMU_PRIM_ENUM_H

#include "gsl_DirMethod.h"
#include "gsl_DotMethod.h"
#include "gsl_Export.h"
#include "gsl_LineMethod.h"
#include "nex_Exception.h"
#include "omu_PrimEnumBase.h"
#include "omu_ValueErrorException.h"

#include <cstdint>
#include <cstring>

/// One row of an enumeration's name table; a row without a name ends the table.
struct omu_PrimEnumEntry {
  const char* name;   ///< the text of the value
  std::int32_t value; ///< its number
};

/// The name table of E: specialised for every enumeration that has a primitive, with
/// `static const omu_PrimEnumEntry* Entries()`. Lookups take the first row that matches.
template <class E>
struct omu_PrimEnumTable;

/// Returns a message in the user's language with its arguments filled in: position 1 is a number,
/// position 2 a text. A filled-in argument is not searched for positions again.
template <class E, class S>
cow_String atr(const char* format, E value, S text);

/// An enumeration value with the fixed name under which it is stored.
///
/// N       variant of the primitive; this library uses 1.
/// Names   compared byte by byte, in full length and with case.
/// Errors  a constructor given anything that the table does not hold throws
///         omu_ValueErrorException with a null uid. Without memory std::bad_alloc leaves the
///         primitive as it was; nothing else throws.
template <class E, int N>
class GSL_API omu_PrimEnum : public omu_PrimEnumBase {
public:
  /// Holds the value, which must be one of the enumeration.
  explicit omu_PrimEnum(E value);
  /// Takes the name of the other primitive, whose enumeration may be different.
  explicit omu_PrimEnum(const omu_PrimEnumBase& other);
  /// Holds the value of that text.
  explicit omu_PrimEnum(const cow_String& text);
  /// Reads the stored name.
  explicit omu_PrimEnum(const cls_ReadVisitor& visitor);
  omu_PrimEnum(const omu_PrimEnum&);
  omu_PrimEnum& operator=(const omu_PrimEnum&);
  ~omu_PrimEnum() override;

  /// Returns false, and changes neither value nor name, for a value that the table does not hold.
  [[nodiscard]] bool SetValue(E value);

  /// Returns the value of the row at `index`, without a bounds check.
  static E Value(int index);

  [[nodiscard]] bool operator==(const omu_Primitive& other) const override;
  [[nodiscard]] omu_Primitive* Copy() const override;
  cow_Map<cow_String, unsigned int> PermissibleValues() const override;

private:
  [[nodiscard]] bool SetString(const char* text, std::size_t length);
};

/// The texts and the places that the constructors throw with.
namespace omu_PrimEnumError {

constexpr const char* kSourceName = "generated/include/omu_PrimEnum";
constexpr int kFromValueLine = 54;
constexpr int kFromPrimitiveLine = 67;
constexpr int kFromTextLine = 81;
constexpr int kFromRecordLine = 95;

constexpr const char* kFromValue =
    "omu_PrimEnum(Enum) - Enum value not allowed: %d  Permissible: %s";
// foreign-name-lists-no-names: the message for another enumeration is shorter.
constexpr const char* kFromPrimitive =
    "omu_PrimEnum(const omu_PrimEnumBase&) - str not allowed: %s";
constexpr const char* kFromText =
    "omu_PrimEnum(const cow_String&) - str not allowed: %s  Permissible: %s";
constexpr const char* kFromRecord =
    "omu_PrimEnum(const cls_ReadVisitor&) - str not allowed: %s  Permissible: %s";

[[noreturn]] inline void Throw(const cow_String& message, int line) {
  nex_Exception::Throw(omu_ValueErrorException(message, cls_Uid()), kSourceName, line);
}

[[noreturn]] inline void Throw(const char* format, const char* text, const char* permissible,
                               int line) {
  atr_String message = atr_translate(format);
  atr_SubstituteFormat(message, 1, text);
  if (permissible != nullptr) atr_SubstituteFormat(message, 2, permissible);
  Throw(cow_String(message.CStr(), message.Length()), line);
}

} // namespace omu_PrimEnumError

template <class E, class S>
cow_String atr(const char* format, E value, S text) {
  atr_String message = atr_translate(format);
  atr_SubstituteFormat(message, 1, static_cast<int>(value));
  atr_SubstituteFormat(message, 2, text);
  return cow_String(message.CStr(), message.Length());
}

template <class E, int N>
omu_PrimEnum<E, N>::omu_PrimEnum(E value) {
  if (SetValue(value)) return;
  const cow_String permissible = PermissibleValuesAsString();
  omu_PrimEnumError::Throw(
      atr<E, const char*>(omu_PrimEnumError::kFromValue, value, permissible.CStr()),
      omu_PrimEnumError::kFromValueLine);
}

template <class E, int N>
omu_PrimEnum<E, N>::omu_PrimEnum(const omu_PrimEnumBase& other) {
  const atr_String& text = other.GetString();
  if (SetString(text.CStr(), text.Length())) return;
  omu_PrimEnumError::Throw(omu_PrimEnumError::kFromPrimitive, text.CStr(), nullptr,
                           omu_PrimEnumError::kFromPrimitiveLine);
}

template <class E, int N>
omu_PrimEnum<E, N>::omu_PrimEnum(const cow_String& text) {
  if (SetString(text.CStr(), text.Length())) return;
  omu_PrimEnumError::Throw(omu_PrimEnumError::kFromText, text.CStr(),
                           PermissibleValuesAsString().CStr(), omu_PrimEnumError::kFromTextLine);
}

template <class E, int N>
omu_PrimEnum<E, N>::omu_PrimEnum(const cls_ReadVisitor& visitor) : omu_PrimEnumBase(visitor) {
  const atr_String text = GetString();
  if (SetString(text.CStr(), text.Length())) return;
  omu_PrimEnumError::Throw(omu_PrimEnumError::kFromRecord, text.CStr(),
                           PermissibleValuesAsString().CStr(), omu_PrimEnumError::kFromRecordLine);
}

template <class E, int N>
omu_PrimEnum<E, N>::omu_PrimEnum(const omu_PrimEnum&) = default;

template <class E, int N>
omu_PrimEnum<E, N>& omu_PrimEnum<E, N>::operator=(const omu_PrimEnum&) = default;

template <class E, int N>
omu_PrimEnum<E, N>::~omu_PrimEnum() = default;

template <class E, int N>
bool omu_PrimEnum<E, N>::SetValue(E value) {
  const omu_PrimEnumEntry* row = omu_PrimEnumTable<E>::Entries();
  while (row->name != nullptr && row->value != static_cast<std::int32_t>(value))
    ++row;
  if (row->name == nullptr) return false;
  Set(row->value, row->name);
  return true;
}

template <class E, int N>
bool omu_PrimEnum<E, N>::SetString(const char* text, std::size_t length) {
  const omu_PrimEnumEntry* row = omu_PrimEnumTable<E>::Entries();
  while (row->name != nullptr &&
         (std::strlen(row->name) != length || std::memcmp(row->name, text, length) != 0)) {
    ++row;
  }
  if (row->name == nullptr) return false;
  Set(row->value, row->name);
  return true;
}

template <class E, int N>
E omu_PrimEnum<E, N>::Value(int index) {
  return static_cast<E>(omu_PrimEnumTable<E>::Entries()[index].value);
}

template <class E, int N>
bool omu_PrimEnum<E, N>::operator==(const omu_Primitive& other) const {
  return omu_PrimEnumBase::operator==(other);
}

template <class E, int N>
omu_Primitive* omu_PrimEnum<E, N>::Copy() const {
  return new omu_PrimEnum(*this);
}

template <class E, int N>
cow_Map<cow_String, unsigned int> omu_PrimEnum<E, N>::PermissibleValues() const {
  cow_Map<cow_String, unsigned int> names;
  for (const omu_PrimEnumEntry* row = omu_PrimEnumTable<E>::Entries(); row->name != nullptr; ++row)
    names.Insert(cow_String(row->name), static_cast<unsigned int>(row->value));
  return names;
}

/// The values of gsl_DirMethod.
template <>
struct GSL_API omu_PrimEnumTable<gsl_DirMethod> {
  static const omu_PrimEnumEntry* Entries();
};
/// The values of gsl_DotMethod.
template <>
struct GSL_API omu_PrimEnumTable<gsl_DotMethod> {
  static const omu_PrimEnumEntry* Entries();
};
/// The values of gsl_LineMethod.
template <>
struct GSL_API omu_PrimEnumTable<gsl_LineMethod> {
  static const omu_PrimEnumEntry* Entries();
};

extern template class GSL_API omu_PrimEnum<gsl_DirMethod, 1>;
extern template class GSL_API omu_PrimEnum<gsl_DotMethod, 1>;
extern template class GSL_API omu_PrimEnum<gsl_LineMethod, 1>;

extern template GSL_API cow_String atr<gsl_DirMethod, const char*>(const char*, gsl_DirMethod,
                                                                   const char*);
extern template GSL_API cow_String atr<gsl_DotMethod, const char*>(const char*, gsl_DotMethod,
                                                                   const char*);
extern template GSL_API cow_String atr<gsl_LineMethod, const char*>(const char*, gsl_LineMethod,
                                                                    const char*);

#endif
