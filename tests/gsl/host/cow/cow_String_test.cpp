#include "cow_String.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <utility>

TEST(CowString, EmptyTextsAreOneAndTheSame) {
  const cow_String none;
  EXPECT_EQ(none.Length(), 0u);
  EXPECT_TRUE(none.IsEmpty());
  EXPECT_STREQ(none.CStr(), "");
  EXPECT_TRUE(none == cow_String(""));
  EXPECT_TRUE(none == cow_String(nullptr));
  EXPECT_TRUE(none == cow_String(nullptr, 0));
  EXPECT_TRUE(none.SharesWith(cow_String("")));
}

TEST(CowString, HoldsACopyOfTheBytes) {
  char text[] = "abc";
  const cow_String s(text);
  text[0] = 'x';
  EXPECT_STREQ(s.CStr(), "abc");
  EXPECT_EQ(s.Length(), 3u);
  EXPECT_FALSE(s.IsEmpty());
}

TEST(CowString, CountsBytesNotCharactersAndKeepsZeros) {
  const cow_String umlaut("\xC3\xA4");
  EXPECT_EQ(umlaut.Length(), 2u);
  const cow_String zeros("a\0b", 3);
  EXPECT_EQ(zeros.Length(), 3u);
  EXPECT_EQ(std::memcmp(zeros.CStr(), "a\0b", 4), 0);
  EXPECT_FALSE(zeros == cow_String("a"));
  EXPECT_FALSE(zeros == cow_String("a\0c", 3));
}

TEST(CowString, CopiesShareOneBuffer) {
  const cow_String s("shared");
  const cow_String copy(s);
  cow_String assigned;
  assigned = copy;
  EXPECT_TRUE(copy.SharesWith(s));
  EXPECT_TRUE(assigned.SharesWith(s));
  EXPECT_EQ(assigned.CStr(), s.CStr());
  EXPECT_FALSE(cow_String("shared").SharesWith(s));
  EXPECT_TRUE(cow_String("shared") == s);
}

TEST(CowString, BufferLivesAsLongAsItsLastOwner) {
  cow_String last;
  {
    const cow_String first("held");
    last = first;
  }
  EXPECT_STREQ(last.CStr(), "held");
  last = cow_String("other");
  EXPECT_STREQ(last.CStr(), "other");
}

TEST(CowString, AssignsToItself) {
  cow_String s("self");
  const cow_String& same = s;
  s = same;
  EXPECT_STREQ(s.CStr(), "self");
  cow_String copy(s);
  s = copy;
  EXPECT_STREQ(s.CStr(), "self");
}

TEST(CowString, MovesWithoutAnOwnerMore) {
  cow_String s("moved");
  const char* const bytes = s.CStr();
  cow_String target(std::move(s));
  EXPECT_EQ(target.CStr(), bytes);
  cow_String assigned("old");
  assigned = std::move(target);
  EXPECT_EQ(assigned.CStr(), bytes);
  EXPECT_TRUE(std::is_nothrow_move_constructible<cow_String>::value);
  EXPECT_TRUE(std::is_nothrow_copy_constructible<cow_String>::value);
}

TEST(CowString, ComparesByteByByte) {
  EXPECT_TRUE(cow_String("a") < cow_String("b"));
  EXPECT_TRUE(cow_String("a") < cow_String("aa"));
  EXPECT_TRUE(cow_String() < cow_String("a"));
  EXPECT_TRUE(cow_String("z") < cow_String("\x80")) << "bytes have no sign";
  EXPECT_FALSE(cow_String("a") < cow_String("a"));
  EXPECT_TRUE(cow_String("a") != cow_String("b"));
  EXPECT_FALSE(cow_String("ab") == cow_String("abc"));
}
