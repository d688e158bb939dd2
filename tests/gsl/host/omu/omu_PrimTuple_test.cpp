#include "omu_PrimTuple.h"

#include "nex_CommandException.h"

#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <utility>

namespace {

omu_PrimTuple Tuple(std::initializer_list<double> numbers, int kind = '(') {
  omu_PrimTuple tuple(static_cast<int>(numbers.size()), kind);
  for (const double n : numbers)
    tuple.Put(n);
  return tuple;
}

/// A value that is not a tuple.
class Text : public omu_Primitive {
public:
  explicit Text(const char* t) : text(t) { ++live; }
  Text(const Text& other) : omu_Primitive(other), text(other.text) { ++live; }
  ~Text() override { --live; }
  bool operator==(const omu_Primitive& other) const override {
    const auto* const o = dynamic_cast<const Text*>(&other);
    return o != nullptr && o->text == text;
  }
  Text* Copy() const override { return new Text(*this); }
  cow_String AsString(int style) const override { return style == 0 ? text : cow_String("styled"); }

  cow_String text;
  static inline int live = 0;
};

TEST(OmuPrimTuple, StartsEmptyAndGrowsPastTheExpectedCount) {
  omu_PrimTuple tuple(1, 40);
  EXPECT_EQ(tuple.Count(), 0u);
  EXPECT_EQ(tuple.Kind(), '(');
  for (int i = 0; i < 5; ++i)
    tuple.Put(i);
  EXPECT_EQ(tuple.Count(), 5u);
  EXPECT_EQ(tuple.Number(4), 4.0);
  EXPECT_TRUE(tuple.IsNumber(4));
}

TEST(OmuPrimTuple, ExpectedCountBelowOneMeansNothing) {
  omu_PrimTuple tuple(-3);
  tuple.Put(1.0);
  EXPECT_EQ(tuple.Count(), 1u);
}

TEST(OmuPrimTuple, HoldsCopiesOfOtherPrimitives) {
  omu_PrimTuple tuple;
  {
    const Text text("left");
    tuple.Put(text);
    EXPECT_EQ(Text::live, 2);
  }
  EXPECT_EQ(Text::live, 1);
  EXPECT_FALSE(tuple.IsNumber(0));
  EXPECT_TRUE(tuple.Primitive(0) == Text("left"));
}

TEST(OmuPrimTuple, CopiesAreDeep) {
  omu_PrimTuple tuple = Tuple({1.0});
  tuple.Put(Text("left"));
  tuple.Put(Tuple({2.0, 3.0}));
  const omu_PrimTuple copy(tuple);
  const std::unique_ptr<omu_PrimTuple> heap(tuple.Copy());
  omu_PrimTuple assigned = Tuple({9.0});
  assigned = tuple;
  const omu_PrimTuple& self = assigned;
  assigned = self;
  EXPECT_EQ(Text::live, 4);
  EXPECT_NE(&copy.Primitive(1), &tuple.Primitive(1));
  EXPECT_TRUE(copy == tuple);
  EXPECT_TRUE(*heap == tuple);
  EXPECT_TRUE(assigned == tuple);
  tuple.Put(4.0);
  EXPECT_FALSE(copy == tuple);
}

TEST(OmuPrimTuple, ReleasesItsElements) {
  EXPECT_EQ(Text::live, 0);
}

TEST(OmuPrimTuple, MovesTakeTheElements) {
  omu_PrimTuple tuple = Tuple({1.0, 2.0}, '[');
  const omu_PrimTuple moved(std::move(tuple));
  EXPECT_EQ(moved.Count(), 2u);
  EXPECT_EQ(moved.Kind(), '[');
}

TEST(OmuPrimTuple, EqualityLooksAtKindCountAndEveryElement) {
  const omu_PrimTuple tuple = Tuple({1.0, 2.0});
  EXPECT_TRUE(tuple == Tuple({1.0, 2.0}));
  EXPECT_FALSE(tuple == Tuple({1.0, 2.0}, '['));
  EXPECT_FALSE(tuple == Tuple({1.0}));
  EXPECT_FALSE(tuple == Tuple({1.0, 3.0}));
  EXPECT_FALSE(tuple == Text("left"));
  omu_PrimTuple mixed = Tuple({1.0});
  mixed.Put(Text("left"));
  EXPECT_FALSE(tuple == mixed);
  omu_PrimTuple other = Tuple({1.0});
  other.Put(Text("right"));
  EXPECT_TRUE(mixed != other);
  EXPECT_TRUE(mixed == mixed);
}

TEST(OmuPrimTuple, NaNIsUnequalEvenToItself) {
  const omu_PrimTuple tuple = Tuple({std::numeric_limits<double>::quiet_NaN()});
  EXPECT_FALSE(tuple == tuple);
}

TEST(OmuPrimTuple, AccessToAnAbsentElementThrows) {
  omu_PrimTuple tuple = Tuple({1.0});
  tuple.Put(Text("left"));
  EXPECT_THROW(tuple.Number(1), nex_CommandException);
  EXPECT_THROW(tuple.Primitive(0), nex_CommandException);
  EXPECT_THROW(tuple.Number(2), nex_CommandException);
  EXPECT_THROW(static_cast<void>(tuple.IsNumber(2)), nex_CommandException);
}

TEST(OmuPrimTuple, TextHasTheFewestDigitsThatReadBack) {
  EXPECT_STREQ(Tuple({0.6, 0.0, 0.8}).AsString().CStr(), "(0.6, 0.0, 0.8)");
  EXPECT_STREQ(Tuple({1.0 / 3.0, -2.0, 1e300, 1e-7}).AsString().CStr(),
               "(0.3333333333333333, -2.0, 1e+300, 1e-07)");
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_STREQ(Tuple({infinity, -infinity}).AsString().CStr(), "(inf, -inf)");
}

TEST(OmuPrimTuple, TextShowsTheKindAndNesting) {
  EXPECT_STREQ(Tuple({}).AsString().CStr(), "()");
  EXPECT_STREQ(Tuple({1.0}).AsString().CStr(), "(1.0,)");
  EXPECT_STREQ(Tuple({1.0}, '[').AsString().CStr(), "[1.0]");
  EXPECT_STREQ(Tuple({1.0}, '{').AsString().CStr(), "{1.0}");
  EXPECT_STREQ(Tuple({1.0}, '|').AsString().CStr(), "|1.0|");
  omu_PrimTuple nested = Tuple({1.0});
  nested.Put(Tuple({2.0, 3.0}, '['));
  nested.Put(Text("left"));
  EXPECT_STREQ(nested.AsString().CStr(), "(1.0, [2.0, 3.0], left)");
  EXPECT_STREQ(nested.AsString(1).CStr(), "(1.0, [2.0, 3.0], styled)");
}

} // namespace
