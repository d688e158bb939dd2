#include "readers/WordScanner.h"

#include "MeshSamples.h"

#include <limits>
#include <random>

using namespace gsl_mesh_samples;
using gsl_mesh::MeshSource;
using gsl_mesh::ParseInteger;
using gsl_mesh::ParseReal;

TEST(WordScanner, RealsAreCorrectlyRounded) {
  std::mt19937_64 random(7);
  for (int k = 0; k < 20000; ++k) {
    const std::uint64_t bits = random();
    double expected = 0.0;
    std::memcpy(&expected, &bits, sizeof expected);
    if (!std::isfinite(expected)) continue;
    char text[64];
    std::snprintf(text, sizeof text, "%.*e", k % 20, expected);
    const double nearest = std::strtod(text, nullptr);
    double value = -1.0;
    ASSERT_TRUE(ParseReal(text, value)) << text;
    if (std::isfinite(nearest)) {
      EXPECT_EQ(value, nearest) << text;
    }
  }
}

TEST(WordScanner, RealsHaveManySpellings) {
  const struct {
    const char* text;
    double value;
  } rows[] = {{"+1.5", 1.5},     {"1.", 1.0},       {".5", 0.5},         {"-.5E+1", -5.0},
              {"1e-033", 1e-33}, {"1E003", 1000.0}, {"-0", -0.0},        {"5e-324", 5e-324},
              {"1e-400", 0.0},   {"0001", 1.0},     {"1e0000002", 100.0}};
  for (const auto& row : rows) {
    double value = -7.0;
    EXPECT_TRUE(ParseReal(row.text, value)) << row.text;
    EXPECT_EQ(value, row.value) << row.text;
    EXPECT_EQ(std::signbit(value), std::signbit(row.value)) << row.text;
  }
}

TEST(WordScanner, NamesOfNanAndInfinityAreReal) {
  for (const char* text : {"nan", "NaN", "-nan", "+nan", "nan(ind)", "-nan(ind)", "1.#QNAN",
                           "-1.#IND", "1.#SNAN", "-1.#IND00"}) {
    double value = 0.0;
    EXPECT_TRUE(ParseReal(text, value)) << text;
    EXPECT_TRUE(std::isnan(value)) << text;
  }
  for (const char* text : {"inf", "Infinity", "-inf", "1.#INF", "-1.#INF00", "1e999"}) {
    double value = 0.0;
    EXPECT_TRUE(ParseReal(text, value)) << text;
    EXPECT_TRUE(std::isinf(value)) << text;
    EXPECT_EQ(std::signbit(value), text[0] == '-') << text;
  }
}

TEST(WordScanner, OtherWordsAreNotReal) {
  for (const char* text : {"", "-", "+", ".", "e5", "1e", "1,5", "1.0f", "0x10", "+-1", "--1",
                           "1.5.5", "nano", "1.#", "1.#X", "1 2"}) {
    double value = 0.0;
    EXPECT_FALSE(ParseReal(text, value)) << text;
  }
}

TEST(WordScanner, IntegersFillTheirWord) {
  std::int64_t value = 0;
  EXPECT_TRUE(ParseInteger("-12", value));
  EXPECT_EQ(value, -12);
  EXPECT_TRUE(ParseInteger("+7", value));
  EXPECT_EQ(value, 7);
  EXPECT_TRUE(ParseInteger("9223372036854775807", value));
  EXPECT_EQ(value, std::numeric_limits<std::int64_t>::max());
  for (const char* text : {"", "+", "-", "+-1", "1.0", "1e3", "12x", "9223372036854775808"}) {
    EXPECT_FALSE(ParseInteger(text, value)) << text;
  }
}

TEST(WordScanner, CommentsAreSkippedOnlyWhereTheFormatHasThem) {
  const MeshSource source{"a #b c\nd#e\nf", "sample"};
  gsl_mesh::WordScanner with(source, source.bytes, true);
  EXPECT_EQ(with.Next(), "a");
  EXPECT_EQ(with.NextOnLine(), "");
  EXPECT_EQ(with.Next(), "d");
  EXPECT_EQ(with.Next(), "f");
  EXPECT_TRUE(with.AtEnd());
  gsl_mesh::WordScanner without(source, source.bytes, false);
  EXPECT_EQ(without.Next(), "a");
  EXPECT_EQ(without.NextOnLine(), "#b");
}

TEST(WordScanner, WordsAndNumbersSayInWhichLineTheyAreWrong) {
  const MeshSource source{"1 2\r\n3 x\n", "sample"};
  const auto errorOf = [&](int skipped, bool whole) -> std::string {
    gsl_mesh::WordScanner words(source, source.bytes, false);
    for (int k = 0; k < skipped; ++k)
      words.Next();
    try {
      whole ? static_cast<double>(words.Integer("the count")) : words.Real("a coordinate");
      return "no error";
    } catch (const MeshError& e) {
      return e.what();
    }
  };
  EXPECT_EQ(errorOf(2, true), "no error");
  EXPECT_EQ(errorOf(3, true), "sample: line 2: the count is not a whole number: 'x'");
  EXPECT_EQ(errorOf(3, false), "sample: line 2: a coordinate is not a number: 'x'");
  EXPECT_EQ(errorOf(4, false), "sample: line 3: the file ends before a coordinate");
}

TEST(WordScanner, SkipLineEndsBeforeTheNextLine) {
  const MeshSource source{"a b c\rd", "sample"};
  gsl_mesh::WordScanner words(source, source.bytes, false);
  words.Next();
  words.SkipLine();
  EXPECT_EQ(words.NextOnLine(), "");
  EXPECT_EQ(words.BytesLeft(), 2U);
  EXPECT_EQ(words.Next(), "d");
  EXPECT_TRUE(words.AtEnd());
}
