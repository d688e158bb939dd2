#include "atr_String.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

TEST(AtrString, PlainTextStaysAsItIs) {
  EXPECT_STREQ(atr_String().CStr(), "");
  EXPECT_EQ(atr_String().Length(), 0u);
  EXPECT_STREQ(atr_String(static_cast<const char*>(nullptr)).CStr(), "");
  EXPECT_STREQ(atr_String("50%% of %s").CStr(), "50%% of %s");
  EXPECT_STREQ(atr_String(std::string("abc")).CStr(), "abc");
  EXPECT_TRUE(atr_String("a") == atr_String(std::string("a")));
  EXPECT_TRUE(atr_String("a") != atr_String("b"));
}

TEST(AtrString, PlainTextHasNoArguments) {
  atr_String plain("%s and %d");
  EXPECT_FALSE(atr_SubstituteFormat(plain, 1, "x"));
  EXPECT_FALSE(atr_SubstituteFormat(plain, 2, 7));
  EXPECT_STREQ(plain.CStr(), "%s and %d");
}

TEST(AtrSubstituteFormat, FillsArgumentsByPositionAndKind) {
  atr_String message = atr_translate("value %d of %s");
  EXPECT_TRUE(atr_SubstituteFormat(message, 2, "table"));
  EXPECT_STREQ(message.CStr(), "value %d of table");
  EXPECT_TRUE(atr_SubstituteFormat(message, 1, -42));
  EXPECT_STREQ(message.CStr(), "value -42 of table");
}

TEST(AtrSubstituteFormat, RefusesAnAbsentPositionOrAnotherKind) {
  atr_String message = atr_translate("%d %s");
  EXPECT_FALSE(atr_SubstituteFormat(message, 1, "text"));
  EXPECT_FALSE(atr_SubstituteFormat(message, 2, 5));
  EXPECT_FALSE(atr_SubstituteFormat(message, 3, 5));
  EXPECT_FALSE(atr_SubstituteFormat(message, 0, 5));
  EXPECT_FALSE(atr_SubstituteFormat(message, -1, "x"));
  EXPECT_STREQ(message.CStr(), "%d %s");
  EXPECT_TRUE(atr_SubstituteFormat(message, 1, 5));
  EXPECT_FALSE(atr_SubstituteFormat(message, 1, 6)) << "filled once";
  EXPECT_STREQ(message.CStr(), "5 %s");
}

TEST(AtrSubstituteFormat, NamedPositionsMayComeInAnyOrderAndMoreThanOnce) {
  atr_String message = atr_translate("%2$s, %1$d, %2$s");
  EXPECT_TRUE(atr_SubstituteFormat(message, 1, 12345));
  EXPECT_TRUE(atr_SubstituteFormat(message, 2, "x"));
  EXPECT_STREQ(message.CStr(), "x, 12345, x");
}

TEST(AtrSubstituteFormat, FilledInTextIsNeverSearchedAgain) {
  atr_String message = atr_translate("%s|%s");
  EXPECT_TRUE(atr_SubstituteFormat(message, 1, "%s%d%2$s%%"));
  EXPECT_TRUE(atr_SubstituteFormat(message, 2, "end"));
  EXPECT_STREQ(message.CStr(), "%s%d%2$s%%|end");
  EXPECT_FALSE(atr_SubstituteFormat(message, 1, 3));
}

TEST(AtrSubstituteFormat, NullTextIsTheEmptyText) {
  atr_String message = atr_translate("[%s]");
  EXPECT_TRUE(atr_SubstituteFormat(message, 1, static_cast<const char*>(nullptr)));
  EXPECT_STREQ(message.CStr(), "[]");
}

TEST(AtrSubstituteFormat, TakesTheWholeRangeOfIntegers) {
  atr_String message = atr_translate("%d %d");
  EXPECT_TRUE(atr_SubstituteFormat(message, 1, INT_MIN));
  EXPECT_TRUE(atr_SubstituteFormat(message, 2, INT_MAX));
  EXPECT_STREQ(message.CStr(), "-2147483648 2147483647");
}

TEST(AtrTranslate, ADoubledPercentSignIsOne) {
  atr_String message = atr_translate("100%% of %s%%%%");
  EXPECT_TRUE(atr_SubstituteFormat(message, 1, "it"));
  EXPECT_STREQ(message.CStr(), "100% of it%%");
}

TEST(AtrTranslate, TextThatIsNotAnArgumentStays) {
  for (const char* format : {"", "%", "50%", "%x %5d %-d", "%1s", "%1sd", "%$s", "%99999$s"}) {
    atr_String message = atr_translate(format);
    EXPECT_STREQ(message.CStr(), format);
    EXPECT_FALSE(atr_SubstituteFormat(message, 1, "x")) << format;
    EXPECT_FALSE(atr_SubstituteFormat(message, 1, 1)) << format;
    EXPECT_FALSE(atr_SubstituteFormat(message, 0, "x")) << format;
    EXPECT_STREQ(message.CStr(), format);
  }
  EXPECT_STREQ(atr_translate(nullptr).CStr(), "");
}

TEST(AtrTranslate, UsesATranslationWithItsOwnOrder) {
  atr_SetTranslation("%s has %d", "%2$d hat %1$s");
  atr_String message = atr_translate("%s has %d");
  EXPECT_TRUE(atr_SubstituteFormat(message, 1, "Anna"));
  EXPECT_TRUE(atr_SubstituteFormat(message, 2, 3));
  EXPECT_STREQ(message.CStr(), "3 hat Anna");
  atr_SetTranslation("%s has %d", "anders");
  EXPECT_STREQ(atr_translate("%s has %d").CStr(), "anders");
  atr_SetTranslation("%s has %d", nullptr);
  EXPECT_STREQ(atr_translate("%s has %d").CStr(), "%s has %d");
}

TEST(AtrSetTranslation, WithoutAFormatDoesNothing) {
  atr_SetTranslation(nullptr, "text");
  atr_SetTranslation(nullptr, nullptr);
  EXPECT_STREQ(atr_translate("").CStr(), "");
}
