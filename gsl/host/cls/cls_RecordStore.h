#ifndef CLS_RECORD_STORE_H
#define CLS_RECORD_STORE_H

#include "cls_AttributeType.h"
#include "cls_Uid.h"
#include "cow_String.h"
#include "mem_Export.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class cls_FieldHandle;

/// Records in memory: a forest of typed records, each with an identity and named fields in write
/// order. Filled by cls_WriteVisitor and read by cls_ReadVisitor.
///
/// Layout   flat arrays, so that no depth of nesting costs stack; at most 2^32 - 2 of each item.
/// Threads  as for the standard containers.
/// Errors   cls_RecordException, and std::bad_alloc.
class GSL_HOST_API cls_RecordStore {
public:
  using Index = std::uint32_t;
  static constexpr Index kNone = 0xFFFFFFFFu;

  enum class Kind : std::uint8_t {
    Integer,
    Double,
    Boolean,
    String,
    Record,    ///< a record that belongs to this field
    Object,    ///< the same, and other fields may refer to it
    Reference, ///< an object that another field holds
    Null       ///< an explicit empty object
  };

  /// One field of a record, or one entry of a list (which has no name).
  struct Field {
    Index name;
    std::int32_t index;
    Index next;
    Kind kind;
    /// By kind: the number, the string's place, the record, or a null's type id.
    union {
      std::int32_t integer;
      double real;
      bool boolean;
      Index link;
    };
  };

  struct UnsignedArray {
    const unsigned int* values;
    std::size_t count;
  };
  struct DoubleArray {
    const double* values;
    std::size_t rows;
    std::size_t columns;
  };

  std::size_t RootCount() const { return roots.size(); }
  Index Root(std::size_t i) const { return roots[i]; }
  std::size_t RecordCount() const { return records.size(); }

  unsigned int TypeId(Index record) const { return records[record].typeId; }
  const cls_Uid& Uid(Index record) const { return records[record].uid; }
  cls_CollectionType Collection(Index record) const { return records[record].collection; }

  /// Null when there is none (any more).
  const Field* First(Index record) const { return At(records[record].first); }
  const Field* Next(const Field& field) const { return At(field.next); }

  /// Empty for a list entry.
  const char* Name(const Field& field) const;
  const cow_String& String(const Field& field) const { return strings[field.link]; }
  /// Empty for a record of another collection type.
  UnsignedArray Unsigneds(Index record) const;
  DoubleArray Doubles(Index record) const;

  void Clear();

  /// Bytes that this store holds allocated.
  std::size_t MemoryUse() const;

  /// The byte form: the same on every machine, and for stores that were filled alike.
  std::vector<unsigned char> ToBytes() const;
  /// Takes memory in proportion to the number of bytes. Throws cls_RecordException for bytes that
  /// are no byte form, with nothing left behind.
  static cls_RecordStore FromBytes(const unsigned char* bytes, std::size_t count);

  cls_RecordStore() = default;
  // Names are looked up by views into this store's own texts.
  cls_RecordStore(const cls_RecordStore&) = delete;
  cls_RecordStore& operator=(const cls_RecordStore&) = delete;
  cls_RecordStore(cls_RecordStore&&) = default;
  cls_RecordStore& operator=(cls_RecordStore&&) = default;

private:
  friend class cls_ListWriter;
  friend class cls_RecordDecoder;
  friend class cls_WriteVisitor;

  struct Record {
    unsigned int typeId;
    cls_CollectionType collection;
    cls_Uid uid;
    Index first;
    Index last;
    Index array;
  };
  struct Array {
    std::size_t offset;
    Index rows;
    Index columns;
  };
  /// The length of every array, so that a write that fails can be taken back.
  struct Mark {
    std::size_t roots, records, fields, strings, arrays, unsigneds, doubles;
  };

  const Field* At(Index field) const { return field != kNone ? &fields[field] : nullptr; }
  Index InternName(const char* name);
  Index AddRecord(unsigned int typeId, const cls_Uid& uid);
  Field& AddField(Index record, Index name, int index, Kind kind);
  void AddString(Field& field, const cow_String& text);
  void SetUnsigneds(Index record, const unsigned int* values, std::size_t count);
  void SetDoubles(Index record, const double* values, std::size_t rows, std::size_t columns);
  Mark Position() const;
  void TakeBack(const Mark& mark);

  std::vector<Index> roots;
  std::vector<Record> records;
  std::vector<Field> fields;
  std::vector<cow_String> strings;
  std::vector<Array> arrays;
  std::vector<unsigned int> unsigneds;
  std::vector<double> doubles;
  std::deque<std::string> names;
  std::unordered_map<std::string_view, Index> nameOf;
};

#endif
