#ifndef GSL_RECORD_READER_H
#define GSL_RECORD_READER_H

#include "gsl_RecordExport.h"
#include "gsl_RecordField.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// Fields out: records wherever they are stored. The read visitors of a host are built on it.
///
/// Requires  every record number comes from this reader, and every position too.
/// Views     texts and names stay valid until the records change.
/// Errors    gsl_RecordError, and std::bad_alloc, where an implementation says so.
class GSL_RECORDS_API gsl_RecordReader {
public:
  /// The place of a field in its storage.
  using Position = std::uint64_t;
  /// The place after the last field.
  static constexpr Position kEnd = ~Position{0};

  class FieldRange;

  /// What a record says of itself, and where its fields begin.
  struct Header {
    std::uint32_t typeId = 0;                                     ///< the number of its class
    gsl_RecordCollection collection = gsl_RecordCollection::None; ///< its kind of collection
    gsl_RecordIdentity identity;                                  ///< its identity
    Position firstField = kEnd;                                   ///< where its fields begin
  };

  virtual ~gsl_RecordReader();

  /// Returns the number of roots.
  virtual std::size_t RootCount() const = 0;
  /// Returns the record of root number i.
  virtual gsl_RecordIndex Root(std::size_t i) const = 0;
  /// Empty for a root without a name.
  virtual std::string_view RootName(std::size_t i) const = 0;
  /// Returns the number of the root with that name, or RootCount(). The empty name names nothing.
  virtual std::size_t FindRoot(std::string_view name) const;

  /// The name of the class, empty when the writer did not give one.
  virtual std::string_view ClassName(std::uint32_t typeId) const = 0;
  /// Returns the number of the record's class.
  virtual std::uint32_t TypeId(gsl_RecordIndex record) const = 0;
  /// Returns the identity of the record.
  virtual gsl_RecordIdentity Identity(gsl_RecordIndex record) const = 0;
  /// Returns what kind of collection the record is.
  virtual gsl_RecordCollection Collection(gsl_RecordIndex record) const = 0;

  /// The first field in write order; kEnd for a record without fields.
  virtual Position FirstField(gsl_RecordIndex record) const = 0;
  /// Reads the type id, the collection, the identity and the first field in one call.
  virtual Header ReadHeader(gsl_RecordIndex record) const;
  /// Reads the field at a position other than kEnd. Returns the position of the next field.
  virtual Position ReadField(Position position, gsl_RecordField& field) const = 0;

  /// Writes the elements of the record; none for another collection.
  virtual void ReadUnsigneds(gsl_RecordIndex record, std::vector<std::uint32_t>& values) const = 0;
  /// Writes the elements of the record row by row; 0 by 0 for another collection.
  virtual void ReadDoubles(gsl_RecordIndex record, std::vector<double>& values, std::size_t& rows,
                           std::size_t& columns) const = 0;

  /// `for (const gsl_RecordField& field : reader.Fields(record))`
  FieldRange Fields(gsl_RecordIndex record) const;

protected:
  gsl_RecordReader() = default;
  gsl_RecordReader(const gsl_RecordReader&) = default;
  gsl_RecordReader& operator=(const gsl_RecordReader&) = default;
};

/// The fields of one record, in write order.
class gsl_RecordReader::FieldRange {
public:
  /// Walks from field to field.
  class Iterator {
  public:
    /// Begins at the position `first`.
    Iterator(const gsl_RecordReader& from, Position first) : m_reader(from), m_position(first) {
      Read();
    }

    const gsl_RecordField& operator*() const { return m_field; }
    const gsl_RecordField* operator->() const { return &m_field; }
    Iterator& operator++() {
      m_position = m_next;
      Read();
      return *this;
    }
    [[nodiscard]] friend bool operator!=(const Iterator& a, const Iterator& b) {
      return a.m_position != b.m_position;
    }

  private:
    void Read() {
      if (m_position != kEnd) m_next = m_reader.ReadField(m_position, m_field);
    }

    const gsl_RecordReader& m_reader;
    Position m_position;
    Position m_next = kEnd;
    gsl_RecordField m_field;
  };

  /// The fields of the record `owner`.
  FieldRange(const gsl_RecordReader& from, gsl_RecordIndex owner)
      : m_reader(from), m_record(owner) {}

  Iterator begin() const { return {m_reader, m_reader.FirstField(m_record)}; }
  Iterator end() const { return {m_reader, kEnd}; }

private:
  const gsl_RecordReader& m_reader;
  gsl_RecordIndex m_record;
};

inline gsl_RecordReader::FieldRange gsl_RecordReader::Fields(gsl_RecordIndex record) const {
  return {*this, record};
}

#endif
