#include "RecordOffsets.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

using gsl_records::RecordOffsets;

TEST(RecordOffsets, NumbersOfMoreThan32BitsFollowTheOthers) {
  const std::vector<std::uint64_t> expected = {
      0, 20, 0xFFFFFFFEu, 0xFFFFFFFFu, 0x100000000u, (std::uint64_t{1} << 40) - 1};
  RecordOffsets offsets;
  for (std::size_t size = 0; size < expected.size(); ++size) {
    EXPECT_EQ(offsets.AllShort() != nullptr, size > 0 && size <= 4) << size;
    offsets.MakeRoom(1, expected[size]);
    offsets.Append(expected[size]);
    ASSERT_EQ(offsets.Size(), size + 1);
    EXPECT_EQ(offsets.Back(), expected[size]);
    for (std::size_t i = 0; i <= size; ++i)
      EXPECT_EQ(offsets[i], expected[i]);
  }
  EXPECT_GE(offsets.BytesHeld(), 4 * 4u + 2 * 8u);
}

TEST(RecordOffsets, TruncatedNumbersMayBeAppendedAgain) {
  RecordOffsets offsets;
  offsets.MakeRoom(4, 0x100000001u);
  for (const std::uint64_t offset : {0x1u, 0x2u})
    offsets.Append(offset);
  offsets.Append(0x100000000u);
  offsets.Append(0x100000001u);
  offsets.Truncate(3);
  EXPECT_EQ(offsets.Back(), 0x100000000u);
  offsets.Truncate(1);
  EXPECT_EQ(offsets.Size(), 1u);
  ASSERT_NE(offsets.AllShort(), nullptr);
  offsets.Append(0x7u);
  EXPECT_EQ(offsets.AllShort()[1], 0x7u);
  offsets.Truncate(0);
  EXPECT_EQ(offsets.Size(), 0u);
}

TEST(RecordOffsets, NumbersMayBeWrittenWhereTheyGo) {
  RecordOffsets offsets;
  offsets.MakeRoom(4, 0x100000000u);
  offsets.Append(3);
  EXPECT_EQ(offsets.ShortRoom(2, 0x100000000u), nullptr);
  std::uint32_t* const room = offsets.ShortRoom(2, 0xFFFFFFFFu);
  ASSERT_NE(room, nullptr);
  room[0] = 7;
  room[1] = 0xFFFFFFFFu;
  offsets.AppendFilled(2);
  ASSERT_EQ(offsets.Size(), 3u);
  EXPECT_EQ(offsets[0], 3u);
  EXPECT_EQ(offsets[1], 7u);
  EXPECT_EQ(offsets[2], 0xFFFFFFFFu);
  offsets.Append(0x100000000u);
  EXPECT_EQ(offsets.ShortRoom(1, 8), nullptr);
}
