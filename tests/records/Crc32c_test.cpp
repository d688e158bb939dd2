#include "Crc32c.h"

#include "RawRecords.h"

#include <gtest/gtest.h>

#include <random>
#include <string_view>
#include <vector>

namespace {

std::uint32_t SumOf(std::string_view text) {
  return gsl_records::Crc32c(reinterpret_cast<const unsigned char*>(text.data()), text.size());
}

} // namespace

// The examples of RFC 3720, appendix B.4, and the usual check value.
TEST(Crc32c, PublishedExamples) {
  EXPECT_EQ(SumOf("123456789"), 0xE3069283u);
  EXPECT_EQ(SumOf(std::string(32, '\0')), 0x8A9136AAu);
  EXPECT_EQ(SumOf(std::string(32, '\xFF')), 0x62A8AB43u);
  EXPECT_EQ(SumOf(""), 0u);
}

TEST(Crc32c, EveryLengthAgreesWithTheBitByBitSumAndMayBeTakenInParts) {
  std::mt19937 random(7);
  std::vector<unsigned char> bytes;
  for (std::size_t length = 0; length < 70; ++length) {
    const std::uint32_t whole = gsl_records::Crc32c(bytes.data(), bytes.size());
    EXPECT_EQ(whole, RawChecksum(bytes)) << length;
    EXPECT_EQ(whole, gsl_records::Crc32cByTables(bytes.data(), bytes.size(), 0)) << length;
    for (std::size_t cut = 0; cut <= length; ++cut) {
      const std::uint32_t first = gsl_records::Crc32c(bytes.data(), cut);
      EXPECT_EQ(gsl_records::Crc32c(bytes.data() + cut, length - cut, first), whole);
      EXPECT_EQ(gsl_records::Crc32cByTables(bytes.data() + cut, length - cut, first), whole);
    }
    bytes.push_back(static_cast<unsigned char>(random()));
  }
}

TEST(Crc32c, LanesAgreeWithTheTables) {
  std::mt19937 random(8);
  std::vector<unsigned char> bytes(20000);
  for (unsigned char& byte : bytes)
    byte = static_cast<unsigned char>(random());
  // Three lanes of 1024 bytes run side by side.
  for (const std::size_t length : {3071u, 3072u, 3073u, 6143u, 6144u, 6152u, 9216u, 20000u - 7u}) {
    for (const std::size_t begin : {0u, 1u, 7u}) {
      for (const std::uint32_t before : {0u, 0x12345678u, 0xFFFFFFFFu}) {
        EXPECT_EQ(gsl_records::Crc32c(bytes.data() + begin, length, before),
                  gsl_records::Crc32cByTables(bytes.data() + begin, length, before))
            << length << ' ' << begin;
      }
    }
  }
}
