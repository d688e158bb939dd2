#include "gsl_ModelSegment.h"

#include "FailingAllocation.h"
#include "Records.h"
#include "cls_MetadataRegistrar.h"
#include "cls_RecordException.h"

#include <gtest/gtest.h>

#include <new>

namespace {

constexpr unsigned int kHostDotTypeId = 0x7F000002u;

/// A datum point class of a host module, which shows whether Regenerate was called.
class HostDot : public gsl_Dot {
public:
  HostDot(double x, double y, double z) : gsl_Dot(x, y, z) {}
  explicit HostDot(const cls_ReadVisitor& visitor) : gsl_Dot(visitor) {}
  HostDot* Copy() const override { return new HostDot(*this); }
  bool Regenerate(const ftr_FeatureList*) override {
    SetValues(100.0, 0.0, 0.0);
    return true;
  }
  unsigned int DynTypeId() const override { return kHostDotTypeId; }
  void DBWrite(const cls_WriteVisitor& visitor) const override {
    if (visitor.StartWrite(kHostDotTypeId, Uid()) == 0) return;
    GetPoint().DBWrite(cls_WriteVisitor(visitor, {-1, "_point"}));
    visitor.WriteString({-1, "_method"}, "gsl_FROM_VERTEX");
  }

  static constexpr unsigned int TypeId() { return kHostDotTypeId; }
  static void InitializeMetadata(cls_ClassRegistrar& registrar) {
    registrar.AddClassMD(new cls_TypeAdapter<HostDot>("HostDot", 1, 1u))
        .AddBase(gsl_Dot::TypeId(), [](void* dot) -> void* {
          return static_cast<gsl_Dot*>(static_cast<HostDot*>(dot));
        });
  }
};

/// Returns the record of a model segment with one end only.
gsl_RecordStore HalfSegment() {
  return Edited(Written(gsl_ModelSegment(gsl_Dot(1.0, 0.0, 0.0), gsl_Dot())),
                {"point2", [](const cls_WriteVisitor& to, const cls_FieldHandle& field) {
                   to.WriteNullObject(field, gsl_Dot::TypeId());
                 }});
}

} // namespace

TEST(GslModelSegmentRecord, WritesItsEndsWithoutUnderscores) {
  EXPECT_EQ(TextOf(Written(gsl_ModelSegment(gsl_Dot(1.0, 0.0, 0.0), gsl_Dot(0, 5)))),
            "0x030A000B\n"
            "  0 point1 object 0x030A0005\n"
            "    -1 _point record 0x030A0001\n"
            "      -1 _x double 0x1p+0\n"
            "      -1 _y double 0x0p+0\n"
            "      -1 _z double 0x0p+0\n"
            "    -1 _method string gsl_FROM_POINT\n"
            "    -1 _instanceId integer 0\n"
            "    -1 _entityId integer -1\n"
            "  1 point2 object 0x030A0005\n"
            "    -1 _point record 0x030A0001\n"
            "      -1 _x double 0x0p+0\n"
            "      -1 _y double 0x0p+0\n"
            "      -1 _z double 0x0p+0\n"
            "    -1 _method string gsl_FROM_NODE\n"
            "    -1 _instanceId integer 0\n"
            "    -1 _entityId integer 5\n");
}

TEST(GslModelSegmentRecord, EmptyEndIsWrittenAsANullObject) {
  EXPECT_EQ(TextOf(Written(gsl_ModelSegment())), "0x030A000B\n"
                                                 "  0 point1 null 0x030A0005\n"
                                                 "  1 point2 null 0x030A0005\n");
}

TEST(GslModelSegmentRecord, EmptySecondEndStaysEmpty) {
  const gsl_ModelSegment read = ReadBack<gsl_ModelSegment>(HalfSegment());
  EXPECT_TRUE(read.HasPoint1());
  EXPECT_FALSE(read.HasPoint2());
  EXPECT_EQ(read.Point1().GetPoint().x, 1.0);
  // Written again, the first end is a nested record and the second a null object.
  EXPECT_EQ(TextOf(Written(read)), "0x030A000B\n"
                                   "  0 point1 object 0x030A0005\n"
                                   "    -1 _point record 0x030A0001\n"
                                   "      -1 _x double 0x1p+0\n"
                                   "      -1 _y double 0x0p+0\n"
                                   "      -1 _z double 0x0p+0\n"
                                   "    -1 _method string gsl_FROM_POINT\n"
                                   "    -1 _instanceId integer 0\n"
                                   "    -1 _entityId integer -1\n"
                                   "  1 point2 null 0x030A0005\n");
}

TEST(GslModelSegmentRecord, ReadsBackWithEveryIdentity) {
  const gsl_ModelSegment segment(gsl_Dot(1.0, 2.0, 3.0), gsl_Dot(8, 9));
  const gsl_RecordStore store = Written(segment);
  const gsl_ModelSegment read = ReadBack<gsl_ModelSegment>(store);
  EXPECT_EQ(read.Uid(), segment.Uid());
  EXPECT_EQ(read.Point1().Uid(), segment.Point1().Uid());
  EXPECT_EQ(read.Point2().Uid(), segment.Point2().Uid());
  EXPECT_EQ(read.Point1().GetPoint().uid, segment.Point1().GetPoint().uid);
  EXPECT_EQ(read.Point2().GetEntityId(), 9);
  EXPECT_EQ(Written(read).ToBytes(), store.ToBytes());
}

TEST(GslModelSegmentRecord, MissingEndsAreEmpty) {
  const gsl_RecordStore whole = Written(gsl_ModelSegment(gsl_Dot(), gsl_Dot()));
  EXPECT_FALSE(ReadBack<gsl_ModelSegment>(Without(whole, "point1")).HasPoint1());
  EXPECT_FALSE(ReadBack<gsl_ModelSegment>(Without(whole, "point2")).HasPoint2());
}

TEST(GslModelSegmentRecord, SegmentsThatShareDatumPointsShareThemAgain) {
  const gsl_ModelSegment segment(gsl_Dot(1.0, 2.0, 3.0), gsl_Dot(4.0, 5.0, 6.0));
  const gsl_ModelSegment copy(segment);
  ASSERT_EQ(&segment.Point1(), &copy.Point1());
  const gsl_RecordStore store = Written(segment, copy);
  // These are two segments, two datum points and the points in them.
  EXPECT_EQ(store.RecordCount(), 6u);
  cls_Load load(store);
  const gsl_ModelSegment first(cls_ReadVisitor(load, 0));
  const gsl_ModelSegment second(cls_ReadVisitor(load, 1));
  EXPECT_EQ(&first.Point1(), &second.Point1());
  EXPECT_EQ(&first.Point2(), &second.Point2());
  EXPECT_NE(&first.Point1(), &first.Point2());
}

TEST(GslModelSegmentRecord, SegmentsOverOneDatumPointWithoutSharingStayApart) {
  const gsl_Dot p(1.0, 2.0, 3.0);
  const gsl_ModelSegment a(p, p);
  EXPECT_NE(&a.Point1(), &a.Point2());
  const gsl_ModelSegment read = ReadBack<gsl_ModelSegment>(Written(a));
  EXPECT_NE(&read.Point1(), &read.Point2());
  EXPECT_EQ(read.Point1().Uid(), read.Point2().Uid());
}

TEST(GslModelSegmentRecord, ChangedCloneOfOneIdentityKeepsItsOwnPlace) {
  omi_Singleton<cls_MetadataRegistrar>::Instance().initClassMetadata(&HostDot::InitializeMetadata,
                                                                     7);
  const gsl_ModelSegment segment(HostDot(1.0, 0.0, 0.0), HostDot(2.0, 0.0, 0.0));
  gsl_ModelSegment moved(segment);
  moved.Regenerate(nullptr);
  ASSERT_EQ(segment.Point1().Uid(), moved.Point1().Uid());
  const gsl_RecordStore store = Written(segment, moved);
  cls_Load load(store);
  const gsl_ModelSegment first(cls_ReadVisitor(load, 0));
  const gsl_ModelSegment second(cls_ReadVisitor(load, 1));
  EXPECT_EQ(first.Point1().GetPoint().x, 1.0);
  EXPECT_EQ(second.Point1().GetPoint().x, 100.0);
}

TEST(GslModelSegmentRecord, DerivedDatumPointKeepsItsClass) {
  omi_Singleton<cls_MetadataRegistrar>::Instance().initClassMetadata(&HostDot::InitializeMetadata,
                                                                     7);
  const gsl_ModelSegment segment(HostDot(1.0, 2.0, 3.0), gsl_Dot());
  const gsl_ModelSegment read = ReadBack<gsl_ModelSegment>(Written(segment));
  EXPECT_NE(dynamic_cast<const HostDot*>(&read.Point1()), nullptr);
  EXPECT_EQ(read.Point1().GetMethod(), gsl_FROM_VERTEX);
  EXPECT_EQ(read.Point1().GetPoint().y, 2.0);
  EXPECT_TRUE(read.Point1().IsA(gsl_Dot::TypeId()));
}

TEST(GslModelSegmentRecord, EndThatIsNotADatumPointIsRefused) {
  const gsl_RecordStore store =
      Edited(Written(gsl_ModelSegment()), {"point1", [](const cls_WriteVisitor& to, const auto& f) {
                                             gsl_Point().DBWrite(cls_WriteVisitor(to, f));
                                           }});
  EXPECT_THROW(ReadBack<gsl_ModelSegment>(store), cls_RecordException);
}

TEST(GslModelSegmentRecord, EndThatFindsNoMemoryIsAnErrorAndNotAnEmptyEnd) {
  const gsl_RecordStore store = Written(gsl_ModelSegment(gsl_Dot(1, 1), gsl_Dot(2, 2)));
  cls_Load load(store);
  {
    const FailingAllocation none(0);
    EXPECT_THROW(gsl_ModelSegment(cls_ReadVisitor(load, 0)), std::bad_alloc);
    EXPECT_GT(none.Refused(), 0);
  }
  // The same load goes on once there is memory again.
  EXPECT_EQ(gsl_ModelSegment(cls_ReadVisitor(load, 0)).Point1().GetEntityId(), 1);
}
