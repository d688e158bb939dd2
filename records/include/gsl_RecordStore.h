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
  /// Takes memory in proportion to the number of bytes. Throws gsl_RecordError for bytes that are
  /// not a byte form.
  static gsl_RecordStore FromBytes(const unsigned char* bytes, std::size_t count);

private:
  friend class gsl_RecordCodec;
  friend class gsl_RecordDecoder;
  friend GSL_RECORDS_API void gsl_SaveRecords(const gsl_RecordStore& store,
                                              const std::string& path);
  friend GSL_RECORDS_API gsl_RecordStore gsl_LoadRecords(const std::string& path);
  struct Data;

  std::unique_ptr<Data> m_data;
};

#endif
