#include "gsl_Plane.h"

#include "FeatureList.h"
#include "PointChecks.h"
#include "VirtualSlot.h"

#include <limits>
#include <memory>
#include <type_traits>

namespace {

gsl_Plane PlaneWithEveryFieldSet() {
  gsl_Plane plane(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.0, 3.0, 4.0));
  plane.SetMethod(FROM_ELEM_FACE);
  plane.SetFlip(true);
  plane.SetOk(false);
  plane.ParentIds().Append(17);
  plane.ParentIds().Append(4294967295u);
  plane.SetOwnerFeatID(-42);
  return plane;
}

void ExpectSameFields(const gsl_Plane& copy, const gsl_Plane& source) {
  EXPECT_EQ(copy.Ok(), source.Ok());
  EXPECT_TRUE(Is(copy.PointOn(), source.PointOn()));
  EXPECT_TRUE(
      IsAt(copy.Direction(), source.Direction().x, source.Direction().y, source.Direction().z));
  EXPECT_EQ(copy.Direction().magnitude, source.Direction().magnitude);
  EXPECT_EQ(copy.Method(), source.Method());
  EXPECT_EQ(copy.Flip(), source.Flip());
  EXPECT_EQ(copy.ParentIds(), source.ParentIds());
  EXPECT_EQ(copy.ParentIds().Uid(), source.ParentIds().Uid());
  EXPECT_EQ(copy.OwnerFeatID(), source.OwnerFeatID());
  EXPECT_EQ(copy.Uid(), source.Uid());
}

TEST(GslPlane, DefaultIsThePlaneXEqualsZero) {
  gsl_Plane plane;
  EXPECT_TRUE(IsAt(plane.PointOn(), 0.0, 0.0, 0.0));
  EXPECT_TRUE(IsAt(plane.Direction(), 1.0, 0.0, 0.0));
  EXPECT_EQ(plane.Direction().magnitude, 1.0);
  EXPECT_EQ(gsl_Point(3.0, 4.0, 5.0).GetSignedDistance(plane), 3.0);
  EXPECT_EQ(plane.Method(), FROM_POINT_VECTOR);
  EXPECT_EQ(plane.Method(), 0);
  EXPECT_FALSE(plane.Flip());
  EXPECT_TRUE(plane.Ok());
  EXPECT_TRUE(plane.ParentIds().IsEmpty());
  EXPECT_EQ(plane.OwnerFeatID(), 0);
  EXPECT_FALSE(plane.Uid().IsNull());
}

TEST(GslPlane, DefaultCentroidIsTheOrigin) {
  gsl_Plane plane;
  EXPECT_TRUE(IsAt(plane.Centroid(), 0.0, 0.0, 0.0));
}

TEST(GslPlane, ConstructorKeepsThePointAndTheNormalAsSupplied) {
  const gsl_Point point(1.0, -2.0, 3.0);
  gsl_Vector normal(0.0, 0.0, 5.0);
  normal[0] = 2.0;
  const gsl_Plane plane(point, normal);
  EXPECT_TRUE(Is(plane.PointOn(), point));
  EXPECT_TRUE(IsAt(plane.Direction(), 2.0, 0.0, 5.0));
  EXPECT_EQ(plane.Direction().magnitude, 5.0) << "the cached length is copied, not measured";
  EXPECT_EQ(plane.Method(), FROM_POINT_VECTOR);
  EXPECT_FALSE(plane.Flip());
  EXPECT_TRUE(plane.Ok());
  EXPECT_TRUE(plane.ParentIds().IsEmpty());
  EXPECT_EQ(plane.OwnerFeatID(), 0);
}

TEST(GslPlane, ZeroAndNaNNormalsAreAccepted) {
  const gsl_Plane zero(gsl_Point(), gsl_Vector(0.0, 0.0, 0.0));
  EXPECT_EQ(zero.Direction().magnitude, 0.0);
  EXPECT_TRUE(zero.Ok());
  const gsl_Plane nan(gsl_Point(kNaN, 0.0, 0.0), gsl_Vector(kNaN, 0.0, 1.0));
  EXPECT_TRUE(std::isnan(nan.Direction().x));
  EXPECT_TRUE(nan.Ok());
}

TEST(GslPlane, ConstructorsAllocateFreshIdentities) {
  const gsl_Point point;
  const gsl_Vector normal;
  const gsl_Plane a;
  const gsl_Plane b;
  const gsl_Plane c(point, normal);
  const gsl_Plane d(point, normal);
  EXPECT_NE(a.Uid(), b.Uid());
  EXPECT_NE(c.Uid(), d.Uid());
  EXPECT_NE(c.Uid(), point.uid);
  EXPECT_NE(a.PointOn().uid, b.PointOn().uid);
}

TEST(GslPlane, CopyConstructorCopiesEveryFieldAndTheIdentities) {
  const gsl_Plane source = PlaneWithEveryFieldSet();
  const gsl_Plane copy(source);
  ExpectSameFields(copy, source);
  EXPECT_EQ(copy.Method(), FROM_ELEM_FACE);
  EXPECT_TRUE(copy.Flip());
  EXPECT_FALSE(copy.Ok());
  EXPECT_EQ(copy.OwnerFeatID(), -42);
  ASSERT_EQ(copy.ParentIds().Count(), 2u);
  EXPECT_EQ(copy.ParentIds()[1], 4294967295u);
}

TEST(GslPlane, AssignmentCopiesEveryFieldAndTheIdentities) {
  const gsl_Plane source = PlaneWithEveryFieldSet();
  gsl_Plane target;
  target = source;
  ExpectSameFields(target, source);
}

TEST(GslPlane, CopyReturnsAHeapObjectThatSharesNothingButIdentity) {
  gsl_Plane source = PlaneWithEveryFieldSet();
  const std::unique_ptr<gsl_Plane> copy(source.Copy());
  ASSERT_NE(copy.get(), &source);
  ExpectSameFields(*copy, source);
  source.ParentIds().Clear();
  source.SetOwnerFeatID(1);
  EXPECT_EQ(copy->ParentIds().Count(), 2u);
  EXPECT_EQ(copy->OwnerFeatID(), -42);
}

TEST(GslPlane, RegenerateReturnsTheOkFlagAndReadsNoList) {
  gsl_Plane plane;
  EXPECT_TRUE(plane.Regenerate(nullptr));
  EXPECT_TRUE(plane.Regenerate(UnreadableList()));
  plane.SetOk(false);
  EXPECT_FALSE(plane.Regenerate(UnreadableList()));
}

TEST(GslPlane, RegenerateOnACopyReturnsTheCopiedFlag) {
  gsl_Plane plane;
  plane.SetOk(false);
  plane.SetFlip(true);
  gsl_Plane copy(plane);
  plane.SetOk(true);
  EXPECT_FALSE(copy.Regenerate(nullptr));
  EXPECT_TRUE(copy.Flip());
}

TEST(GslPlane, OwnerFeatIDHoldsAnySignedNumber) {
  gsl_Plane plane;
  for (const int id : {1, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    plane.SetOwnerFeatID(id);
    EXPECT_EQ(plane.OwnerFeatID(), id);
  }
}

TEST(GslPlane, CentroidIsACopyOfThePointWithItsIdentity) {
  const gsl_Point point(4.0, 5.0, 6.0);
  gsl_Plane plane(point, gsl_Vector());
  gsl_Point centroid = plane.Centroid();
  EXPECT_TRUE(Is(centroid, point));
  centroid.x = 9.0;
  EXPECT_TRUE(Is(plane.PointOn(), point));
}

TEST(GslPlane, ResetCentroidDeliberatelyLeavesThePlaneUnchanged) {
  gsl_Plane plane = PlaneWithEveryFieldSet();
  const gsl_Plane before(plane);
  plane.ResetCentroid(gsl_Point(7.0, 8.0, 9.0), UnreadableList());
  plane.ResetCentroid(gsl_Point(kNaN, 8.0, 9.0), nullptr);
  ExpectSameFields(plane, before);
}

TEST(GslPlane, FlipIsNeverAppliedToTheNormal) {
  gsl_Plane plane(gsl_Point(), gsl_Vector(0.0, 0.0, 1.0));
  plane.SetFlip(true);
  EXPECT_TRUE(IsAt(plane.Direction(), 0.0, 0.0, 1.0));
  EXPECT_EQ(gsl_Point(0.0, 0.0, 2.0).GetSignedDistance(plane), 2.0);
}

TEST(GslPlane, ExtensionsReturnNullAndFalse) {
  gsl_Plane plane;
  EXPECT_EQ(plane.ExtensionObject(), nullptr);
  EXPECT_FALSE(plane.ExtensionQuery(&plane));
  EXPECT_FALSE(plane.ExtensionQuery(nullptr));
}

TEST(GslPlane, TypeIdMatchesItsRow) {
  EXPECT_EQ(gsl_Plane::TypeId(), 0x30A0004u);
  EXPECT_EQ(gsl_Plane().DynTypeId(), 0x30A0004u);
}

TEST(GslPlane, VirtualSlotsFollowTheDestructorInOrder) {
  EXPECT_TRUE(std::has_virtual_destructor_v<gsl_Plane>);
  EXPECT_EQ(VirtualSlot(&gsl_Plane::Copy), 2);
  EXPECT_EQ(VirtualSlot(&gsl_Plane::Regenerate), 3);
  EXPECT_EQ(VirtualSlot(&gsl_Plane::OwnerFeatID), 4);
  EXPECT_EQ(VirtualSlot(&gsl_Plane::SetOwnerFeatID), 5);
  EXPECT_EQ(VirtualSlot(&gsl_Plane::Centroid), 6);
  EXPECT_EQ(VirtualSlot(&gsl_Plane::ResetCentroid), 7);
  EXPECT_EQ(VirtualSlot(&gsl_Plane::ExtensionObject), 8);
  EXPECT_EQ(VirtualSlot(&gsl_Plane::ExtensionQuery), 9);
  EXPECT_EQ(VirtualSlot(&gsl_Plane::DynTypeId), 10);
  EXPECT_EQ(VirtualSlot(&gsl_Plane::DBWrite), 11);
}

/// A class of a host, which overrides every operation with the declared signature.
class HostPlane : public gsl_Plane {
public:
  explicit HostPlane(int& destroyedCount) : destroyed(destroyedCount) {}
  ~HostPlane() override { ++destroyed; }
  HostPlane* Copy() const override { return new HostPlane(destroyed); }
  bool Regenerate(const ftr_FeatureList*) override { return false; }
  int OwnerFeatID() const override { return 5; }
  void SetOwnerFeatID(int) override { lastCall = "SetOwnerFeatID"; }
  gsl_Point Centroid() override { return {6.0, 6.0, 6.0}; }
  void ResetCentroid(const gsl_Point&, const ftr_FeatureList*) override {
    lastCall = "ResetCentroid";
  }
  void* ExtensionObject() override { return this; }
  bool ExtensionQuery(const void* query) override { return query == this; }
  unsigned int DynTypeId() const override { return 10u; }
  void DBWrite(const cls_WriteVisitor&) const override {}

  const char* lastCall = "";

private:
  int& destroyed;
};

TEST(GslPlane, OverridesAreReachedThroughTheBase) {
  int destroyed = 0;
  HostPlane host(destroyed);
  gsl_Plane& plane = host;
  EXPECT_FALSE(plane.Regenerate(nullptr));
  EXPECT_EQ(plane.OwnerFeatID(), 5);
  plane.SetOwnerFeatID(1);
  EXPECT_STREQ(host.lastCall, "SetOwnerFeatID");
  EXPECT_TRUE(IsAt(plane.Centroid(), 6.0, 6.0, 6.0));
  plane.ResetCentroid(gsl_Point(), nullptr);
  EXPECT_STREQ(host.lastCall, "ResetCentroid");
  EXPECT_EQ(plane.ExtensionObject(), &host);
  EXPECT_TRUE(plane.ExtensionQuery(&host));
  EXPECT_EQ(plane.DynTypeId(), 10u);
  gsl_Plane* const copy = plane.Copy();
  EXPECT_EQ(copy->DynTypeId(), 10u);
  delete copy;
  EXPECT_EQ(destroyed, 1);
}

} // namespace
