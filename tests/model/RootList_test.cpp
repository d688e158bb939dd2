#include "RootList.h"

#include "DatabaseSamples.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

using namespace database_samples;
using gsl_model::RootList;

RootList::Entry Entry(const char* name, std::int64_t record) {
  return {name, record, 3, {4, 5}, 6, 7};
}

} // namespace

TEST(RootList, SumDependsOnTheEntriesAlone) {
  RootList list;
  EXPECT_EQ(list.Sum(), 0u);
  list.Put(1, Entry("a", 1));
  const std::uint64_t one = list.Sum();
  list.Put(2, Entry("b", 2));
  const std::uint64_t two = list.Sum();
  list.Put(1, Entry("a", 9));
  EXPECT_NE(list.Sum(), two);
  list.Put(1, Entry("a", 1));
  EXPECT_EQ(list.Sum(), two);
  list.Erase(2);
  EXPECT_EQ(list.Sum(), one);
  list.Erase(2);
  list.Erase(1);
  EXPECT_EQ(list.Sum(), 0u);
  EXPECT_TRUE(list.Entries().empty());
}

TEST(RootList, EntryIsFoundByItsName) {
  RootList list;
  list.Put(1, Entry("", 1));
  list.Put(2, Entry("b", 2));
  ASSERT_NE(list.Find("b"), nullptr);
  EXPECT_EQ(list.Find("b")->first, 2);
  EXPECT_EQ(list.Find("a"), nullptr);
  EXPECT_EQ(list.Find(""), nullptr);
  list.Erase(2);
  EXPECT_EQ(list.Find("b"), nullptr);
}

TEST(RootList, EveryPartOfAnEntryCounts) {
  const std::uint64_t sum = RootList::ChecksumOf(1, Entry("a", 2));
  EXPECT_NE(RootList::ChecksumOf(2, Entry("a", 2)), sum);
  EXPECT_NE(RootList::ChecksumOf(1, Entry("b", 2)), sum);
  EXPECT_NE(RootList::ChecksumOf(1, Entry("a", 3)), sum);
  const auto expectOther = [&](const std::function<void(RootList::Entry&)>& change) {
    RootList::Entry entry = Entry("a", 2);
    change(entry);
    EXPECT_NE(RootList::ChecksumOf(1, entry), sum);
  };
  expectOther([](RootList::Entry& entry) { ++entry.typeId; });
  expectOther([](RootList::Entry& entry) { ++entry.identity.prefix; });
  expectOther([](RootList::Entry& entry) { ++entry.identity.serial; });
  expectOther([](RootList::Entry& entry) { ++entry.bytes; });
  expectOther([](RootList::Entry& entry) { ++entry.checksum; });
}

TEST(RootList, ListThatWasChangedIsRefused) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("model.gslm");
  CreateEveryKind(path);
  const std::string bytes = BytesOf(path);
  const std::string expected =
      path + ": is damaged: the checksum of the list of roots does not match";
  for (const char* const sql :
       {"UPDATE roots SET name = 'other' WHERE name = 'part'", "DELETE FROM roots WHERE id = 2",
        "UPDATE roots SET id = 3 WHERE id = 1", "UPDATE roots SET class = 8 WHERE id = 1",
        "UPDATE roots SET serial = 8 WHERE id = 1", "UPDATE roots SET prefix = 8 WHERE id = 1",
        "UPDATE roots SET bytes = 8 WHERE id = 1", "UPDATE roots SET checksum = 8 WHERE id = 1",
        "UPDATE roots SET record = 3 WHERE id = 1", "UPDATE model SET roots_sum = 1"}) {
    folder.Write("model.gslm", bytes);
    RunSql(path, sql);
    EXPECT_EQ(MessageOfReading(path), expected) << sql;
    EXPECT_EQ(MessageOf([&] { Model(path).Write([](Transaction&) {}); }), expected) << sql;
  }
}

TEST(RootList, ModelWithoutItsRowIsRefused) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("model.gslm");
  const Model empty(path);
  RunSql(path, "DELETE FROM model");
  const std::string expected = path + ": is damaged: its table model has no row";
  EXPECT_EQ(MessageOfReading(path), expected);
  EXPECT_EQ(MessageOf([&] { Model(path).Write([](Transaction&) {}); }), expected);
}
