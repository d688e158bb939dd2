#include "PlainBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>

using gsl_records::PlainBuffer;

TEST(PlainBuffer, WhatIsNotForgottenStays) {
  PlainBuffer<unsigned char> buffer;
  constexpr std::size_t kCount = 3000000;
  for (std::size_t i = 0; i < kCount; ++i)
    buffer.Append(static_cast<unsigned char>(i % 251));
  constexpr std::size_t kPiece = 100000;
  for (std::size_t begin = 0; begin < kCount; begin += kPiece) {
    buffer.ForgetUntil(begin, begin + kPiece);
    for (std::size_t i = begin + kPiece; i < std::min(begin + 2 * kPiece, kCount); ++i)
      ASSERT_EQ(buffer[i], i % 251);
  }
}

TEST(PlainBuffer, ALargeArrayKeepsItsValuesWhileItGrows) {
  PlainBuffer<unsigned int> buffer;
  constexpr unsigned int kCount = 1500000;
  buffer.Room(kCount);
  EXPECT_GE(buffer.BytesHeld(), kCount * sizeof(unsigned int));
  for (unsigned int i = 0; i < 2 * kCount; ++i)
    buffer.Append(i);
  ASSERT_EQ(buffer.Size(), 2 * kCount);
  for (unsigned int i = 0; i < 2 * kCount; ++i)
    ASSERT_EQ(buffer[i], i);
}

TEST(PlainBuffer, WhatIsBorrowedIsCopiedBeforeItIsChanged) {
  const int values[] = {1, 2, 3};
  auto buffer = PlainBuffer<int>::Borrowed(values, 3);
  EXPECT_EQ(buffer.BytesHeld(), 0u);
  buffer.Truncate(2);
  EXPECT_EQ(buffer.Begin(), values);
  buffer.Append(7);
  EXPECT_NE(buffer.Begin(), values);
  EXPECT_EQ(buffer.Size(), 3u);
  EXPECT_EQ(buffer[0], 1);
  EXPECT_EQ(buffer[1], 2);
  EXPECT_EQ(buffer[2], 7);
  EXPECT_EQ(values[2], 3);
}

TEST(PlainBuffer, OwnCopiesWhatIsBorrowedOnce) {
  const int values[] = {4, 5};
  auto buffer = PlainBuffer<int>::Borrowed(values, 2);
  buffer.Own();
  const int* const own = buffer.Begin();
  EXPECT_NE(own, values);
  EXPECT_EQ(own[1], 5);
  buffer.Own();
  EXPECT_EQ(buffer.Begin(), own);
  auto empty = PlainBuffer<int>::Borrowed(values, 0);
  empty.Own();
  EXPECT_EQ(empty.Begin(), nullptr);
}
