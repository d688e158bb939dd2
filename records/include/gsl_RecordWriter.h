#ifndef GSL_RECORD_WRITER_H
#define GSL_RECORD_WRITER_H

#include "gsl_RecordExport.h"
#include "gsl_RecordField.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

/// Fields in: stores records wherever it keeps them. The write visitors of a host are built on it.
///
/// A record is started as a root or in a field of an earlier record; its fields follow in write
/// order. A record ends when a field is added to a record that holds it, when the next root starts,
/// and with Finish. An ended record takes no further fields.
///
/// Requires  every record number comes from this writer and was not taken back; a record is one
///           collection at most; the name of a place is not empty.
/// Errors    gsl_RecordError, and the call stores nothing; std::bad_alloc, and the root must be
///           taken back.
class GSL_RECORDS_API gsl_RecordWriter {
public:
  virtual ~gsl_RecordWriter();

  /// Starts a further root. Returns its number, which is higher than that of every earlier record.
  virtual gsl_RecordIndex AddRoot(std::uint32_t typeId, const gsl_RecordIdentity& identity) = 0;
  /// Names the root that was started last. Requires a name that is not empty and that no other root
  /// has.
  virtual void NameRoot(std::string_view name) = 0;
  /// Names the class of a type id, for whoever reads the records without the host. The last name
  /// counts.
  virtual void NameClass(std::uint32_t typeId, std::string_view name) = 0;
  /// Starts a record that belongs to a place of `owner`. Other fields may refer to it when it
  /// `isShared`. Returns its number, which is higher than that of every earlier record.
  virtual gsl_RecordIndex AddRecord(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                                    bool isShared, std::uint32_t typeId,
                                    const gsl_RecordIdentity& identity) = 0;

  /// Adds an integer to an open record.
  virtual void AddInteger(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                          std::int32_t value) = 0;
  /// Adds a double to an open record.
  virtual void AddDouble(gsl_RecordIndex owner, const gsl_RecordPlace& place, double value) = 0;
  /// Adds a boolean to an open record.
  virtual void AddBoolean(gsl_RecordIndex owner, const gsl_RecordPlace& place, bool value) = 0;
  /// Adds a text to an open record.
  virtual void AddString(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                         std::string_view value) = 0;
  /// Refers to a shared record, which may still be written.
  virtual void AddReference(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                            gsl_RecordIndex target) = 0;
  /// Adds an empty object of that class to an open record.
  virtual void AddNull(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                       std::uint32_t typeId) = 0;

  /// Makes the record a collection. Its elements, or its entries, may follow.
  virtual void SetCollection(gsl_RecordIndex record, gsl_RecordCollection collection) = 0;
  /// Writes the elements of a collection of unsigned integers, once.
  virtual void SetUnsigneds(gsl_RecordIndex record, const std::uint32_t* values,
                            std::size_t count) = 0;
  /// Writes the elements of a matrix of doubles row by row, once.
  virtual void SetDoubles(gsl_RecordIndex record, const double* values, std::size_t rows,
                          std::size_t columns) = 0;

  /// Ends the last root. Where it throws, the root stays open: call it again, or take back the
  /// root.
  virtual void Finish() = 0;
  /// Takes back a root and every record and field that was added after it. Throws nothing.
  virtual void TakeBack(gsl_RecordIndex root) = 0;

protected:
  gsl_RecordWriter() = default;
  gsl_RecordWriter(const gsl_RecordWriter&) = default;
  gsl_RecordWriter& operator=(const gsl_RecordWriter&) = default;
};

#endif
