#include "Varint.h"

#include "RandomNumbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>

using gsl_records::GetUsualVarint;
using gsl_records::LengthOfShortVarint;
using gsl_records::LengthOfTwoShortVarints;
using gsl_records::SkipUsualVarint;

namespace {

using Word = std::array<unsigned char, 8>;

/// A number byte by byte: how many bytes it takes, 0 for more than four or more than it needs.
struct Slow {
  std::size_t length = 0;
  std::uint64_t value = 0;
};

Slow SlowOf(const Word& bytes) {
  Slow slow;
  for (std::size_t i = 0; i < 4; ++i) {
    slow.value |= std::uint64_t{bytes[i] & 0x7Fu} << (7 * i);
    if (bytes[i] >= 0x80u) continue;
    if (bytes[i] != 0 || i == 0) slow.length = i + 1;
    return slow;
  }
  return slow;
}

/// The length of both numbers, of which the first has that length.
std::size_t LengthOfTwo(const Word& bytes, std::size_t first) {
  Word rest = {};
  std::copy(bytes.begin() + static_cast<std::ptrdiff_t>(first), bytes.end(), rest.begin());
  const std::size_t second = SlowOf(rest).length;
  return first != 0 && second != 0 ? first + second : 0;
}

void ExpectAsSlow(const Word& bytes) {
  const Slow slow = SlowOf(bytes);
  const unsigned char* const expected = slow.length != 0 ? bytes.data() + slow.length : nullptr;
  EXPECT_EQ(LengthOfShortVarint(gsl_records::GetFixed64(bytes.data())), slow.length);
  EXPECT_EQ(LengthOfTwoShortVarints(gsl_records::GetFixed64(bytes.data())),
            LengthOfTwo(bytes, slow.length));
  EXPECT_EQ(SkipUsualVarint(bytes.data()), expected);
  std::uint64_t value = 0;
  EXPECT_EQ(GetUsualVarint(bytes.data(), value), expected);
  if (expected != nullptr) {
    EXPECT_EQ(value, slow.value);
  }
}

} // namespace

TEST(Varint, ShortNumbersAreReadAsByteByByte) {
  // Each byte is one of those that decide, and eight bytes are there whatever the number is.
  constexpr std::array<unsigned char, 6> kBytes = {0x00, 0x01, 0x7F, 0x80, 0x81, 0xFF};
  for (std::size_t number = 0; number < 6 * 6 * 6 * 6 * 6 * 6; ++number) {
    Word bytes = {};
    std::size_t rest = number;
    for (std::size_t i = 0; i < 6; ++i, rest /= 6)
      bytes[i] = kBytes[rest % 6];
    bytes[6] = bytes[7] = static_cast<unsigned char>(number % 2 == 0 ? 0x00 : 0xFF);
    ExpectAsSlow(bytes);
  }
}

TEST(Varint, RandomBytesAreReadAsByteByByte) {
  constexpr std::uint64_t kSeed = 20261123;
  SCOPED_TRACE(kSeed);
  SplitMix random(kSeed);
  for (int round = 0; round < 200000; ++round) {
    const std::uint64_t bits = random();
    const std::uint64_t marks = random();
    Word bytes = {};
    for (std::size_t i = 0; i < bytes.size(); ++i)
      bytes[i] = static_cast<unsigned char>((bits >> (8 * i) & 0x7Fu) | (marks >> i & 1u) << 7);
    ExpectAsSlow(bytes);
  }
}

TEST(Varint, WhatIsWrittenIsRead) {
  for (unsigned int shift = 0; shift < 64; ++shift) {
    for (const std::uint64_t value :
         {std::uint64_t{1} << shift, (std::uint64_t{1} << shift) - 1, ~std::uint64_t{0} >> shift}) {
      std::array<unsigned char, 16> bytes = {};
      const unsigned char* const end = gsl_records::PutVarint(bytes.data(), value);
      std::uint64_t read = 0;
      EXPECT_EQ(gsl_records::GetVarint(bytes.data(), read), end);
      EXPECT_EQ(read, value);
      const bool isShort = value < std::uint64_t{1} << 28;
      std::uint64_t usual = 0;
      EXPECT_EQ(GetUsualVarint(bytes.data(), usual), isShort ? end : nullptr) << value;
      if (isShort) {
        EXPECT_EQ(usual, value);
      }
    }
  }
}
