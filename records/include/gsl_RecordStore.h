#ifndef GSL_RECORD_STORE_H
#define GSL_RECORD_STORE_H

#include "gsl_RecordReader.h"
#include "gsl_RecordWriter.h"

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// Records in memory: a forest of typed records, each with an identity and named fields in write
/// order.
///
/// Layout   flat arrays, so that no depth of nesting costs stack; at most 2^32 - 2 of each item.
/// Threads  follow the rules of the standard containers.
/// Errors   gsl_RecordError when the store is full, and std::bad_alloc. Reading throws nothing but
///          std::bad_alloc.
class GSL_RECORDS_API gsl_RecordStore final : public gsl_RecordReader, public gsl_RecordWriter {
public:
  struct UnsignedArray {
    const std::uint32_t* values;
    std::size_t count;
  };
  struct DoubleArray {
    const double* values;
    std::size_t rows;
    std::size_t columns;
  };

  gsl_RecordStore();
  ~gsl_RecordStore() override;
  // Names are looked up by views into the store's own texts.
  gsl_RecordStore(const gsl_RecordStore&) = delete;
  gsl_RecordStore& operator=(const gsl_RecordStore&) = delete;
  // NOLINTBEGIN(performance-noexcept-move-constructor): a deque may allocate when it is moved.
  /// Leaves the source to be assigned to or destroyed.
  gsl_RecordStore(gsl_RecordStore&&);
  gsl_RecordStore& operator=(gsl_RecordStore&&);
  // NOLINTEND(performance-noexcept-move-constructor)

  std::size_t RootCount() const override { return m_roots.size(); }
  gsl_RecordIndex Root(std::size_t i) const override { return m_roots[i].record; }
  std::size_t RecordCount() const { return m_records.size(); }
  std::uint32_t TypeId(gsl_RecordIndex record) const override { return m_records[record].typeId; }
  gsl_RecordIdentity Identity(gsl_RecordIndex record) const override {
    return m_records[record].identity;
  }
  gsl_RecordCollection Collection(gsl_RecordIndex record) const override {
    return m_records[record].collection;
  }
  Position FirstField(gsl_RecordIndex record) const override;
  Position ReadField(Position position, gsl_RecordField& field) const override;
  void ReadUnsigneds(gsl_RecordIndex record, std::vector<std::uint32_t>& values) const override;
  void ReadDoubles(gsl_RecordIndex record, std::vector<double>& values, std::size_t& rows,
                   std::size_t& columns) const override;
  /// The elements where they are, valid until the records change. Empty for another collection.
  UnsignedArray Unsigneds(gsl_RecordIndex record) const;
  DoubleArray Doubles(gsl_RecordIndex record) const;

  gsl_RecordIndex AddRoot(std::uint32_t typeId, const gsl_RecordIdentity& identity) override;
  gsl_RecordIndex AddRecord(gsl_RecordIndex owner, const gsl_RecordPlace& place, bool isShared,
                            std::uint32_t typeId, const gsl_RecordIdentity& identity) override;
  void AddInteger(gsl_RecordIndex owner, const gsl_RecordPlace& place, std::int32_t value) override;
  void AddDouble(gsl_RecordIndex owner, const gsl_RecordPlace& place, double value) override;
  void AddBoolean(gsl_RecordIndex owner, const gsl_RecordPlace& place, bool value) override;
  void AddString(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                 std::string_view value) override;
  void AddReference(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                    gsl_RecordIndex target) override;
  void AddNull(gsl_RecordIndex owner, const gsl_RecordPlace& place, std::uint32_t typeId) override;
  void SetCollection(gsl_RecordIndex record, gsl_RecordCollection collection) override;
  void SetUnsigneds(gsl_RecordIndex record, const std::uint32_t* values,
                    std::size_t count) override;
  void SetDoubles(gsl_RecordIndex record, const double* values, std::size_t rows,
                  std::size_t columns) override;
  void TakeBack(gsl_RecordIndex root) override;

  void Clear();

  /// Bytes that this store holds allocated.
  std::size_t MemoryUse() const;

  /// The byte form: the same on every machine, and for stores that were filled alike.
  std::vector<unsigned char> ToBytes() const;
  /// Takes memory in proportion to the number of bytes. Throws gsl_RecordError for bytes that are
  /// not a byte form.
  static gsl_RecordStore FromBytes(const unsigned char* bytes, std::size_t count);

private:
  friend class gsl_RecordDecoder;

  /// The number of an item in its array.
  using Index = std::uint32_t;
  static constexpr Index kNone = 0xFFFFFFFFu;

  struct Field {
    Index name;
    std::int32_t index;
    Index next;
    gsl_RecordKind kind;
    /// By kind: the number, the text's number, the record, or the type id of a null.
    union {
      std::int32_t integer;
      double real;
      bool boolean;
      Index link;
    };
  };
  struct Record {
    std::uint32_t typeId;
    gsl_RecordCollection collection;
    gsl_RecordIdentity identity;
    Index firstField;
    Index lastField;
    Index array;
  };
  /// A root, and how many items of each sort there were when it was started.
  struct RootMark {
    gsl_RecordIndex record;
    Index fields;
    Index texts;
    Index arrays;
  };
  struct Text {
    std::size_t offset;
    std::size_t length;
  };
  struct Array {
    std::size_t offset;
    Index rows;
    Index columns;
  };

  Index InternName(const char* name);
  /// Links a field, whose value the caller has set, to the end of its record.
  void AddField(gsl_RecordIndex owner, const gsl_RecordPlace& place, Field field);
  void AddArray(gsl_RecordIndex record, gsl_RecordCollection collection, const Array& array);
  void DropArrays(Index first, gsl_RecordIndex root);
  void RelinkEarlierRecords(gsl_RecordIndex root);

  std::vector<RootMark> m_roots;
  std::vector<Record> m_records;
  std::vector<Field> m_fields;
  std::vector<Text> m_texts;
  std::string m_characters;
  std::vector<Array> m_arrays;
  std::vector<std::uint32_t> m_unsigneds;
  std::vector<double> m_doubles;
  std::deque<std::string> m_names;
  std::unordered_map<std::string_view, Index> m_nameOf;
  /// Whether something was added to a record after a later root was started.
  bool m_outOfOrder = false;
};

#endif
