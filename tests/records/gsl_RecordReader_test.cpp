#include "gsl_RecordReader.h"

#include <gtest/gtest.h>

namespace {

/// One record whose fields are counted out, with nothing stored.
class CountingReader : public gsl_RecordReader {
public:
  explicit CountingReader(Position fieldCount) : count(fieldCount) {}

  std::size_t RootCount() const override { return 1; }
  gsl_RecordIndex Root(std::size_t) const override { return 0; }
  std::string_view RootName(std::size_t) const override { return "only"; }
  std::string_view ClassName(std::uint32_t) const override { return {}; }
  std::uint32_t TypeId(gsl_RecordIndex) const override { return 3; }
  gsl_RecordIdentity Identity(gsl_RecordIndex) const override { return {4, 5}; }
  gsl_RecordCollection Collection(gsl_RecordIndex) const override {
    return gsl_RecordCollection::None;
  }
  Position FirstField(gsl_RecordIndex) const override { return count != 0 ? 0 : kEnd; }
  Position ReadField(Position position, gsl_RecordField& field) const override {
    field.integer = static_cast<int>(position);
    return position + 1 < count ? position + 1 : kEnd;
  }
  void ReadUnsigneds(gsl_RecordIndex, std::vector<std::uint32_t>&) const override {}
  void ReadDoubles(gsl_RecordIndex, std::vector<double>&, std::size_t&,
                   std::size_t&) const override {}

private:
  Position count;
};

} // namespace

TEST(GslRecordReader, FieldsAreVisitedInOrder) {
  for (const unsigned int count : {0u, 1u, 5u}) {
    const CountingReader reader(count);
    int expected = 0;
    for (const gsl_RecordField& field : reader.Fields(0))
      EXPECT_EQ(field.integer, expected++);
    EXPECT_EQ(expected, static_cast<int>(count));
  }
}

TEST(GslRecordReader, RootIsFoundByItsName) {
  const CountingReader reader(0);
  EXPECT_EQ(reader.FindRoot("only"), 0u);
  EXPECT_EQ(reader.FindRoot("other"), reader.RootCount());
  EXPECT_EQ(reader.FindRoot(""), reader.RootCount());
}

TEST(GslRecordReader, HeaderHasWhatTheRecordSaysOfItself) {
  const gsl_RecordReader::Header header = CountingReader(2).ReadHeader(0);
  EXPECT_EQ(header.typeId, 3u);
  EXPECT_EQ(header.collection, gsl_RecordCollection::None);
  EXPECT_EQ(header.identity, (gsl_RecordIdentity{4, 5}));
  EXPECT_EQ(header.firstField, 0u);
  EXPECT_EQ(CountingReader(0).ReadHeader(0).firstField, gsl_RecordReader::kEnd);
}
