#include "ViewText.h"

#include <gtest/gtest.h>

using namespace gsl_view;

TEST(ViewText, ShortNumbersHaveSixDigits) {
  EXPECT_EQ(ShortNumber(30.0), "30");
  EXPECT_EQ(ShortNumber(10.090817356205852), "10.0908");
  EXPECT_EQ(ShortNumber(-0.0), "0");
  EXPECT_EQ(ShortNumber(-1.23456789e-150), "-1.23457e-150");
  EXPECT_EQ(ShortVector({0.0, -0.5, 1e150}), "(0, -0.5, 1e+150)");
}

TEST(ViewText, FullNumbersReadBack) {
  EXPECT_EQ(FullNumber(0.1), "0.1");
  EXPECT_EQ(FullNumber(10.090817356205852), "10.090817356205852");
  EXPECT_EQ(FullNumber(5e-324), "5e-324");
}

TEST(ViewText, RoughNumbersHaveTwoDigits) {
  EXPECT_EQ(RoughNumber(2.5), "2.5");
  EXPECT_EQ(RoughNumber(197.4), "200");
  EXPECT_EQ(RoughNumber(12345.0), "12000");
  EXPECT_EQ(RoughNumber(0.0123), "0.012");
}

TEST(ViewText, BytesThatAreNotUtf8AreReplaced) {
  EXPECT_EQ(DrawableText("Gr\xC3\xB6\xC3\x9F"
                         "e"),
            "Gr\xC3\xB6\xC3\x9F"
            "e");
  EXPECT_EQ(DrawableText("a\xFF\xFE"
                         "b"),
            "a\xEF\xBF\xBD\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(DrawableText("cut\xE2\x82"), "cut\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(DrawableText("\xF0\x9F\x94\xA9"), "\xF0\x9F\x94\xA9");
  EXPECT_EQ(DrawableText("line\nnext\x1B[0m"), "line?next?[0m");
  for (const char* wrong : {"\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE0\x80\x80"})
    EXPECT_EQ(DrawableText(wrong).substr(0, 3), "\xEF\xBF\xBD") << wrong;
}

TEST(ViewText, CharactersAreSteppedOver) {
  const std::string text = "a\xC3\xB6\xE2\x82\xAC";
  EXPECT_EQ(NextCharacter(text, 0), 1u);
  EXPECT_EQ(NextCharacter(text, 1), 3u);
  EXPECT_EQ(NextCharacter(text, 3), text.size());
}
