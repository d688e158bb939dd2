#include "omu_Primitive.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

class Number : public omu_Primitive {
public:
  explicit Number(int number) : value(number) {}
  ~Number() override { ++destroyed; }
  bool operator==(const omu_Primitive& other) const override {
    const auto* const that = dynamic_cast<const Number*>(&other);
    return that != nullptr && that->value == value;
  }
  Number* Copy() const override { return new Number(*this); }
  cow_String AsString(int) const override { return "number"; }

  static int destroyed;
  int value;
};

int Number::destroyed = 0;

class Nothing : public omu_Primitive {
public:
  bool operator==(const omu_Primitive&) const override { return false; }
  Nothing* Copy() const override { return new Nothing(*this); }
  cow_String AsString(int) const override { return ""; }
};

} // namespace

TEST(OmuPrimitive, ObjectsOfAnyTwoClassesCompareAsTheFirstDoes) {
  EXPECT_TRUE(Number(1) == Number(1));
  EXPECT_FALSE(Number(1) == Number(2));
  EXPECT_TRUE(Number(1) != Number(2));
  EXPECT_FALSE(Number(1) == Nothing());
  EXPECT_FALSE(Nothing() == Nothing());
}

TEST(OmuPrimitive, CopyIsDestroyedThroughTheBase) {
  const Number one(1);
  Number::destroyed = 0;
  {
    const omu_Primitive& base = one;
    const std::unique_ptr<omu_Primitive> copy(base.Copy());
    EXPECT_TRUE(*copy == one);
  }
  EXPECT_EQ(Number::destroyed, 1);
}
