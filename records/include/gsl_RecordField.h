#ifndef GSL_RECORD_FIELD_H
#define GSL_RECORD_FIELD_H

#include <cstdint>
#include <string_view>

/// The number of a record. A writer numbers records from 0 in the order in which they are started;
/// a reader has numbers of its own.
using gsl_RecordIndex = std::uint32_t;

/// The identity of the object that a record stores: 128 bits that the records only compare.
struct gsl_RecordIdentity {
  std::uint64_t prefix = 0; ///< the first 64 bits
  std::uint64_t serial = 0; ///< the last 64 bits

  [[nodiscard]] friend constexpr bool operator==(const gsl_RecordIdentity& a,
                                                 const gsl_RecordIdentity& b) noexcept {
    return a.prefix == b.prefix && a.serial == b.serial;
  }
  [[nodiscard]] friend constexpr bool operator!=(const gsl_RecordIdentity& a,
                                                 const gsl_RecordIdentity& b) noexcept {
    return !(a == b);
  }
};

/// What a field holds. The numbers are stored.
enum class gsl_RecordKind : std::uint8_t {
  Integer,
  Double,
  Boolean,
  String,
  Record,    ///< a record that belongs to this field
  Object,    ///< a record that belongs to this field, and to which other fields may refer
  Reference, ///< an object that belongs to another field
  Null       ///< an explicit empty object
};

/// What kind of collection a record is, if it is one. The numbers are stored.
enum class gsl_RecordCollection : std::uint32_t {
  None = 0,
  Objects = 1,    ///< it has entries, which are fields without a name
  Unsigneds = 57, ///< a list of unsigned integers
  Doubles = 82    ///< a matrix of doubles
};

/// Where a record holds a value: the name of a field and the number that the writer gave to it; or
/// null for an entry of a list, which has no number.
struct gsl_RecordPlace {
  const char* name = nullptr; ///< the name of the field
  std::int32_t index = -1;    ///< the number that the writer gave to it
};

/// One field of a record, or one entry of a list. The views belong to the reader.
struct gsl_RecordField {
  /// Empty for an entry of a list.
  std::string_view name;
  std::int32_t index = -1; ///< the number that the writer gave to it
  /// Says which of the values below holds the value.
  gsl_RecordKind kind = gsl_RecordKind::Integer;
  /// The value, by kind: `link` is the record that the field holds or refers to, or the type id of
  /// a null.
  union {
    std::int32_t integer;
    double real = 0.0;
    bool boolean;
    std::uint32_t link;
  };
  /// The number of a shared object, which is the same in every field that holds it or refers to it.
  /// Two objects may have one record, when their contents are equal.
  std::uint32_t object = 0;
  /// The text of a string.
  std::string_view text;
};

#endif
