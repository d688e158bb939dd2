#include "RecordDuplicates.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <vector>

using gsl_records::kNone;
using gsl_records::Number;

TEST(RecordDuplicates, EqualOneIsFoundAmongThoseOfOneHash) {
  gsl_records::RecordDuplicates known;
  const auto find = [&](std::uint32_t hash, Number wanted) {
    return known.Find(hash, [&](Number record) { return record == wanted; });
  };
  EXPECT_EQ(find(1, 0), kNone);
  for (Number record = 0; record < 1000; ++record)
    known.Insert(record % 3, record);
  for (Number record = 0; record < 1000; ++record) {
    EXPECT_EQ(find(record % 3, record), record);
    EXPECT_EQ(find((record + 1) % 3, record), kNone);
  }
  known.Truncate(500);
  EXPECT_EQ(find(499 % 3, 499), 499u);
  EXPECT_EQ(find(500 % 3, 500), kNone);
  known.Insert(500 % 3, 500);
  EXPECT_EQ(find(500 % 3, 500), 500u);
}

TEST(RecordDuplicates, RecordsThatStayAreFoundWhenOthersAreForgotten) {
  // Runs of neighbouring places, one of which goes past the end of the table.
  std::mt19937 random(20261122);
  for (int n = 0; n < 2000; ++n) {
    gsl_records::RecordDuplicates known;
    std::vector<std::uint32_t> hashes(20 + random() % 12);
    for (Number record = 0; record < hashes.size(); ++record) {
      hashes[record] = 56 + random() % 16;
      known.Insert(hashes[record], record);
    }
    const Number first = static_cast<Number>(random() % hashes.size());
    known.Truncate(first);
    for (Number record = 0; record < hashes.size(); ++record) {
      const Number found =
          known.Find(hashes[record], [&](Number other) { return other == record; });
      ASSERT_EQ(found, record < first ? record : kNone) << n;
    }
  }
}

TEST(RecordDuplicates, RecordAfterARecordOfItsOwnPlaceIsFoundWhenThatIsForgotten) {
  // The first table has 64 places. The first two records have its last place, so that the second
  // goes to place 0, and comes before the first when a larger table takes them.
  gsl_records::RecordDuplicates known;
  known.Insert(127, 0);
  known.Insert(127, 1);
  for (Number record = 2; record <= 40; ++record)
    known.Insert(record, record);
  known.Truncate(1);
  EXPECT_EQ(known.Find(127, [](Number) { return true; }), 0u);
}

TEST(RecordDuplicates, TakesMemoryInProportionToItsRecords) {
  // A table of twice the size is made when half of its places are taken.
  constexpr std::size_t kPlace = sizeof(std::uint32_t) + sizeof(Number);
  gsl_records::RecordDuplicates known;
  for (Number record = 0; record < 5000; ++record) {
    known.Insert(record, record);
    const std::size_t most = std::max<std::size_t>(64, 4 * (record + 1));
    ASSERT_LE(known.BytesHeld(), most * kPlace) << record;
  }
}

TEST(RecordDuplicates, HashTakesEveryByteAndTheLength) {
  std::vector<unsigned char> bytes(20, 0);
  std::set<std::uint32_t> hashes;
  std::size_t count = 0;
  for (std::size_t length = 0; length <= bytes.size(); ++length, ++count)
    hashes.insert(gsl_records::HashOfBytes(bytes.data(), length));
  for (std::size_t i = 0; i < bytes.size(); ++i, ++count) {
    bytes[i] = 1;
    hashes.insert(gsl_records::HashOfBytes(bytes.data(), bytes.size()));
    bytes[i] = 0;
  }
  EXPECT_EQ(hashes.size(), count);
}
