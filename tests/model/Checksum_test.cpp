#include "Checksum.h"

#include "RandomNumbers.h"
#include "TestScale.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace {

using gsl_model::Checksum;

std::uint64_t SumOf(const std::vector<std::uint64_t>& words) {
  Checksum sum;
  for (const std::uint64_t word : words)
    sum.Add(word);
  return sum.Sum();
}

} // namespace

/// The first outputs of the published generator with the seed 0.
TEST(Checksum, MixesAsPublished) {
  constexpr std::uint64_t kStep = 0x9E3779B97F4A7C15u;
  EXPECT_EQ(gsl_model::Mixed(kStep), 0xE220A8397B1DCDAFu);
  EXPECT_EQ(gsl_model::Mixed(2 * kStep), 0x6E789E6AA1B965F4u);
  EXPECT_EQ(gsl_model::Mixed(3 * kStep), 0x06C45D188009454Fu);
  EXPECT_EQ(SumOf({0}), 0xE220A8397B1DCDAFu);
}

TEST(Checksum, NoticesEveryFlipOfOneAndOfTwoBits) {
  const std::vector<std::uint64_t> words = {0, 1, ~std::uint64_t{0}, 0x8000000000000000u};
  std::set<std::uint64_t> sums = {SumOf(words)};
  const int bits = 256;
  for (int i = 0; i < bits; ++i) {
    for (int j = i; j < bits; ++j) {
      std::vector<std::uint64_t> changed = words;
      const auto flip = [&](int bit) {
        changed[static_cast<std::size_t>(bit / 64)] ^= std::uint64_t{1} << (bit % 64);
      };
      flip(i);
      if (j != i) flip(j);
      EXPECT_TRUE(sums.insert(SumOf(changed)).second) << i << ' ' << j;
    }
  }
}

TEST(Checksum, DependsOnTheOrderAndTheNumberOfWords) {
  EXPECT_NE(SumOf({1, 2}), SumOf({2, 1}));
  EXPECT_NE(SumOf({0}), SumOf({0, 0}));
  EXPECT_NE(SumOf({}), SumOf({0}));
}

TEST(Checksum, TextsAreWordsOfEightBytesAfterTheirLength) {
  Checksum sum;
  sum.AddText("abcdefghi\xff");
  EXPECT_EQ(sum.Sum(), SumOf({10, 0x6867666564636261u, 0xFF69u}));
  EXPECT_EQ(sum.Count(), 3u);
  Checksum empty;
  empty.AddText("");
  EXPECT_EQ(empty.Sum(), SumOf({0}));
}

TEST(Checksum, DoublesAreTheirBits) {
  Checksum sum;
  sum.AddDouble(-0.0);
  EXPECT_EQ(sum.Sum(), SumOf({0x8000000000000000u}));
}
