#include "Records.h"
#include "gsl_Plane.h"
#include "omu_ValueErrorException.h"

#include <gtest/gtest.h>

namespace {

gsl_Plane SamplePlane() {
  gsl_Plane plane(gsl_Point(1.0, -2.0, 0.5), gsl_Vector(0.0, 0.0, -3.0));
  plane.SetMethod(FROM_ELEM_FACE);
  plane.SetFlip(true);
  plane.ParentIds().Append(7);
  plane.ParentIds().Append(4294967295u);
  plane.SetOwnerFeatID(-12);
  return plane;
}

} // namespace

TEST(GslPlaneRecord, WritesFieldsInOrderOkFirst) {
  EXPECT_EQ(TextOf(Written(SamplePlane())), "0x030A0004\n"
                                            "  0 _ok boolean true\n"
                                            "  1 _point record 0x030A0001\n"
                                            "    -1 _x double 0x1p+0\n"
                                            "    -1 _y double -0x1p+1\n"
                                            "    -1 _z double 0x1p-1\n"
                                            "  2 _normal record 0x030A0003\n"
                                            "    -1 _x double 0x0p+0\n"
                                            "    -1 _y double 0x0p+0\n"
                                            "    -1 _z double -0x1.8p+1\n"
                                            "    -1 _magnitude double 0x1.8p+1\n"
                                            "  3 _method string FROM_ELEM_FACE\n"
                                            "  4 _flip boolean true\n"
                                            "  5 parent_ids record 0x00230001 of 57 7 4294967295\n"
                                            "  6 owner_feat_id integer -12\n");
}

TEST(GslPlaneRecord, ReadsBackBitForBitWithEveryIdentity) {
  const gsl_Plane plane = SamplePlane();
  const gsl_RecordStore store = Written(plane);
  const gsl_Plane read = ReadBack<gsl_Plane>(store);
  EXPECT_EQ(read.Uid(), plane.Uid());
  EXPECT_EQ(read.PointOn().uid, plane.PointOn().uid);
  EXPECT_EQ(read.ParentIds().Uid(), plane.ParentIds().Uid());
  EXPECT_EQ(read.ParentIds(), plane.ParentIds());
  EXPECT_EQ(read.Method(), FROM_ELEM_FACE);
  EXPECT_TRUE(read.Flip());
  EXPECT_TRUE(read.Ok());
  EXPECT_EQ(read.OwnerFeatID(), -12);
  EXPECT_EQ(read.Direction().z, -3.0);
  EXPECT_EQ(read.Direction().magnitude, 3.0);
  EXPECT_EQ(Written(read).ToBytes(), store.ToBytes());
}

TEST(GslPlaneRecord, ClearedOkFlagIsKept) {
  gsl_Plane plane;
  plane.SetOk(false);
  gsl_Plane read = ReadBack<gsl_Plane>(Written(plane));
  EXPECT_FALSE(read.Ok());
  EXPECT_FALSE(read.Regenerate(nullptr));
}

TEST(GslPlaneRecord, MissingFieldsReadAsTheDefaultsOfTheirKinds) {
  const gsl_RecordStore whole = Written(SamplePlane());
  EXPECT_FALSE(ReadBack<gsl_Plane>(Without(whole, "_ok")).Ok());
  EXPECT_FALSE(ReadBack<gsl_Plane>(Without(whole, "_flip")).Flip());
  EXPECT_TRUE(ReadBack<gsl_Plane>(Without(whole, "parent_ids")).ParentIds().IsEmpty());
  EXPECT_EQ(ReadBack<gsl_Plane>(Without(whole, "owner_feat_id")).OwnerFeatID(), 0);

  const gsl_Plane withoutPoint = ReadBack<gsl_Plane>(Without(whole, "_point"));
  EXPECT_EQ(withoutPoint.PointOn().x, 0.0);
  EXPECT_EQ(withoutPoint.PointOn().y, 0.0);
  EXPECT_EQ(withoutPoint.PointOn().z, 0.0);
  EXPECT_TRUE(withoutPoint.PointOn().uid.IsNull());

  const gsl_Plane withoutNormal = ReadBack<gsl_Plane>(Without(whole, "_normal"));
  EXPECT_EQ(withoutNormal.Direction().x, 0.0);
  EXPECT_EQ(withoutNormal.Direction().magnitude, 0.0);
}

TEST(GslPlaneRecord, MissingMethodThrows) {
  EXPECT_THROW(ReadBack<gsl_Plane>(Without(Written(SamplePlane()), "_method")),
               omu_ValueErrorException);
}

TEST(GslPlaneRecord, UnknownMethodNameThrowsItsMessage) {
  const gsl_RecordStore bad = Edited(
      Written(SamplePlane()), {"_method", [](const cls_WriteVisitor& to, const cls_FieldHandle& f) {
                                 to.WriteString(f, "gsl_FROM_POINT");
                               }});
  try {
    ReadBack<gsl_Plane>(bad);
    FAIL() << "nothing was thrown";
  } catch (const omu_ValueErrorException& e) {
    EXPECT_STREQ(e.what(),
                 "omu_PrimEnum(const cow_String&) - str not allowed: gsl_FROM_POINT  Permissible: "
                 "FROM_POINT_VECTOR, FROM_FACE, FROM_DATUM_PLANE, FROM_ELEM_FACE, PLANE_INVALID");
    EXPECT_EQ(e.LineNumber(), 81);
  }
}

TEST(GslPlaneRecord, ValueWithoutANameCannotBeWritten) {
  gsl_Plane plane;
  plane.SetMethod(gsl_DirMethod(99));
  gsl_RecordStore store;
  cls_Save save(store);
  EXPECT_THROW(plane.DBWrite(cls_WriteVisitor(save)), omu_ValueErrorException);
  EXPECT_EQ(store.RootCount(), 0u);
  EXPECT_EQ(store.RecordCount(), 0u);
}

TEST(GslPlaneRecord, FieldsAreFoundByNameInAnyOrderAmongOthers) {
  const gsl_RecordStore store =
      Recorded(gsl_Plane::TypeId(), cls_Uid(1, 2), [](const cls_WriteVisitor& to) {
        to.WriteInteger({3, "owner_feat_id"}, 5);
        to.WriteDouble({-1, "something_else"}, 1.0);
        to.WriteString({0, "_method"}, "FROM_FACE");
        to.WriteBoolean({9, "_ok"}, true);
      });
  gsl_Plane plane = ReadBack<gsl_Plane>(store);
  EXPECT_EQ(plane.OwnerFeatID(), 5);
  EXPECT_EQ(plane.Method(), FROM_FACE);
  EXPECT_TRUE(plane.Ok());
  EXPECT_EQ(plane.Uid(), cls_Uid(1, 2));
}

TEST(GslPlaneRecord, IsAItsOwnClassOnly) {
  const gsl_Plane plane;
  EXPECT_TRUE(plane.IsA(0x030A0004u));
  EXPECT_FALSE(plane.IsA(0x030A0006u));
  EXPECT_FALSE(plane.IsA(0u));
}
