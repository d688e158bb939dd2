#include "support/RecordText.h"

#include "ModelSamples.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace gsl_tools;
using namespace model_samples;

std::string Shown(const gsl_RecordStore& store, std::size_t root) {
  std::string text;
  TextPortions out([&](std::string_view portion) { text += portion; });
  ShowAsText(store, root, out);
  return text;
}

TEST(RecordText, PortionsComeInOrderAndAtTheEnd) {
  std::vector<std::string> portions;
  TextPortions out([&](std::string_view portion) { portions.emplace_back(portion); });
  out.Add("a");
  out.Add(std::string(70000, 'b'));
  out.Add("c");
  ASSERT_EQ(portions.size(), 1u);
  EXPECT_EQ(portions[0], 'a' + std::string(70000, 'b'));
  out.Finish();
  ASSERT_EQ(portions.size(), 2u);
  EXPECT_EQ(portions[1], "c");
}

TEST(RecordText, NumbersSayEverything) {
  EXPECT_EQ(RealText(0.1), "0.1");
  EXPECT_EQ(RealText(-0.0), "-0");
  EXPECT_EQ(RealText(5e-324), "5e-324");
  EXPECT_EQ(RealText(std::numeric_limits<double>::infinity()), "inf");
  EXPECT_EQ(RealText(std::nan("")), "nan 0x7ff8000000000000");
  EXPECT_EQ(BitsText(1.0), "0x3ff0000000000000");
  EXPECT_TRUE(NeedsBits(-0.0));
  EXPECT_FALSE(NeedsBits(0.0));
  EXPECT_TRUE(NeedsBits(-std::numeric_limits<double>::infinity()));
  EXPECT_FALSE(NeedsBits(std::numeric_limits<double>::max()));
}

TEST(RecordText, IdentitiesAndClassesAreReadable) {
  EXPECT_EQ(IdentityText({}), "null");
  EXPECT_EQ(IdentityText({0, 1}), "0000000000000000:1");
  EXPECT_EQ(IdentityText({kPrefix, ~std::uint64_t{0}}), "0123456789abcdef:18446744073709551615");
  const gsl_RecordStore store = EveryKind();
  EXPECT_EQ(ClassText(store, kPart), "my_Part");
  EXPECT_EQ(ClassText(store, kUnknown), "0x0050FFFF");
}

TEST(RecordText, EveryKindIsShown) {
  const gsl_RecordStore store = EveryKind();
  EXPECT_EQ(Shown(store, 0), "part: my_Part 0123456789abcdef:9\n"
                             "  count: -7\n"
                             "  x: 1.5\n"
                             "  zero: -0\n"
                             "  far: -inf\n"
                             "  none: nan 0x7ff8000000000000\n"
                             "  on: true\n"
                             "  text: \"a \\\"b\\\"?\xff\"\n"
                             "  end: null of my_Part\n"
                             "  shared: object 0, 0x0050FFFF\n"
                             "    n: 1\n"
                             "  again: reference to object 0, 0x0050FFFF\n"
                             "  ids: 0x0050FFFF\n"
                             "    2 unsigned integers: 0 4294967295\n"
                             "  matrix: 0x0050FFFF\n"
                             "    2 by 3 doubles: 0.1 -0 1e+300; 2 3 4\n"
                             "  list: 0x0050FFFF\n"
                             "    [0]: my_Part 0123456789abcdef:10\n"
                             "      n: 2\n"
                             "    [1]: null of my_Part\n");
  EXPECT_EQ(Shown(store, 1), "root 1: 0x0050FFFF\n");
}

TEST(RecordText, RootsAreListedInColumns) {
  EXPECT_EQ(ListAsText(EveryKind()), "2 roots, 7 records\n"
                                     "part    my_Part 0123456789abcdef:9\n"
                                     "root 1  0x0050FFFF\n");
  EXPECT_EQ(ListAsText(gsl_RecordStore()), "0 roots, 0 records\n");
}

TEST(RecordText, NamesThatCouldMisleadAreQuoted) {
  gsl_RecordStore store;
  for (const char* name : {"plain", "two words", "root 1", "a/b", "line\nbreak"}) {
    store.AddRoot(1, {});
    store.NameRoot(name);
  }
  store.Finish();
  EXPECT_EQ(RootText(store, 0), "plain");
  EXPECT_EQ(RootText(store, 1), "\"two words\"");
  EXPECT_EQ(RootText(store, 2), "\"root 1\"");
  EXPECT_EQ(RootText(store, 3), "\"a/b\"");
  EXPECT_EQ(RootText(store, 4), "line?break");
}

} // namespace
