#include "SerialSet.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <set>
#include <tuple>

using gsl_records::Number;
using gsl_records::SerialSet;

TEST(SerialSet, EachSerialIsNewOnceForEachShapeAndPrefix) {
  SerialSet set;
  for (int round = 0; round < 2; ++round) {
    for (Number shape = 0; shape < 3; ++shape) {
      for (Number prefix = 0; prefix < 3; ++prefix) {
        for (const std::uint64_t serial : {std::uint64_t{0}, std::uint64_t{63}, std::uint64_t{64},
                                           std::uint64_t{4096}, ~std::uint64_t{0}}) {
          EXPECT_EQ(set.Insert(shape, prefix, serial), round == 0) << serial;
        }
      }
    }
  }
}

TEST(SerialSet, AgreesWithAnOrdinarySet) {
  std::mt19937_64 random(11);
  SerialSet set;
  std::set<std::tuple<Number, Number, std::uint64_t>> expected;
  for (int i = 0; i < 200000; ++i) {
    const auto shape = static_cast<Number>(random() % 3);
    const auto prefix = static_cast<Number>(random() % 2);
    // Dense, sparse, and of one remainder.
    std::uint64_t serial = random() % 20000;
    if (i % 3 == 1) serial = random();
    if (i % 3 == 2) serial = (random() % 2000) << 40;
    ASSERT_EQ(set.Insert(shape, prefix, serial), expected.emplace(shape, prefix, serial).second);
  }
}

TEST(SerialSet, DenseSerialsTakeFewBytes) {
  SerialSet set;
  constexpr std::uint64_t kCount = 1000000;
  for (std::uint64_t serial = 0; serial < kCount; ++serial)
    ASSERT_TRUE(set.Insert(0, 0, 5 * serial));
  // 24 bytes for 64 serials, of which one in five is there, in a table that is a quarter full.
  EXPECT_LE(set.BytesHeld(), 5 * kCount / 64 * 24 * 4 + 4096);
}

TEST(SerialSet, SerialThatCameBeforeItsArrayIsKnownWhenTheArrayReachesIt) {
  SerialSet set;
  EXPECT_TRUE(set.Insert(1, 1, 640));
  EXPECT_TRUE(set.Insert(1, 1, 10000));
  EXPECT_TRUE(set.Insert(1, 1, 3));
  for (std::uint64_t serial = 641; serial < 20000; ++serial)
    ASSERT_EQ(set.Insert(1, 1, serial), serial != 10000) << serial;
  EXPECT_FALSE(set.Insert(1, 1, 10000));
  EXPECT_FALSE(set.Insert(1, 1, 3));
  EXPECT_TRUE(set.Insert(1, 1, 4));
}

TEST(SerialSet, MemoryIsInProportionToTheSerials) {
  SerialSet dense;
  SerialSet sparse;
  for (std::uint64_t i = 0; i < 100000; ++i) {
    ASSERT_TRUE(dense.Insert(1, 1, i));
    ASSERT_TRUE(sparse.Insert(1, 1, i << 40));
  }
  EXPECT_LT(dense.BytesHeld(), 40000u);
  EXPECT_LT(sparse.BytesHeld(), 100 * 100000u);
}
