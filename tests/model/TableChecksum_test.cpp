#include "TableChecksum.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <vector>

namespace {

using gsl_model::Checksum;
using gsl_model::Number;
using gsl_model::ReachedRecords;
using gsl_model::RecordTable;

/// The checksum of the first root of what the call writes.
std::uint64_t SumOf(const std::function<void(RecordTable&, gsl_RecordIndex)>& write) {
  RecordTable table;
  write(table, table.AddRoot(1, {2, 3}));
  std::vector<std::int64_t> ids;
  while (ids.size() < table.Records().size())
    ids.push_back(static_cast<std::int64_t>(10 + ids.size()));
  ReachedRecords records(table);
  return gsl_model::ChecksumOf(table, records.From(0), ids).Sum();
}

} // namespace

TEST(TableChecksum, RecordsAreReachedOnceInTheOrderOfReading) {
  RecordTable table;
  const gsl_RecordIndex root = table.AddRoot(1, {});
  const gsl_RecordIndex a = table.AddRecord(root, {"a", 0}, true, 1, {});
  const gsl_RecordIndex b = table.AddRecord(a, {"b", 0}, true, 1, {});
  table.AddReference(b, {"a", 0}, a);
  const gsl_RecordIndex c = table.AddRecord(root, {"c", 0}, false, 1, {});
  table.AddReference(root, {"a", 0}, a);
  const gsl_RecordIndex second = table.AddRoot(1, {});
  table.AddReference(second, {"b", 0}, b);
  ReachedRecords records(table);
  EXPECT_EQ(records.From(root), (std::vector<Number>{root, a, b, c}));
  EXPECT_EQ(records.From(second), (std::vector<Number>{second, b, a}));
  EXPECT_EQ(records.From(root), (std::vector<Number>{root, a, b, c}));
}

TEST(TableChecksum, WordsAreAsDescribed) {
  Checksum expected;
  for (const std::uint64_t word : {10u, 1u, 2u, 3u, 0u})
    expected.Add(word);
  expected.Add(0);
  expected.AddText("n");
  expected.Add(~std::uint64_t{0});
  expected.Add(static_cast<std::uint64_t>(-7));
  expected.Add(1);
  EXPECT_EQ(SumOf([](RecordTable& to, gsl_RecordIndex root) {
              to.AddInteger(root, {"n", -1}, -7);
            }),
            expected.Sum());
}

TEST(TableChecksum, DependsOnEverythingThatIsRead) {
  const double values[] = {1, 2};
  const std::uint32_t numbers[] = {1, 2};
  std::set<std::uint64_t> sums;
  const auto expectNew = [&](const std::function<void(RecordTable&, gsl_RecordIndex)>& write) {
    EXPECT_TRUE(sums.insert(SumOf(write)).second) << sums.size();
  };
  using Table = RecordTable;
  expectNew([](Table&, gsl_RecordIndex) {});
  expectNew([](Table& to, gsl_RecordIndex root) { to.AddInteger(root, {"n", 0}, 1); });
  expectNew([](Table& to, gsl_RecordIndex root) { to.AddInteger(root, {"n", 1}, 1); });
  expectNew([](Table& to, gsl_RecordIndex root) { to.AddInteger(root, {"m", 0}, 1); });
  expectNew([](Table& to, gsl_RecordIndex root) { to.AddInteger(root, {"n", 0}, 2); });
  expectNew([](Table& to, gsl_RecordIndex root) { to.AddBoolean(root, {"n", 0}, true); });
  expectNew([](Table& to, gsl_RecordIndex root) { to.AddBoolean(root, {"n", 0}, false); });
  expectNew([](Table& to, gsl_RecordIndex root) { to.AddDouble(root, {"n", 0}, 0.0); });
  expectNew([](Table& to, gsl_RecordIndex root) { to.AddDouble(root, {"n", 0}, -0.0); });
  expectNew([](Table& to, gsl_RecordIndex root) { to.AddString(root, {"n", 0}, "a"); });
  expectNew([](Table& to, gsl_RecordIndex root) { to.AddString(root, {"n", 0}, "b"); });
  expectNew([](Table& to, gsl_RecordIndex root) { to.AddNull(root, {"n", 0}, 1); });
  expectNew([](Table& to, gsl_RecordIndex root) { to.AddRecord(root, {"n", 0}, false, 1, {}); });
  expectNew([](Table& to, gsl_RecordIndex root) { to.AddRecord(root, {"n", 0}, true, 1, {}); });
  expectNew([](Table& to, gsl_RecordIndex root) { to.AddRecord(root, {"n", 0}, false, 2, {}); });
  expectNew([](Table& to, gsl_RecordIndex root) {
    to.AddRecord(root, {"n", 0}, false, 1, {1, 0});
  });
  expectNew([](Table& to, gsl_RecordIndex root) {
    to.AddRecord(root, {"n", 0}, false, 1, {0, 1});
  });
  expectNew([](Table& to, gsl_RecordIndex root) {
    to.AddInteger(to.AddRecord(root, {"n", 0}, false, 1, {}), {"n", 0}, 1);
  });
  expectNew([](Table& to, gsl_RecordIndex root) {
    to.SetCollection(root, gsl_RecordCollection::Objects);
  });
  expectNew([](Table& to, gsl_RecordIndex root) {
    to.SetCollection(root, gsl_RecordCollection::Unsigneds);
  });
  expectNew([&](Table& to, gsl_RecordIndex root) { to.SetUnsigneds(root, numbers, 1); });
  expectNew([&](Table& to, gsl_RecordIndex root) { to.SetUnsigneds(root, numbers, 2); });
  expectNew([&](Table& to, gsl_RecordIndex root) { to.SetDoubles(root, values, 1, 2); });
  expectNew([&](Table& to, gsl_RecordIndex root) { to.SetDoubles(root, values, 2, 1); });
}

TEST(TableChecksum, ClassHasItsNumberAndItsName) {
  Checksum expected;
  expected.Add(7);
  expected.AddText("name");
  EXPECT_EQ(gsl_model::ChecksumOfClass(7, "name"), expected.Sum());
}
