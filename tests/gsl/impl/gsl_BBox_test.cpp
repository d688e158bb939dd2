#include "gsl_BBox.h"

#include "Numbers.h"
#include "RandomNumbers.h"
#include "ScopedSettings.h"
#include "TestScale.h"
#include "VirtualSlot.h"
#include "gsl_Matrix.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <sstream>
#include <type_traits>

namespace {

using numbers::kInfinity;
using numbers::kNaN;

gsl_BBox BoxOf(const gsl_Point& a, const gsl_Point& b) {
  gsl_BBox box;
  box.Add(a);
  box.Add(b);
  return box;
}

gsl_Matrix RotationAbout(const gsl_Vector& axis, double angle) {
  gsl_Matrix m;
  m.AxisRotation(gsl_Point(), axis, angle);
  return m;
}

TEST(GslBBox, NewBoxIsEmpty) {
  const gsl_BBox box;
  EXPECT_TRUE(box.IsEmpty());
  EXPECT_XYZ(box.min, 0.0, 0.0, 0.0);
  EXPECT_XYZ(box.max, -1.0, -1.0, -1.0);
  EXPECT_EQ(box.Size(), -1.0);
  EXPECT_EQ(box.XLen(), -1.0);
  EXPECT_EQ(box.YLen(), -1.0);
  EXPECT_EQ(box.ZLen(), -1.0);
  EXPECT_XYZ(box.Diag(), 0.0, 0.0, 0.0);
  EXPECT_EQ(box.Diag().magnitude, 0.0);
  EXPECT_FALSE(box.Uid().IsNull());
}

TEST(GslBBox, EmptyBoxHasACentre) {
  gsl_BBox box;
  EXPECT_XYZ(box.Center(), -0.5, -0.5, -0.5);
}

TEST(GslBBox, OnePointMakesABoxThatIsNotEmpty) {
  const gsl_Point p(1.5, -2.0, 3.0);
  gsl_BBox box;
  box.Add(p);
  EXPECT_FALSE(box.IsEmpty());
  EXPECT_XYZ(box.min, 1.5, -2.0, 3.0);
  EXPECT_XYZ(box.max, 1.5, -2.0, 3.0);
  EXPECT_EQ(box.min.uid, p.uid);
  EXPECT_EQ(box.max.uid, p.uid);
  EXPECT_EQ(box.Size(), 0.0);
  EXPECT_EQ(box.XLen(), 0.0);
}

TEST(GslBBox, PointOutsideGrowsOnlyTheAxesItIsBeyond) {
  gsl_BBox box = BoxOf({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  box.Add(gsl_Point(-0.5, 2.0, 0.0));
  EXPECT_XYZ(box.min, -0.5, 0.0, 0.0);
  EXPECT_XYZ(box.max, 1.0, 2.0, 1.0);
}

TEST(GslBBox, GrowingKeepsTheIdentitiesOfCornersAndBox) {
  const gsl_Point first(0.0, 0.0, 0.0);
  gsl_BBox box;
  const cls_Uid uid = box.Uid();
  box.Add(first);
  box.Add(gsl_Point(5.0, 5.0, 5.0));
  box.Add(gsl_Point(-5.0, -5.0, -5.0));
  EXPECT_EQ(box.min.uid, first.uid);
  EXPECT_EQ(box.max.uid, first.uid);
  EXPECT_EQ(box.Uid(), uid);
}

TEST(GslBBox, BoxMayGrowByItsOwnCorner) {
  gsl_BBox box = BoxOf({0.0, 0.0, 0.0}, {1.0, 2.0, 3.0});
  box.Add(box.min);
  box.Add(box.max);
  EXPECT_XYZ(box.min, 0.0, 0.0, 0.0);
  EXPECT_XYZ(box.max, 1.0, 2.0, 3.0);
  gsl_BBox empty;
  empty.Add(empty.max);
  EXPECT_XYZ(empty.min, -1.0, -1.0, -1.0);
  EXPECT_XYZ(empty.max, -1.0, -1.0, -1.0);
}

/// The rule of Add, one coordinate after the other. The corner of an empty box becomes the point.
void AddByTheRule(double (&low)[3], double (&high)[3], const double (&p)[3]) {
  const bool isEmpty = low[0] > high[0] || low[1] > high[1] || low[2] > high[2];
  for (int k = 0; k < 3; ++k) {
    if (isEmpty || p[k] < low[k]) low[k] = p[k];
    if (isEmpty || p[k] > high[k]) high[k] = p[k];
  }
}

TEST(GslBBox, AddingAPointFollowsTheRuleForEveryKindOfNumber) {
  constexpr std::uint64_t kSeed = 20261123;
  RandomNumbers random(kSeed);
  const double kinds[] = {-kInfinity, -1.0, -0.0, 0.0, 0.5, 1.0, kInfinity, kNaN};
  const auto any = [&] {
    const double x = kinds[random.Below(8)];
    const double y = kinds[random.Below(8)];
    return gsl_Point(x, y, kinds[random.Below(8)]);
  };
  for (int i = 0; i < Scaled(200000); ++i) {
    gsl_BBox box;
    box.min = any();
    box.max = any();
    const gsl_Point other = any();
    const gsl_Point* const points[] = {&other, &box.min, &box.max};
    const gsl_Point& p = *points[random.Below(3)];
    double low[3] = {box.min.x, box.min.y, box.min.z};
    double high[3] = {box.max.x, box.max.y, box.max.z};
    AddByTheRule(low, high, {p.x, p.y, p.z});
    box.Add(p);
    for (unsigned int k = 0; k < 3; ++k) {
      ASSERT_EQ(numbers::Bits(box.min[k]), numbers::Bits(low[k])) << "seed " << kSeed << ", " << i;
      ASSERT_EQ(numbers::Bits(box.max[k]), numbers::Bits(high[k])) << "seed " << kSeed << ", " << i;
    }
  }
}

TEST(GslBBox, PointWithinTheCornersOfABoxThatIsEmptyOnAnotherAxisReplacesThem) {
  gsl_BBox box;
  box.min = gsl_Point(2.0, 0.0, 0.0);
  box.max = gsl_Point(1.0, 1.0, 1.0);
  // A NaN is within no corners, so the test for an empty box comes.
  box.Add(gsl_Point(kNaN, 0.5, 0.5));
  EXPECT_TRUE(std::isnan(box.min.x));
  EXPECT_EQ(box.min.y, 0.5);
  EXPECT_EQ(box.max.z, 0.5);
}

TEST(GslBBox, AddingAnEmptyBoxChangesNothing) {
  gsl_BBox box = BoxOf({0.0, 0.0, 0.0}, {1.0, 2.0, 3.0});
  box.Add(gsl_BBox());
  EXPECT_XYZ(box.min, 0.0, 0.0, 0.0);
  EXPECT_XYZ(box.max, 1.0, 2.0, 3.0);
  // A box without the corners of the empty state does not change either.
  gsl_BBox away = BoxOf({5.0, 5.0, 5.0}, {6.0, 6.0, 6.0});
  away.Add(gsl_BBox());
  EXPECT_XYZ(away.min, 5.0, 5.0, 5.0);
  EXPECT_XYZ(away.max, 6.0, 6.0, 6.0);
  gsl_BBox empty;
  const cls_Uid corner = empty.min.uid;
  empty.Add(gsl_BBox());
  EXPECT_TRUE(empty.IsEmpty());
  EXPECT_EQ(empty.min.uid, corner);
}

TEST(GslBBox, EmptyBoxTakesTheCornersOfAnotherButNotItsIdentity) {
  const gsl_BBox box = BoxOf({0.0, 0.0, 0.0}, {1.0, 2.0, 3.0});
  gsl_BBox grown;
  const cls_Uid uid = grown.Uid();
  grown.Add(box);
  EXPECT_XYZ(grown.min, 0.0, 0.0, 0.0);
  EXPECT_XYZ(grown.max, 1.0, 2.0, 3.0);
  EXPECT_EQ(grown.min.uid, box.min.uid);
  EXPECT_EQ(grown.max.uid, box.max.uid);
  EXPECT_EQ(grown.Uid(), uid);
}

TEST(GslBBox, AddingABoxUnites) {
  gsl_BBox box = BoxOf({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  box.Add(BoxOf({-1.0, 0.5, 0.5}, {0.5, 4.0, 0.75}));
  EXPECT_XYZ(box.min, -1.0, 0.0, 0.0);
  EXPECT_XYZ(box.max, 1.0, 4.0, 1.0);
}

TEST(GslBBox, EmptyMeansMinBeyondMaxOnAnyAxis) {
  for (unsigned int axis = 0; axis < 3; ++axis) {
    gsl_BBox box = BoxOf({1.0, 1.0, 1.0}, {2.0, 2.0, 2.0});
    box.max[axis] = 1.0;
    EXPECT_FALSE(box.IsEmpty()) << axis;
    box.max[axis] = numbers::Below(1.0);
    EXPECT_TRUE(box.IsEmpty()) << axis;
    EXPECT_EQ(box.Size(), -1.0);
    EXPECT_EQ(box.Diag().magnitude, 0.0);
    box.Add(gsl_Point(7.0, 8.0, 9.0));
    EXPECT_XYZ(box.min, 7.0, 8.0, 9.0);
    EXPECT_XYZ(box.max, 7.0, 8.0, 9.0);
  }
}

TEST(GslBBox, VacateRestoresTheEmptyState) {
  gsl_BBox box = BoxOf({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  EXPECT_FALSE(box.IsEmpty());
  box.Vacate();
  EXPECT_TRUE(box.IsEmpty());
  EXPECT_XYZ(box.min, 0.0, 0.0, 0.0);
  EXPECT_XYZ(box.max, -1.0, -1.0, -1.0);
}

TEST(GslBBox, CornersComeFirstAndTheIdentityLast) {
  const gsl_BBox box;
  EXPECT_LT(static_cast<const void*>(&box.min), static_cast<const void*>(&box.max));
  EXPECT_LT(static_cast<const void*>(&box.max), static_cast<const void*>(&box.Uid()));
}

TEST(GslBBox, VacateKeepsIdentities) {
  gsl_BBox box = BoxOf({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  const gsl_BBox before(box);
  box.Vacate();
  EXPECT_EQ(box.Uid(), before.Uid());
  EXPECT_EQ(box.min.uid, before.min.uid);
  EXPECT_EQ(box.max.uid, before.max.uid);
}

TEST(GslBBox, CopyAndAssignmentTakeCornersAndIdentities) {
  const gsl_BBox box = BoxOf({0.0, 0.0, 0.0}, {1.0, 2.0, 3.0});
  const gsl_BBox copy(box);
  gsl_BBox assigned;
  gsl_BBox& result = (assigned = box);
  EXPECT_EQ(&result, &assigned);
  for (const gsl_BBox* const b : {&copy, static_cast<const gsl_BBox*>(&assigned)}) {
    EXPECT_XYZ(b->min, 0.0, 0.0, 0.0);
    EXPECT_XYZ(b->max, 1.0, 2.0, 3.0);
    EXPECT_EQ(b->Uid(), box.Uid());
    EXPECT_EQ(b->min.uid, box.min.uid);
    EXPECT_EQ(b->max.uid, box.max.uid);
  }
}

TEST(GslBBox, BoxesThatTouchAlongAFaceIntersect) {
  const gsl_BBox box = BoxOf({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  EXPECT_TRUE(box.Intersect(BoxOf({1.0, 0.0, 0.0}, {2.0, 1.0, 1.0})));
  EXPECT_FALSE(box.Intersect(BoxOf({1.001, 0.0, 0.0}, {2.0, 1.0, 1.0})));
  EXPECT_FALSE(box.Intersect(BoxOf({0.0, 1.001, 0.0}, {1.0, 2.0, 1.0})));
  EXPECT_FALSE(box.Intersect(BoxOf({0.0, 0.0, -2.0}, {1.0, 1.0, -0.001})));
}

TEST(GslBBox, IntersectHasNoTolerance) {
  const gsl_BBox box = BoxOf({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  const double above = numbers::Above(1.0);
  EXPECT_FALSE(box.Intersect(BoxOf({above, 0.0, 0.0}, {above, 1.0, 1.0})));
  EXPECT_TRUE(box.Intersect(BoxOf({1.0, 1.0, 1.0}, {1.0, 1.0, 1.0})));
}

TEST(GslBBox, EmptyBoxIntersectsNothingNotEvenAnEmptyOne) {
  const gsl_BBox empty;
  const gsl_BBox box = BoxOf({-9.0, -9.0, -9.0}, {9.0, 9.0, 9.0});
  EXPECT_FALSE(empty.Intersect(box));
  EXPECT_FALSE(box.Intersect(empty));
  EXPECT_FALSE(empty.Intersect(gsl_BBox()));
  EXPECT_FALSE(empty.Intersect(empty));
  EXPECT_TRUE(box.Intersect(box));
}

TEST(GslBBox, EmptyBoxCountsMinusOneWhichHugeExtentsHide) {
  // An extent of 2^54 minus 1 rounds to 2^54. An extent of 2^53 minus 1 is exact.
  const gsl_BBox empty;
  const double lost = std::ldexp(1.0, 54);
  const double kept = std::ldexp(1.0, 53);
  const gsl_BBox huge = BoxOf({lost, lost, lost}, {2.0 * lost, 2.0 * lost, 2.0 * lost});
  EXPECT_TRUE(huge.Intersect(empty));
  EXPECT_TRUE(empty.Intersect(huge));
  const gsl_BBox large = BoxOf({0.0, 0.0, 0.0}, {lost, lost, kept});
  EXPECT_FALSE(large.Intersect(empty));
  EXPECT_FALSE(empty.Intersect(large));
}

TEST(GslBBox, IntersectLeavesBothAlone) {
  const gsl_BBox a = BoxOf({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  const gsl_BBox b = BoxOf({5.0, 5.0, 5.0}, {6.0, 6.0, 6.0});
  EXPECT_FALSE(a.Intersect(b));
  EXPECT_XYZ(a.max, 1.0, 1.0, 1.0);
  EXPECT_XYZ(b.min, 5.0, 5.0, 5.0);
}

TEST(GslBBox, RotationEnlargesToHoldEveryCorner) {
  gsl_BBox box = BoxOf({-1.0, -1.0, 0.0}, {1.0, 1.0, 0.0});
  box.Transform(RotationAbout({0.0, 0.0, 1.0}, std::acos(-1.0) / 4.0));
  EXPECT_XYZ_NEAR(box.min, -std::sqrt(2.0), -std::sqrt(2.0), 0.0, 1e-15);
  EXPECT_XYZ_NEAR(box.max, std::sqrt(2.0), std::sqrt(2.0), 0.0, 1e-15);
}

TEST(GslBBox, TranslationMovesTheBox) {
  gsl_Matrix m;
  m.SetTranslation({10.0, 20.0, 30.0});
  gsl_BBox box = BoxOf({0.0, 0.0, 0.0}, {1.0, 2.0, 4.0});
  box.Transform(m);
  EXPECT_XYZ(box.min, 10.0, 20.0, 30.0);
  EXPECT_XYZ(box.max, 11.0, 22.0, 34.0);
}

TEST(GslBBox, TransformGoesThroughTheCentreAndHalfTheDiagonal) {
  // The centre of 1 and 2^53 rounds to 2^52, half the extent is 2^52 - 0.5.
  const double large = std::ldexp(1.0, 53);
  gsl_BBox box = BoxOf({1.0, 1.0, 1.0}, {large, 1.0, 1.0});
  box.Transform(gsl_Matrix());
  EXPECT_XYZ(box.min, 0.5, 1.0, 1.0);
  EXPECT_XYZ(box.max, large, 1.0, 1.0);
}

TEST(GslBBox, TransformOfAnEmptyBoxChangesNothing) {
  gsl_Matrix m;
  m.SetTranslation({10.0, 20.0, 30.0});
  gsl_BBox box;
  const gsl_BBox before(box);
  box.Transform(m);
  EXPECT_TRUE(box.IsEmpty());
  EXPECT_XYZ(box.min, 0.0, 0.0, 0.0);
  EXPECT_XYZ(box.max, -1.0, -1.0, -1.0);
  EXPECT_EQ(box.Uid(), before.Uid());
  EXPECT_EQ(box.min.uid, before.min.uid);
}

TEST(GslBBox, TransformedBoxIsANewBoxWhoseCornersShareAnIdentity) {
  gsl_BBox box = BoxOf({0.0, 0.0, 0.0}, {1.0, 2.0, 4.0});
  const gsl_BBox before(box);
  box.Transform(gsl_Matrix());
  EXPECT_NE(box.Uid(), before.Uid());
  EXPECT_EQ(box.min.uid, box.max.uid);
  EXPECT_NE(box.min.uid, before.min.uid);
  EXPECT_NE(box.min.uid, box.Uid());
}

TEST(GslBBox, LengthsSizeCentreAndDiagonal) {
  const gsl_BBox box = BoxOf({1.0, 2.0, 3.0}, {3.0, 5.0, 9.0});
  EXPECT_EQ(box.XLen(), 2.0);
  EXPECT_EQ(box.YLen(), 3.0);
  EXPECT_EQ(box.ZLen(), 6.0);
  EXPECT_EQ(box.Size(), 7.0);
  EXPECT_XYZ(box.Center(), 2.0, 3.5, 6.0);
  EXPECT_XYZ(box.Diag(), 2.0, 3.0, 6.0);
  EXPECT_EQ(box.Diag().magnitude, 7.0);
  EXPECT_NE(box.Center().uid, box.min.uid);
}

TEST(GslBBox, ExtentIsTheSphereAboutTheBox) {
  const g3d_Sphere sphere = BoxOf({0.0, 0.0, 0.0}, {2.0, 0.0, 0.0}).GetExtent();
  EXPECT_EQ(sphere.Centre(), g3d_Point(1.0f, 0.0f, 0.0f, 1.0f));
  EXPECT_EQ(sphere.Radius(), 1.0f);
}

TEST(GslBBox, ExtentIsRoundedToSinglePrecision) {
  const g3d_Sphere sphere = BoxOf({0.1, 0.2, 0.3}, {0.1, 0.2, 0.5}).GetExtent();
  EXPECT_EQ(sphere.Centre().x, static_cast<float>(0.1));
  EXPECT_EQ(sphere.Centre().y, static_cast<float>(0.2));
  EXPECT_EQ(sphere.Centre().z, static_cast<float>(0.4));
  EXPECT_EQ(sphere.Radius(), static_cast<float>(0.1));
}

TEST(GslBBox, ExtentBeyondSinglePrecisionIsInfinite) {
  const g3d_Sphere sphere = BoxOf({-1e200, 0.0, 0.0}, {1e100, 0.0, 0.0}).GetExtent();
  EXPECT_EQ(sphere.Centre().x, -std::numeric_limits<float>::infinity());
  EXPECT_EQ(sphere.Centre().y, 0.0f);
  EXPECT_EQ(sphere.Radius(), std::numeric_limits<float>::infinity());
}

TEST(GslBBox, ExtentOfAnEmptyBoxHasANegativeRadius) {
  const g3d_Sphere sphere = gsl_BBox().GetExtent();
  EXPECT_EQ(sphere.Centre(), g3d_Point(-0.5f, -0.5f, -0.5f, 1.0f));
  EXPECT_EQ(sphere.Radius(), -0.5f);
}

TEST(GslBBox, BoxesAreEqualWhenTheirCornersAre) {
  const ScopedSettings settings;
  settings->zeroTolerance = 0.25;
  const gsl_BBox box = BoxOf({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
  EXPECT_TRUE(box == box);
  EXPECT_TRUE(box == BoxOf({0.5, 0.0, 0.0}, {1.0, 1.0, 1.0}));
  EXPECT_FALSE(box == BoxOf({numbers::Above(0.5), 0.0, 0.0}, {1.0, 1.0, 1.0}));
  EXPECT_TRUE(box != BoxOf({0.0, 0.0, 0.0}, {1.0, 1.0, 1.6}));
  EXPECT_TRUE(gsl_BBox() == gsl_BBox());
}

TEST(GslBBox, BoxOfNaNEqualsOnlyItself) {
  gsl_BBox box;
  box.Add(gsl_Point(kNaN, 0.0, 0.0));
  const gsl_BBox copy(box);
  EXPECT_TRUE(box == box);
  EXPECT_FALSE(box == copy);
}

TEST(GslBBox, NaNStaysWhereItEnteredFirstAndIsIgnoredLater) {
  gsl_BBox first;
  first.Add(gsl_Point(kNaN, 1.0, 1.0));
  EXPECT_FALSE(first.IsEmpty());
  first.Add(gsl_Point(5.0, 5.0, 5.0));
  EXPECT_TRUE(std::isnan(first.min.x));
  EXPECT_TRUE(std::isnan(first.max.x));
  EXPECT_EQ(first.max.y, 5.0);
  for (unsigned int axis = 0; axis < 3; ++axis) {
    gsl_Point p(5.0, 5.0, 5.0);
    p[axis] = kNaN;
    gsl_BBox later = BoxOf({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
    later.Add(p);
    EXPECT_XYZ(later.min, 0.0, 0.0, 0.0);
    for (unsigned int i = 0; i < 3; ++i)
      EXPECT_EQ(later.max[i], i == axis ? 1.0 : 5.0) << axis;
    p = gsl_Point(-5.0, -5.0, -5.0);
    p[axis] = kNaN;
    later.Add(BoxOf(p, p));
    for (unsigned int i = 0; i < 3; ++i)
      EXPECT_EQ(later.min[i], i == axis ? 0.0 : -5.0) << axis;
  }
}

TEST(GslBBox, InfiniteCornersAreKept) {
  gsl_BBox box = BoxOf({-kInfinity, 0.0, 0.0}, {kInfinity, 1.0, 1.0});
  EXPECT_EQ(box.Size(), kInfinity);
  EXPECT_TRUE(std::isnan(box.Center().x));
  box.Transform(gsl_Matrix());
  EXPECT_FALSE(box.IsEmpty());
}

TEST(GslBBox, PrintsMinThenMax) {
  std::ostringstream out;
  BoxOf({0.0, -0.5, 3.0}, {1.0, 2.0, 4.0}).Print(out, 2);
  EXPECT_EQ(out.str(), "  x:\t0\ty:\t-0.5\tz:\t3\n  x:\t1\ty:\t2\tz:\t4\n");
}

TEST(GslBBox, WritingIsTheOnlyVirtualOperation) {
  EXPECT_FALSE(std::has_virtual_destructor_v<gsl_BBox>);
  EXPECT_EQ(VirtualSlot(&gsl_BBox::DBWrite), 0);
  EXPECT_EQ(VirtualSlot(&gsl_BBox::DynTypeId), -1);
  EXPECT_EQ(gsl_BBox().DynTypeId(), 0x030A0007u);
}

TEST(GslBBox, TypeIdIsFixed) {
  EXPECT_EQ(gsl_BBox::TypeId(), 0x030A0007u);
}

bool Holds(const gsl_BBox& box, const gsl_Point& p, double slack) {
  for (unsigned int i = 0; i < 3; ++i) {
    if (p[i] < box.min[i] - slack || p[i] > box.max[i] + slack) return false;
  }
  return true;
}

gsl_Point AnyPoint(RandomNumbers& random, double size) {
  const double x = random.In(-size, size);
  const double y = random.In(-size, size);
  return {x, y, random.In(-size, size)};
}

gsl_Matrix AnyRigidTransform(RandomNumbers& random) {
  const gsl_Point p = AnyPoint(random, 3.0);
  const gsl_Point axis = AnyPoint(random, 1.0);
  gsl_Matrix m;
  m.AxisRotation(p, gsl_Vector(axis.x, axis.y, axis.z), random.In(-4.0, 4.0));
  return m;
}

TEST(GslBBox, TransformedBoxHoldsTransformedCornersAndInteriorPoints) {
  const std::uint64_t seed = 90125;
  RandomNumbers random(seed);
  for (long i = 0; i < Scaled(20000); ++i) {
    const double size = std::pow(10.0, random.In(-3.0, 5.0));
    const gsl_BBox box = BoxOf(AnyPoint(random, size), AnyPoint(random, size));
    const gsl_Matrix m = AnyRigidTransform(random);
    gsl_BBox moved(box);
    moved.Transform(m);
    const double slack = 1e-14 * (size + 10.0);
    for (int k = 0; k < 28; ++k) {
      double f[3];
      for (int axis = 0; axis < 3; ++axis)
        f[axis] = k < 8 ? (k >> axis) & 1 : random.Unit();
      gsl_Point p(box.min.x + f[0] * box.XLen(), box.min.y + f[1] * box.YLen(),
                  box.min.z + f[2] * box.ZLen());
      p.Transform(m);
      ASSERT_TRUE(Holds(moved, p, slack)) << "seed " << seed << ", box " << i << ", point " << k;
    }
  }
}

TEST(GslBBox, TransformedBoxTouchesATransformedCornerOnEverySide) {
  const std::uint64_t seed = 5150;
  RandomNumbers random(seed);
  for (long i = 0; i < Scaled(5000); ++i) {
    const gsl_BBox box = BoxOf(AnyPoint(random, 2.0), AnyPoint(random, 2.0));
    const gsl_Matrix m = AnyRigidTransform(random);
    gsl_BBox moved(box);
    moved.Transform(m);
    gsl_BBox corners;
    for (int k = 0; k < 8; ++k) {
      gsl_Point p((k & 1) != 0 ? box.max.x : box.min.x, (k & 2) != 0 ? box.max.y : box.min.y,
                  (k & 4) != 0 ? box.max.z : box.min.z);
      p.Transform(m);
      corners.Add(p);
    }
    ASSERT_TRUE(Holds(corners, moved.min, 1e-13)) << "seed " << seed << ", box " << i;
    ASSERT_TRUE(Holds(corners, moved.max, 1e-13)) << "seed " << seed << ", box " << i;
  }
}

TEST(GslBBox, IntersectIsIntervalLogicOnDyadicCoordinates) {
  const std::uint64_t seed = 1984;
  RandomNumbers random(seed);
  const auto dyadic = [&random] { return (random.Below(33) - 16) * 0.25; };
  long meeting = 0;
  const long count = Scaled(200000);
  for (long i = 0; i < count; ++i) {
    double p[4][3];
    for (auto& point : p) {
      for (double& coordinate : point)
        coordinate = dyadic();
    }
    const gsl_BBox a = BoxOf({p[0][0], p[0][1], p[0][2]}, {p[1][0], p[1][1], p[1][2]});
    const gsl_BBox b = BoxOf({p[2][0], p[2][1], p[2][2]}, {p[3][0], p[3][1], p[3][2]});
    bool expected = true;
    for (int axis = 0; axis < 3; ++axis) {
      const double lowA = std::fmin(p[0][axis], p[1][axis]);
      const double highA = std::fmax(p[0][axis], p[1][axis]);
      const double lowB = std::fmin(p[2][axis], p[3][axis]);
      const double highB = std::fmax(p[2][axis], p[3][axis]);
      expected = expected && lowA <= highB && lowB <= highA;
    }
    ASSERT_EQ(a.Intersect(b), expected) << "seed " << seed << ", pair " << i;
    ASSERT_EQ(b.Intersect(a), expected) << "seed " << seed << ", pair " << i;
    if (expected) ++meeting;
  }
  EXPECT_GT(meeting, count / 10);
  EXPECT_LT(meeting, count - count / 10);
}

} // namespace
