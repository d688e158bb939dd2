#ifndef GSL_RECORD_STORE_H
#define GSL_RECORD_STORE_H

#include "gsl_RecordReader.h"
#include "gsl_RecordWriter.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// Records in memory, in their byte form: typed records, each with an identity and named fields in
/// write order.
///
/// Sharing  records that are equal in class, identity and contents are stored once.
/// Reading  sees the roots that ended; a reading call ends the last root. A record has a higher
///          number than the records that it holds. No depth of nesting costs stack.
/// Limits   2^32 - 2 of each item, where a record counts at every place that holds it; 2^24 - 2
///          fields of all classes, 2^40 - 1 bytes.
/// Threads  follow the rules of the standard containers, after Finish.
/// Errors   gsl_RecordError when the store is full, and std::bad_alloc. Reading throws nothing but
///          std::bad_alloc.
class GSL_RECORDS_API gsl_RecordStore final : public gsl_RecordReader, public gsl_RecordWriter {
public:
  gsl_RecordStore();
  ~gsl_RecordStore() override;
  gsl_RecordStore(const gsl_RecordStore&) = delete;
  gsl_RecordStore& operator=(const gsl_RecordStore&) = delete;
  /// Leaves the source to be assigned to or destroyed.
  gsl_RecordStore(gsl_RecordStore&&) noexcept;
  gsl_RecordStore& operator=(gsl_RecordStore&&) noexcept;

  std::size_t RootCount() const override;
  gsl_RecordIndex Root(std::size_t i) const override;
  std::string_view RootName(std::size_t i) const override;
  /// Returns how many roots follow one another, from that root on, whose records are of one class.
  /// A reader makes room for their objects at once. Requires that there is such a root.
  std::size_t RootsOfOneClass(std::size_t first) const;
  std::size_t FindRoot(std::string_view name) const override;
  std::string_view ClassName(std::uint32_t typeId) const override;
  /// The records that are stored, of which equal ones count once.
  std::size_t RecordCount() const;
  std::uint32_t TypeId(gsl_RecordIndex record) const override;
  gsl_RecordIdentity Identity(gsl_RecordIndex record) const override;
  gsl_RecordCollection Collection(gsl_RecordIndex record) const override;
  Position FirstField(gsl_RecordIndex record) const override;
  Header ReadHeader(gsl_RecordIndex record) const override;
  Position ReadField(Position position, gsl_RecordField& field) const override;
  void ReadUnsigneds(gsl_RecordIndex record, std::vector<std::uint32_t>& values) const override;
  void ReadDoubles(gsl_RecordIndex record, std::vector<double>& values, std::size_t& rows,
                   std::size_t& columns) const override;

  /// The records where the store keeps them, for a reader that decodes them itself. docs/records.md
  /// describes the bytes of a record. The pointers are valid until the store changes.
  struct Stored {
    const unsigned char* bytes = nullptr;    ///< of all records
    const std::uint32_t* offsets = nullptr;  ///< where each record begins
    const std::uint32_t* roots = nullptr;    ///< the record of each root
    const std::uint64_t* prefixes = nullptr; ///< of identities, by number
    std::size_t rootCount = 0;               ///< the number of roots
    std::size_t shapeCount = 0;              ///< the number of shapes
    std::size_t byteCount = 0;               ///< how many bytes there are
  };
  /// Nothing is there when an offset has more than 32 bits.
  Stored Where() const;
  /// Returns the class of a shape, and writes what else it holds. A field is of the kind Object
  /// where it may be a Reference, and has no value.
  std::uint32_t ReadShape(std::size_t shape, gsl_RecordCollection& collection,
                          std::vector<gsl_RecordField>& fields) const;
  /// Returns the text of that number.
  std::string_view Text(std::uint32_t number) const;

  gsl_RecordIndex AddRoot(std::uint32_t typeId, const gsl_RecordIdentity& identity) override;
  void NameRoot(std::string_view name) override;
  void NameClass(std::uint32_t typeId, std::string_view name) override;
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
  void Finish() override;
  void TakeBack(gsl_RecordIndex root) override;

  void Clear();

  /// Bytes that this store holds allocated, at least.
  std::size_t MemoryUse() const;

  /// The byte form: the same on every machine, and for stores that were filled alike.
  std::vector<unsigned char> ToBytes() const;
  /// Returns the same bytes and clears the store, whose memory is given back on the way. The store
  /// is unchanged where this throws.
  std::vector<unsigned char> TakeBytes();
  /// Takes memory in proportion to the number of bytes. Throws gsl_RecordError for bytes that are
  /// not a byte form.
  static gsl_RecordStore FromBytes(const unsigned char* bytes, std::size_t count);
  /// Does the same without a copy of the records. Requires that the bytes stay, unchanged, as long
  /// as the store exists. A store that gets further records copies the records first.
  static gsl_RecordStore OverBytes(const unsigned char* bytes, std::size_t count);

private:
  friend class gsl_RecordChecker;
  friend class gsl_RecordCodec;
  friend class gsl_RecordDecoder;
  friend GSL_RECORDS_API void gsl_SaveRecords(const gsl_RecordStore& store,
                                              const std::string& path);
  friend GSL_RECORDS_API gsl_RecordStore gsl_LoadRecords(const std::string& path);
  struct Data;

  std::unique_ptr<Data> m_data;
};

#endif
