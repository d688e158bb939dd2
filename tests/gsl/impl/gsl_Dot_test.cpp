#include "gsl_Dot.h"

#include "CountedDot.h"
#include "FailingAllocation.h"
#include "FeatureList.h"
#include "Numbers.h"
#include "VirtualSlot.h"

#include <gtest/gtest.h>
#include <memory>
#include <type_traits>

namespace {

void ExpectAt(const gsl_Dot& dot, double x, double y, double z) {
  EXPECT_XYZ(dot.GetPoint(), x, y, z);
}

TEST(GslDot, DefaultIsMadeFromAPointAtTheOriginWithoutAnEntity) {
  const gsl_Dot dot;
  ExpectAt(dot, 0.0, 0.0, 0.0);
  EXPECT_EQ(dot.GetMethod(), gsl_FROM_POINT);
  EXPECT_EQ(dot.GetInstanceId(), 0);
  EXPECT_EQ(dot.GetEntityId(), -1);
  EXPECT_EQ(dot.OwnerFeatID(), 0);
  EXPECT_FALSE(dot.Uid().IsNull());
}

TEST(GslDot, CoordinatesMakeAPointDot) {
  const gsl_Dot dot(1.5, -2.5, 3.5);
  ExpectAt(dot, 1.5, -2.5, 3.5);
  EXPECT_EQ(dot.GetMethod(), gsl_FROM_POINT);
  EXPECT_EQ(dot.GetInstanceId(), 0);
  EXPECT_EQ(dot.GetEntityId(), -1);
}

TEST(GslDot, PointIsCopiedWithItsIdentityAndTheDotHasOneOfItsOwn) {
  const gsl_Point p(1.0, 2.0, 3.0);
  const gsl_Dot dot(p);
  ExpectAt(dot, 1.0, 2.0, 3.0);
  EXPECT_EQ(dot.GetPoint().uid, p.uid);
  EXPECT_NE(dot.Uid(), p.uid);
  EXPECT_EQ(dot.GetMethod(), gsl_FROM_POINT);
  EXPECT_EQ(dot.GetInstanceId(), 0);
  EXPECT_EQ(dot.GetEntityId(), -1);
}

TEST(GslDot, NodeDotTakesInstanceThenEntityAndWaitsAtTheOrigin) {
  const gsl_Dot dot(7, 42);
  EXPECT_EQ(dot.GetMethod(), gsl_FROM_NODE);
  EXPECT_EQ(static_cast<int>(dot.GetMethod()), 10);
  EXPECT_EQ(dot.GetInstanceId(), 7);
  EXPECT_EQ(dot.GetEntityId(), 42);
  ExpectAt(dot, 0.0, 0.0, 0.0);
}

TEST(GslDot, CopyConstructorKeepsEverythingAndTheIdentity) {
  gsl_Dot dot(7, 42);
  dot.SetValues(1.0, 2.0, 3.0);
  const gsl_Dot copy(dot);
  ExpectAt(copy, 1.0, 2.0, 3.0);
  EXPECT_EQ(copy.GetMethod(), gsl_FROM_NODE);
  EXPECT_EQ(copy.GetInstanceId(), 7);
  EXPECT_EQ(copy.GetEntityId(), 42);
  EXPECT_EQ(copy.Uid(), dot.Uid());
  EXPECT_EQ(copy.GetPoint().uid, dot.GetPoint().uid);
}

TEST(GslDot, AssignmentTakesEverythingAndTheIdentity) {
  const gsl_Dot dot(7, 42);
  gsl_Dot other(9.0, 9.0, 9.0);
  other = dot;
  ExpectAt(other, 0.0, 0.0, 0.0);
  EXPECT_EQ(other.GetMethod(), gsl_FROM_NODE);
  EXPECT_EQ(other.GetInstanceId(), 7);
  EXPECT_EQ(other.GetEntityId(), 42);
  EXPECT_EQ(other.Uid(), dot.Uid());
  EXPECT_EQ(other.GetPoint().uid, dot.GetPoint().uid);
}

TEST(GslDot, CopyIsAHeapObjectWithTheSameIdentity) {
  const gsl_Dot dot(1.0, 2.0, 3.0);
  const std::unique_ptr<gsl_Dot> copy(dot.Copy());
  ASSERT_NE(copy, nullptr);
  EXPECT_NE(copy.get(), &dot);
  ExpectAt(*copy, 1.0, 2.0, 3.0);
  EXPECT_EQ(copy->Uid(), dot.Uid());
}

TEST(GslDot, EveryOtherConstructorAllocatesAnIdentity) {
  const gsl_Point p;
  const gsl_Dot dots[] = {gsl_Dot(),     gsl_Dot(p),   gsl_Dot(p), gsl_Dot(0.0, 0.0, 0.0),
                          gsl_Dot(0, 0), gsl_Dot(0, 0)};
  for (const gsl_Dot& a : dots) {
    EXPECT_FALSE(a.Uid().IsNull());
    for (const gsl_Dot& b : dots) {
      if (&a == &b) continue;
      EXPECT_NE(a.Uid(), b.Uid());
    }
  }
}

TEST(GslDot, CopyReturnsNullWithoutMemory) {
  const gsl_Dot dot(1.0, 2.0, 3.0);
  const FailingAllocation failing(0);
  EXPECT_EQ(dot.Copy(), nullptr);
  EXPECT_EQ(failing.Refused(), 1);
}

TEST(GslDot, SetValuesKeepsMethodIdsAndIdentities) {
  gsl_Dot dot(7, 42);
  const cls_Uid uid = dot.Uid();
  const cls_Uid pointUid = dot.GetPoint().uid;
  dot.SetValues(-1.0, 0.5, 8.0);
  ExpectAt(dot, -1.0, 0.5, 8.0);
  EXPECT_EQ(dot.GetMethod(), gsl_FROM_NODE);
  EXPECT_EQ(dot.GetInstanceId(), 7);
  EXPECT_EQ(dot.GetEntityId(), 42);
  EXPECT_EQ(dot.Uid(), uid);
  EXPECT_EQ(dot.GetPoint().uid, pointUid);
}

TEST(GslDot, RegenerateIsTrueAndChangesNothing) {
  gsl_Dot dot(1.0, 2.0, 3.0);
  EXPECT_TRUE(dot.Regenerate(nullptr));
  EXPECT_TRUE(dot.Regenerate(UnreadableList()));
  ExpectAt(dot, 1.0, 2.0, 3.0);
}

TEST(GslDot, ExtensionPointsDoNothingHere) {
  gsl_Dot dot(1.0, 2.0, 3.0);
  EXPECT_FALSE(dot.ExtensionPoint1(nullptr));
  EXPECT_FALSE(dot.ExtensionPoint1(&dot));
  EXPECT_EQ(dot.NumOwnerFeatures(), 0);
  EXPECT_EQ(dot.OwnerFeatureId(0), 0);
  EXPECT_EQ(dot.OwnerFeatureId(-3), 0);
  dot.ExtensionPoint2(4.0, 5.0, 6.0);
  dot.ExtensionPoint3(&dot, &dot, &dot);
  ExpectAt(dot, 1.0, 2.0, 3.0);
}

/// Owned by features 31, 32, ... of the given number.
class OwnedDot : public gsl_Dot {
public:
  explicit OwnedDot(int features) : count(features) {}
  int NumOwnerFeatures() const override { return count; }
  int OwnerFeatureId(int index) const override {
    asked = true;
    return 31 + index;
  }

  mutable bool asked = false;

private:
  int count;
};

TEST(GslDot, OwnerFeatIDIsTheFirstOwnerOfADerivedDot) {
  for (const int features : {1, 2}) {
    const OwnedDot dot(features);
    EXPECT_EQ(dot.OwnerFeatID(), 31);
  }
}

TEST(GslDot, OwnerFeatIDOfADotWithoutOwnersIsZeroWithoutAsking) {
  for (const int features : {0, -1}) {
    const OwnedDot dot(features);
    EXPECT_EQ(dot.OwnerFeatID(), 0);
    EXPECT_FALSE(dot.asked);
  }
}

TEST(GslDot, DerivedDotKeepsItsTypeThroughCopyAndIsDeletedThroughTheBase) {
  const int before = CountedDot::live;
  {
    const CountedDot dot(gsl_Point(1.0, 2.0, 3.0), 5);
    const gsl_Dot& base = dot;
    const std::unique_ptr<gsl_Dot> copy(base.Copy());
    EXPECT_EQ(CountedDot::live, before + 2);
    const auto* const derived = dynamic_cast<const CountedDot*>(copy.get());
    ASSERT_NE(derived, nullptr);
    EXPECT_EQ(derived->mark, 5);
    EXPECT_EQ(derived->Uid(), dot.Uid());
  }
  EXPECT_EQ(CountedDot::live, before);
}

TEST(GslDot, TypeIdIsFixed) {
  EXPECT_EQ(gsl_Dot::TypeId(), 0x030A0005u);
  EXPECT_EQ(gsl_Dot::TypeId(), 50987013u);
  EXPECT_EQ(gsl_Dot().DynTypeId(), gsl_Dot::TypeId());
}

TEST(GslDot, FieldsFollowTheIdentityInTheirOrder) {
  const gsl_Dot dot;
  const void* const uid = &dot.Uid();
  const void* const point = &dot.GetPoint();
  EXPECT_LT(uid, point);
  // Method and two ids follow, 32 bits each.
  EXPECT_EQ(sizeof(gsl_DotMethod), 4u);
  EXPECT_GE(sizeof(gsl_Dot), sizeof(void*) + sizeof(cls_Uid) + sizeof(gsl_Point) + 12u);
}

TEST(GslDot, VirtualOperationsKeepTheirSlots) {
  static_assert(std::has_virtual_destructor_v<gsl_Dot>, "hosts delete through the base");
  EXPECT_EQ(VirtualSlot(&gsl_Dot::Copy), 2);
  EXPECT_EQ(VirtualSlot(&gsl_Dot::Regenerate), 3);
  EXPECT_EQ(VirtualSlot(&gsl_Dot::GetEntityId), 4);
  EXPECT_EQ(VirtualSlot(&gsl_Dot::ExtensionPoint1), 5);
  EXPECT_EQ(VirtualSlot(&gsl_Dot::NumOwnerFeatures), 6);
  EXPECT_EQ(VirtualSlot(&gsl_Dot::OwnerFeatureId), 7);
  EXPECT_EQ(VirtualSlot(&gsl_Dot::ExtensionPoint2), 8);
  EXPECT_EQ(VirtualSlot(&gsl_Dot::ExtensionPoint3), 9);
  EXPECT_EQ(VirtualSlot(&gsl_Dot::DynTypeId), 10);
  EXPECT_EQ(VirtualSlot(&gsl_Dot::DBWrite), 11);
}

} // namespace
