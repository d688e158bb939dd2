#include "Base64.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using namespace gsl_view;

/// The second method: bits one by one.
std::string DecodedByBits(const std::string& text) {
  const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bits;
  for (const char c : text) {
    const std::size_t value = digits.find(c);
    if (value == std::string::npos) continue;
    for (int bit = 5; bit >= 0; --bit)
      bits += (value >> bit & 1u) != 0 ? '1' : '0';
  }
  std::string bytes;
  for (std::size_t k = 0; k + 8 <= bits.size(); k += 8)
    bytes += static_cast<char>(std::stoi(bits.substr(k, 8), nullptr, 2));
  return bytes;
}

std::string Written(const std::string& bytes, std::size_t atOnce) {
  std::string text;
  const PageSink sink = [&](std::string_view part) { text += part; };
  Base64Writer writer(sink);
  for (std::size_t k = 0; k < bytes.size(); k += atOnce)
    writer.Write(bytes.data() + k, std::min(atOnce, bytes.size() - k));
  writer.Finish();
  return text;
}

TEST(Base64, EncodesTheVectorsOfTheStandard) {
  EXPECT_EQ(Base64Of(""), "");
  EXPECT_EQ(Base64Of("f"), "Zg==");
  EXPECT_EQ(Base64Of("fo"), "Zm8=");
  EXPECT_EQ(Base64Of("foo"), "Zm9v");
  EXPECT_EQ(Base64Of("foob"), "Zm9vYg==");
  EXPECT_EQ(Base64Of("fooba"), "Zm9vYmE=");
  EXPECT_EQ(Base64Of("foobar"), "Zm9vYmFy");
  EXPECT_EQ(Base64Of("\xff\xfe\xfd"), "//79");
}

TEST(Base64Writer, WritesTheSameInPartsOfAnySize) {
  std::string bytes;
  for (int k = 0; k < 10001; ++k)
    bytes += static_cast<char>(k * 7 % 256);
  const std::string whole = Written(bytes, bytes.size());
  EXPECT_EQ(DecodedByBits(whole), bytes);
  for (const std::size_t atOnce : {1u, 2u, 3u, 1000u, 3071u, 3072u, 3073u, 7000u})
    EXPECT_EQ(Written(bytes, atOnce), whole) << atOnce;
}

TEST(Base64Writer, BreaksLinesAfterTheirLength) {
  const std::string text = Written(std::string(Base64Writer::kLine / 4 * 3 + 1, 'x'), 100);
  EXPECT_EQ(text.find('\n'), Base64Writer::kLine);
  EXPECT_EQ(text.size(), Base64Writer::kLine + 1 + 4 + 1);
  EXPECT_EQ(text.back(), '\n');
  EXPECT_EQ(Written("", 1), "");
}

} // namespace
