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
