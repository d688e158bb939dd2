#include "RecordTables.h"

#include "gsl_RecordError.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

using gsl_records::Number;

TEST(TextTable, EachTextHasOneNumberInTheOrderOfFirstUse) {
  gsl_records::TextTable table;
  // One cheap mixture of characters, and different texts.
  const std::string texts[] = {"", "abca", "acba", "abcb", "a", std::string("a\0", 2), "acca"};
  for (int round = 0; round < 3; ++round) {
    for (Number i = 0; i < std::size(texts); ++i) {
      EXPECT_EQ(table.NumberOf(texts[i]), i);
      EXPECT_EQ(table[i], texts[i]);
    }
  }
  EXPECT_EQ(table.Size(), std::size(texts));
}

TEST(TextTable, TextThatWasDroppedIsNewAgain) {
  gsl_records::TextTable table;
  table.NumberOf("kept");
  table.NumberOf("gone");
  table.Truncate(1);
  EXPECT_EQ(table.Size(), 1u);
  EXPECT_EQ(table.NumberOf("new"), 1u);
  EXPECT_EQ(table.NumberOf("gone"), 2u);
  EXPECT_EQ(table.NumberOf("kept"), 0u);
}

TEST(PrefixTable, EachPrefixHasOneNumberInTheOrderOfFirstUse) {
  gsl_records::PrefixTable table;
  const std::uint64_t prefixes[] = {0, ~std::uint64_t{0}, 5, 6};
  for (int round = 0; round < 2; ++round) {
    for (Number i = 0; i < std::size(prefixes); ++i) {
      EXPECT_EQ(table.NumberOf(prefixes[i]), i);
      EXPECT_EQ(table.NumberOf(prefixes[i]), i);
      EXPECT_EQ(table[i], prefixes[i]);
    }
  }
  table.Truncate(1);
  EXPECT_EQ(table.NumberOf(6), 1u);
  EXPECT_EQ(table.NumberOf(0), 0u);
}

TEST(PrefixTable, MemoryCountsTheHashTable) {
  // An item has a prefix and its number with its padding; about three pointers are around it.
  constexpr std::size_t kItem = 2 * sizeof(std::uint64_t) + 3 * sizeof(void*);
  gsl_records::PrefixTable table;
  std::size_t least = ~std::size_t{0};
  for (std::uint64_t prefix = 0; prefix < 100; ++prefix) {
    const std::size_t before = table.BytesHeld();
    table.NumberOf(prefix);
    least = std::min(least, table.BytesHeld() - before);
  }
  // Most prefixes find room in the array.
  EXPECT_EQ(least, kItem);
  EXPECT_GE(table.BytesHeld(), 100 * (kItem + sizeof(std::uint64_t)));
}

/// The first outputs of the published generator with the seed 0.
TEST(MixedHash, MixesAsPublished) {
  constexpr std::uint64_t kStep = 0x9E3779B97F4A7C15u;
  EXPECT_EQ(gsl_records::MixedHash()(kStep), 0xE220A8397B1DCDAFu);
  EXPECT_EQ(gsl_records::MixedHash()(2 * kStep), 0x6E789E6AA1B965F4u);
  EXPECT_EQ(gsl_records::MixedHash()(3 * kStep), 0x06C45D188009454Fu);
}

TEST(MixedHash, NumbersOfOneRemainderSpread) {
  for (const std::size_t buckets : {1031u, 15173u, 65536u}) {
    std::vector<int> sizes(buckets, 0);
    for (std::uint64_t i = 0; i < buckets; ++i)
      ++sizes[gsl_records::MixedHash()(i * buckets) % buckets];
    EXPECT_LT(*std::max_element(sizes.begin(), sizes.end()), 16) << buckets;
  }
}

TEST(Counted, StopsBeforeTheNumberThatMeansNothing) {
  EXPECT_EQ(gsl_records::Counted(0xFFFFFFFEu), 0xFFFFFFFEu);
  EXPECT_THROW(static_cast<void>(gsl_records::Counted(0xFFFFFFFFu)), gsl_RecordError);
}
