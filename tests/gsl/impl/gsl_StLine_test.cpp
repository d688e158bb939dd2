#include "gsl_StLine.h"

#include "FeatureList.h"
#include "PointChecks.h"
#include "RandomNumbers.h"
#include "ScopedSettings.h"
#include "VirtualSlot.h"
#include "gsl_Plane.h"

#include <cinttypes>
#include <limits>
#include <memory>
#include <type_traits>

namespace {

using numbers::Above;
using numbers::Below;

double LinearTolerance() {
  return omi_Singleton<gsl_Util>::Instance().linearTolerance;
}

gsl_StLine LineWithEveryFieldSet() {
  gsl_StLine line(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.0, 3.0, 4.0));
  line.SetMethod(FROM_DATUM_CSYS);
  line.SetFlip(true);
  line.SetOk(false);
  line.ParentIds().Append(17);
  line.ParentIds().Append(4294967295u);
  line.SetOwnerFeatID(-42);
  return line;
}

void ExpectSameFields(const gsl_StLine& copy, const gsl_StLine& source) {
  EXPECT_TRUE(Is(copy.PointOn(), source.PointOn()));
  EXPECT_TRUE(
      IsAt(copy.Direction(), source.Direction().x, source.Direction().y, source.Direction().z));
  EXPECT_EQ(copy.Direction().magnitude, source.Direction().magnitude);
  EXPECT_EQ(copy.Method(), source.Method());
  EXPECT_EQ(copy.Flip(), source.Flip());
  EXPECT_EQ(copy.Ok(), source.Ok());
  EXPECT_EQ(copy.ParentIds(), source.ParentIds());
  EXPECT_EQ(copy.ParentIds().Uid(), source.ParentIds().Uid());
  EXPECT_EQ(copy.OwnerFeatID(), source.OwnerFeatID());
  EXPECT_EQ(copy.Uid(), source.Uid());
}

/// A unit X vector with another y and the cached length still 1.
gsl_Vector UnitWith(double x, double y) {
  gsl_Vector v(x, 0.0, 0.0);
  v[1] = y;
  return v;
}

/// The outputs of Intersect with a line, as sentinels.
struct LineOutputs {
  gsl_Point out = Sentinel();
  double dist = kSentinel;
  const gsl_Point before = out;

  bool PointUntouched() const { return Is(out, before); }
  bool DistUntouched() const { return SameBits(dist, kSentinel); }
};

TEST(GslStLine, DefaultIsTheXAxis) {
  const gsl_StLine line;
  EXPECT_TRUE(IsAt(line.PointOn(), 0.0, 0.0, 0.0));
  EXPECT_TRUE(IsAt(line.Direction(), 1.0, 0.0, 0.0));
  EXPECT_EQ(line.Direction().magnitude, 1.0);
  EXPECT_EQ(line.Method(), FROM_PNT_VECTOR);
  EXPECT_EQ(line.Method(), 0);
  EXPECT_FALSE(line.Flip());
  EXPECT_TRUE(line.Ok());
  EXPECT_TRUE(line.ParentIds().IsEmpty());
  EXPECT_EQ(line.OwnerFeatID(), 0);
  EXPECT_FALSE(line.Uid().IsNull());
}

TEST(GslStLine, PointVectorConstructorKeepsBothAsSupplied) {
  const gsl_Point point(1.0, -2.0, 3.0);
  const gsl_StLine line(point, UnitWith(1.0, 4.0));
  EXPECT_TRUE(Is(line.PointOn(), point));
  EXPECT_TRUE(IsAt(line.Direction(), 1.0, 4.0, 0.0));
  EXPECT_EQ(line.Direction().magnitude, 1.0) << "the cached length is copied, not measured";
  EXPECT_EQ(line.Method(), FROM_PNT_VECTOR);
  EXPECT_FALSE(line.Flip());
  EXPECT_TRUE(line.Ok());
  EXPECT_TRUE(line.ParentIds().IsEmpty());
  EXPECT_EQ(line.OwnerFeatID(), 0);
}

TEST(GslStLine, PointPointConstructorTakesTheDifferenceUnnormalised) {
  const gsl_Point p1(1.0, 1.0, 1.0);
  const gsl_StLine line(p1, gsl_Point(1.0, 4.0, 5.0));
  EXPECT_TRUE(Is(line.PointOn(), p1));
  EXPECT_TRUE(IsAt(line.Direction(), 0.0, 3.0, 4.0));
  EXPECT_EQ(line.Direction().magnitude, 5.0);
  EXPECT_EQ(line.Method(), FROM_PNT_PNT);
  EXPECT_EQ(line.Method(), 5);
  EXPECT_FALSE(line.Flip());
  EXPECT_TRUE(line.Ok());
  EXPECT_TRUE(line.ParentIds().IsEmpty());
  EXPECT_EQ(line.OwnerFeatID(), 0);
}

TEST(GslStLine, CoincidentPointsMakeAZeroDirection) {
  const gsl_Point p(1.0, 2.0, 3.0);
  const gsl_StLine line(p, p);
  EXPECT_TRUE(IsAt(line.Direction(), 0.0, 0.0, 0.0));
  EXPECT_EQ(line.Direction().magnitude, 0.0);
  EXPECT_TRUE(line.Ok());
}

TEST(GslStLine, ConstructorsAllocateFreshIdentities) {
  const gsl_Point p;
  const gsl_Point q(1.0, 0.0, 0.0);
  const gsl_StLine lines[6] = {{}, {}, {p, gsl_Vector()}, {p, gsl_Vector()}, {p, q}, {p, q}};
  for (int i = 0; i < 6; ++i) {
    EXPECT_NE(lines[i].Uid(), p.uid);
    for (int j = 0; j < i; ++j) {
      EXPECT_NE(lines[i].Uid(), lines[j].Uid());
    }
  }
}

TEST(GslStLine, CopyConstructorCopiesEveryFieldAndTheIdentities) {
  const gsl_StLine source = LineWithEveryFieldSet();
  const gsl_StLine copy(source);
  ExpectSameFields(copy, source);
  EXPECT_EQ(copy.Method(), FROM_DATUM_CSYS);
  EXPECT_TRUE(copy.Flip());
  EXPECT_FALSE(copy.Ok());
  EXPECT_EQ(copy.OwnerFeatID(), -42);
  ASSERT_EQ(copy.ParentIds().Count(), 2u);
  EXPECT_EQ(copy.ParentIds()[0], 17u);
}

TEST(GslStLine, AssignmentCopiesEveryFieldAndTheIdentities) {
  const gsl_StLine source = LineWithEveryFieldSet();
  gsl_StLine target;
  target = source;
  ExpectSameFields(target, source);
}

TEST(GslStLine, CopyReturnsAHeapObjectThatSharesNothingButIdentity) {
  gsl_StLine source = LineWithEveryFieldSet();
  const std::unique_ptr<gsl_StLine> copy(source.Copy());
  ASSERT_NE(copy.get(), &source);
  ExpectSameFields(*copy, source);
  source.ParentIds().Clear();
  EXPECT_EQ(copy->ParentIds().Count(), 2u);
}

TEST(GslStLine, RegenerateIsTrueWhateverTheOkFlagSays) {
  gsl_StLine line;
  EXPECT_TRUE(line.Regenerate(UnreadableList()));
  line.SetOk(false);
  EXPECT_TRUE(line.Regenerate(UnreadableList()));
  EXPECT_FALSE(line.Ok());
}

TEST(GslStLine, OwnerFeatIDHoldsAnySignedNumber) {
  gsl_StLine line;
  for (const int id : {1, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    line.SetOwnerFeatID(id);
    EXPECT_EQ(line.OwnerFeatID(), id);
  }
}

TEST(GslStLine, DirectionForDatumDeliberatelyIgnoresTheFlip) {
  gsl_StLine line(gsl_Point(), UnitWith(2.0, 3.0));
  line.SetFlip(true);
  const gsl_Vector direction = line.DirectionForDatum();
  EXPECT_TRUE(IsAt(direction, 2.0, 3.0, 0.0));
  EXPECT_EQ(direction.magnitude, 2.0) << "as stored, the cached length included";
  EXPECT_TRUE(IsAt(line.Direction(), 2.0, 3.0, 0.0));
}

TEST(GslStLine, ExtensionsReturnNullAndFalse) {
  gsl_StLine line;
  EXPECT_EQ(line.ExtensionObject(), nullptr);
  EXPECT_FALSE(line.ExtensionQuery(&line));
}

TEST(GslStLine, TypeIdMatchesItsRow) {
  EXPECT_EQ(gsl_StLine::TypeId(), 0x30A0006u);
  EXPECT_EQ(gsl_StLine().DynTypeId(), 0x30A0006u);
}

TEST(GslStLine, VirtualSlotsFollowTheDestructorInOrder) {
  EXPECT_TRUE(std::has_virtual_destructor_v<gsl_StLine>);
  EXPECT_EQ(VirtualSlot(&gsl_StLine::Copy), 2);
  EXPECT_EQ(VirtualSlot(&gsl_StLine::Regenerate), 3);
  EXPECT_EQ(VirtualSlot(&gsl_StLine::OwnerFeatID), 4);
  EXPECT_EQ(VirtualSlot(&gsl_StLine::SetOwnerFeatID), 5);
  EXPECT_EQ(VirtualSlot(&gsl_StLine::ExtensionObject), 6);
  EXPECT_EQ(VirtualSlot(&gsl_StLine::ExtensionQuery), 7);
  EXPECT_EQ(VirtualSlot(&gsl_StLine::DirectionForDatum), 8);
  EXPECT_EQ(VirtualSlot(&gsl_StLine::DynTypeId), 9);
  EXPECT_EQ(VirtualSlot(&gsl_StLine::DBWrite), 10);
}

/// A class of a host, which overrides every operation with the declared signature.
class HostLine : public gsl_StLine {
public:
  explicit HostLine(int& destroyedCount) : destroyed(destroyedCount) {}
  ~HostLine() override { ++destroyed; }
  HostLine* Copy() const override { return new HostLine(destroyed); }
  bool Regenerate(const ftr_FeatureList*) override { return false; }
  int OwnerFeatID() const override { return 5; }
  void SetOwnerFeatID(int) override { ownerWasSet = true; }
  void* ExtensionObject() override { return this; }
  bool ExtensionQuery(const void* query) override { return query == this; }
  gsl_Vector DirectionForDatum() override { return {8.0, 0.0, 0.0}; }
  unsigned int DynTypeId() const override { return 10u; }
  void DBWrite(const cls_WriteVisitor&) const override {}

  bool ownerWasSet = false;

private:
  int& destroyed;
};

TEST(GslStLine, OverridesAreReachedThroughTheBase) {
  int destroyed = 0;
  HostLine host(destroyed);
  gsl_StLine& line = host;
  EXPECT_FALSE(line.Regenerate(nullptr));
  EXPECT_EQ(line.OwnerFeatID(), 5);
  line.SetOwnerFeatID(1);
  EXPECT_TRUE(host.ownerWasSet);
  EXPECT_EQ(line.ExtensionObject(), &host);
  EXPECT_TRUE(line.ExtensionQuery(&host));
  EXPECT_EQ(line.DirectionForDatum().x, 8.0);
  EXPECT_EQ(line.DynTypeId(), 10u);
  gsl_StLine* const copy = line.Copy();
  EXPECT_EQ(copy->DynTypeId(), 10u);
  delete copy;
  EXPECT_EQ(destroyed, 1);
}

TEST(GslStLineWithPlane, CrossingBehindThePointIsFoundWithAFreshIdentity) {
  const gsl_StLine line(gsl_Point(2.0, 3.0, 5.0), gsl_Vector(0.0, 0.0, 2.0));
  const gsl_Plane plane(gsl_Point(7.0, 7.0, 1.0), gsl_Vector(0.0, 0.0, -4.0));
  gsl_Point out = Sentinel();
  const gsl_Point before = out;
  EXPECT_TRUE(line.Intersect(plane, out));
  EXPECT_TRUE(IsAt(out, 2.0, 3.0, 1.0));
  EXPECT_NE(out.uid, before.uid);
  EXPECT_NE(out.uid, line.PointOn().uid);
  EXPECT_NE(out.uid, plane.PointOn().uid);
  EXPECT_FALSE(out.uid.IsNull());
}

TEST(GslStLineWithPlane, ParallelLineOffThePlaneIsFalseWithTheLinesPoint) {
  const gsl_StLine line(gsl_Point(2.0, 3.0, 5.0), gsl_Vector(1.0, 1.0, 0.0));
  const gsl_Plane plane(gsl_Point(), gsl_Vector(0.0, 0.0, 1.0));
  gsl_Point out = Sentinel();
  EXPECT_FALSE(line.Intersect(plane, out));
  EXPECT_TRUE(Is(out, line.PointOn()));
}

TEST(GslStLineWithPlane, LineInThePlaneIsTrueWithTheLinesPoint) {
  const gsl_StLine line(gsl_Point(2.0, 3.0, 0.0), gsl_Vector(1.0, 1.0, 0.0));
  const gsl_Plane plane(gsl_Point(), gsl_Vector(0.0, 0.0, 1.0));
  gsl_Point out = Sentinel();
  EXPECT_TRUE(line.Intersect(plane, out));
  EXPECT_TRUE(Is(out, line.PointOn()));
}

TEST(GslStLineWithPlane, ZeroDirectionFailsEvenOnThePlane) {
  const gsl_Point p(2.0, 3.0, 0.0);
  const gsl_StLine line(p, p);
  const gsl_Plane plane(gsl_Point(), gsl_Vector(0.0, 0.0, 1.0));
  gsl_Point out = Sentinel();
  EXPECT_FALSE(line.Intersect(plane, out));
  EXPECT_TRUE(Is(out, p));
}

TEST(GslStLineWithPlane, DirectionOfExactlyTheToleranceIsLongEnough) {
  const gsl_Plane plane(gsl_Point(), gsl_Vector(0.0, 0.0, 1.0));
  const double tol = LinearTolerance();
  gsl_Point out = Sentinel();
  EXPECT_TRUE(
      gsl_StLine(gsl_Point(0.0, 0.0, 1.0), gsl_Vector(0.0, 0.0, tol)).Intersect(plane, out));
  EXPECT_TRUE(IsNear(out, 0.0, 0.0, 0.0, 1e-15));
  const gsl_StLine below(gsl_Point(0.0, 0.0, 1.0), gsl_Vector(0.0, 0.0, Below(tol)));
  EXPECT_FALSE(below.Intersect(plane, out));
  EXPECT_TRUE(Is(out, below.PointOn()));
}

TEST(GslStLineWithPlane, PointAtTheToleranceIsOffThePlane) {
  const gsl_Plane plane(gsl_Point(), gsl_Vector(0.0, 0.0, 1.0));
  const double tol = LinearTolerance();
  gsl_Point out = Sentinel();
  const gsl_StLine below(gsl_Point(0.0, 0.0, Below(tol)), gsl_Vector(0.0, 0.0, 1.0));
  EXPECT_TRUE(below.Intersect(plane, out));
  EXPECT_TRUE(Is(out, below.PointOn()));
  const gsl_StLine at(gsl_Point(0.0, 0.0, tol), gsl_Vector(0.0, 0.0, 1.0));
  EXPECT_TRUE(at.Intersect(plane, out));
  EXPECT_TRUE(IsAt(out, 0.0, 0.0, 0.0));
  EXPECT_NE(out.uid, at.PointOn().uid);
}

TEST(GslStLineWithPlane, CosineOfExactlyTheToleranceIsNotParallel) {
  const gsl_Plane plane(gsl_Point(), gsl_Vector(0.0, 0.0, 1.0));
  const double tol = omi_Singleton<gsl_Util>::Instance().cosineTolerance;
  gsl_Point out = Sentinel();
  // The length of both directions rounds to exactly 1.
  const gsl_StLine at(gsl_Point(0.0, 0.0, 1.0), gsl_Vector(1.0, 0.0, tol));
  EXPECT_TRUE(at.Intersect(plane, out));
  EXPECT_NEAR(out.x, -1e10, 1e-4);
  const gsl_StLine below(gsl_Point(0.0, 0.0, 1.0), gsl_Vector(1.0, 0.0, Below(tol)));
  EXPECT_FALSE(below.Intersect(plane, out));
  EXPECT_TRUE(Is(out, below.PointOn()));
}

TEST(GslStLineWithLine, CrossingLinesWriteTheCrossingAndAZeroGap) {
  const gsl_StLine line(gsl_Point(0.0, 0.0, 0.0), gsl_Vector(2.0, 0.0, 0.0));
  const gsl_StLine other(gsl_Point(3.0, -4.0, 0.0), gsl_Vector(0.0, 0.5, 0.0));
  LineOutputs o;
  EXPECT_TRUE(line.Intersect(other, o.out, o.dist));
  EXPECT_TRUE(IsAt(o.out, 3.0, 0.0, 0.0));
  EXPECT_EQ(o.dist, 0.0);
  for (const cls_Uid& uid : {o.before.uid, line.PointOn().uid, other.PointOn().uid, cls_Uid()}) {
    EXPECT_NE(o.out.uid, uid);
  }
}

TEST(GslStLineWithLine, ObliqueLinesCrossWhereTheyWereBuiltToCross) {
  RandomNumbers random(0xC055);
  const auto any = [&random] {
    return gsl_Vector(random.In(-2.0, 2.0), random.In(-2.0, 2.0), random.In(-2.0, 2.0));
  };
  int tried = 0;
  for (int i = 0; i < 5000; ++i) {
    const gsl_Point meeting = gsl_Point() + any();
    const gsl_Vector u = any();
    const gsl_Vector v = any();
    if (u.CrossProduct(v).magnitude < 0.1 * u.magnitude * v.magnitude) continue;
    const gsl_StLine line(meeting + u * random.In(-3.0, 3.0), u);
    const gsl_StLine other(meeting + v * random.In(-3.0, 3.0), v);
    LineOutputs o;
    ASSERT_TRUE(line.Intersect(other, o.out, o.dist)) << "case " << i;
    EXPECT_TRUE(IsNear(o.out, meeting.x, meeting.y, meeting.z, 1e-12)) << "case " << i;
    EXPECT_LT(o.dist, 1e-12) << "case " << i;
    ++tried;
  }
  EXPECT_GT(tried, 4000);
}

TEST(GslStLineWithLine, SkewLinesLeaveBothOutputsUntouched) {
  const gsl_StLine line(gsl_Point(), gsl_Vector(1.0, 0.0, 0.0));
  const gsl_StLine other(gsl_Point(0.0, 0.0, 2.0), gsl_Vector(0.0, 1.0, 0.0));
  LineOutputs o;
  EXPECT_FALSE(line.Intersect(other, o.out, o.dist));
  EXPECT_TRUE(o.PointUntouched());
  EXPECT_TRUE(o.DistUntouched());
}

TEST(GslStLineWithLine, LinesATenthOfTheToleranceApartCross) {
  const gsl_StLine line(gsl_Point(-5.0, 0.0, 0.0), gsl_Vector(3.0, 0.0, 0.0));
  const gsl_StLine other(gsl_Point(2.0, 1.0, 1e-7), gsl_Vector(0.0, 1.0, 0.0));
  LineOutputs o;
  EXPECT_TRUE(line.Intersect(other, o.out, o.dist));
  EXPECT_TRUE(IsAt(o.out, 2.0, 0.0, 0.0)) << "on this line, not on the other or between";
  EXPECT_EQ(o.dist, 1e-7);
}

TEST(GslStLineWithLine, GapOfExactlyTheToleranceIsNotSkew) {
  const gsl_StLine line(gsl_Point(), gsl_Vector(1.0, 0.0, 0.0));
  const double tol = LinearTolerance();
  LineOutputs at;
  EXPECT_TRUE(
      line.Intersect({gsl_Point(0.0, 0.0, tol), gsl_Vector(0.0, 1.0, 0.0)}, at.out, at.dist));
  EXPECT_EQ(at.dist, tol);
  LineOutputs above;
  EXPECT_FALSE(line.Intersect({gsl_Point(0.0, 0.0, Above(tol)), gsl_Vector(0.0, 1.0, 0.0)},
                              above.out, above.dist));
  EXPECT_TRUE(above.PointUntouched());
  EXPECT_TRUE(above.DistUntouched());
}

TEST(GslStLineWithLine, ParallelLinesWriteTheirDistanceAndNoPoint) {
  const gsl_StLine line(gsl_Point(4.0, 0.0, 0.0), gsl_Vector(1.0, 0.0, 0.0));
  for (const double x : {7.0, -7.0}) {
    LineOutputs o;
    EXPECT_FALSE(
        line.Intersect({gsl_Point(0.0, 2.0, 0.0), gsl_Vector(x, 0.0, 0.0)}, o.out, o.dist));
    EXPECT_EQ(o.dist, 2.0) << "opposite directions are parallel too";
    EXPECT_TRUE(o.PointUntouched());
  }
}

TEST(GslStLineWithLine, CoincidentLinesHaveDistanceZero) {
  const gsl_StLine line(gsl_Point(4.0, 0.0, 0.0), gsl_Vector(1.0, 0.0, 0.0));
  LineOutputs o;
  EXPECT_FALSE(
      line.Intersect({gsl_Point(9.0, 0.0, 0.0), gsl_Vector(-3.0, 0.0, 0.0)}, o.out, o.dist));
  EXPECT_EQ(o.dist, 0.0);
  EXPECT_TRUE(o.PointUntouched());
}

TEST(GslStLineWithLine, ComponentsExactlyTheFixedToleranceApartAreParallel) {
  const gsl_StLine line(gsl_Point(), gsl_Vector(1.0, 0.0, 0.0));
  for (const double sense : {1.0, -1.0}) {
    LineOutputs at;
    EXPECT_FALSE(
        line.Intersect({gsl_Point(0.0, 2.0, 0.0), UnitWith(sense, 1e-5)}, at.out, at.dist));
    EXPECT_TRUE(at.PointUntouched());
    // |v x d| / |d| with v = (0, -2, 0), the cached length being 1.
    EXPECT_EQ(at.dist, 2.0);
    LineOutputs above;
    EXPECT_TRUE(line.Intersect({gsl_Point(0.0, 2.0, 0.0), UnitWith(sense, Above(1e-5))}, above.out,
                               above.dist));
    EXPECT_FALSE(above.PointUntouched());
  }
}

TEST(GslStLineWithLine, ParallelToleranceIsFixedAndNoneOfTheSettings) {
  const ScopedSettings settings;
  settings->linearTolerance = 1e-3;
  settings->cosineTolerance = 1e-3;
  const gsl_StLine line(gsl_Point(), gsl_Vector(1.0, 0.0, 0.0));
  LineOutputs o;
  EXPECT_TRUE(line.Intersect({gsl_Point(0.0, 2.0, 0.0), UnitWith(1.0, 2e-5)}, o.out, o.dist));
}

TEST(GslStLineWithLine, SkewIsTestedBeforeParallel) {
  const gsl_StLine line(gsl_Point(), gsl_Vector(1.0, 0.0, 0.0));
  // |cross product| is 5e-6: long enough for a common normal, and within 1e-5 of parallel.
  LineOutputs o;
  EXPECT_FALSE(line.Intersect({gsl_Point(0.0, 0.0, 2.0), UnitWith(1.0, 5e-6)}, o.out, o.dist));
  EXPECT_TRUE(o.DistUntouched());
  // At 5e-7 there is no common normal.
  EXPECT_FALSE(line.Intersect({gsl_Point(0.0, 0.0, 2.0), UnitWith(1.0, 5e-7)}, o.out, o.dist));
  EXPECT_NEAR(o.dist, 2.0, 1e-12);
  EXPECT_TRUE(o.PointUntouched());
}

TEST(GslStLineWithLine, ZeroDirectionIsNeitherSkewNorParallel) {
  const gsl_Point p(5.0, 0.0, 3.0);
  const gsl_StLine dot(p, p);
  LineOutputs o;
  EXPECT_TRUE(dot.Intersect(gsl_StLine(), o.out, o.dist));
  EXPECT_TRUE(IsAt(o.out, 5.0, 0.0, 3.0));
  EXPECT_EQ(o.dist, 3.0);
}

TEST(GslStLineWithLine, TwoZeroDirectionsAreParallelWithoutADistance) {
  const gsl_Point p(5.0, 0.0, 3.0);
  const gsl_Point q;
  LineOutputs o;
  EXPECT_FALSE(gsl_StLine(p, p).Intersect(gsl_StLine(q, q), o.out, o.dist));
  EXPECT_TRUE(std::isnan(o.dist));
  EXPECT_TRUE(o.PointUntouched());
}

TEST(GslStLineWithLine, NaNDirectionIsParallelToEverything) {
  const gsl_StLine line(gsl_Point(), gsl_Vector(kNaN, kNaN, kNaN));
  LineOutputs o;
  EXPECT_FALSE(line.Intersect(gsl_StLine(), o.out, o.dist));
  EXPECT_EQ(o.dist, 0.0) << "of this line's point, the origin";
  EXPECT_TRUE(o.PointUntouched());
}

TEST(GslStLineWithLine, TolerancesAreReadAtTheCall) {
  const gsl_StLine line(gsl_Point(), gsl_Vector(1.0, 0.0, 0.0));
  const gsl_StLine other(gsl_Point(0.0, 0.0, 0.5), gsl_Vector(0.0, 1.0, 0.0));
  LineOutputs o;
  EXPECT_FALSE(line.Intersect(other, o.out, o.dist));
  const ScopedSettings settings;
  settings->linearTolerance = 0.5;
  EXPECT_TRUE(line.Intersect(other, o.out, o.dist));
  EXPECT_EQ(o.dist, 0.5);
}

TEST(GslStLineWithLine, TheGapIsBetweenTheClosestPointsNotAlongTheNormal) {
  const ScopedSettings settings;
  settings->linearTolerance = 10.0;
  // Directions shorter than the tolerance count as zero when the closest points are computed.
  const gsl_StLine line(gsl_Point(1.0, 0.0, 0.0), gsl_Vector(2.0, 0.0, 0.0));
  const gsl_StLine other(gsl_Point(4.0, 4.0, 0.0), gsl_Vector(0.0, 2.0, 0.0));
  LineOutputs o;
  EXPECT_TRUE(line.Intersect(other, o.out, o.dist));
  EXPECT_TRUE(IsAt(o.out, 1.0, 0.0, 0.0));
  EXPECT_EQ(o.dist, 5.0);
}

} // namespace
