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
