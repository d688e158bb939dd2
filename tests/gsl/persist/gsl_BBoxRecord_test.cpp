#include "gsl_BBox.h"

#include "Records.h"

#include <gtest/gtest.h>

TEST(GslBBoxRecord, WritesLowThenHigh) {
  EXPECT_EQ(TextOf(Written(gsl_BBox())), "0x030A0007\n"
                                         "  -1 _low record 0x030A0001\n"
                                         "    -1 _x double 0x0p+0\n"
                                         "    -1 _y double 0x0p+0\n"
                                         "    -1 _z double 0x0p+0\n"
                                         "  -1 _high record 0x030A0001\n"
                                         "    -1 _x double -0x1p+0\n"
                                         "    -1 _y double -0x1p+0\n"
                                         "    -1 _z double -0x1p+0\n");
}

TEST(GslBBoxRecord, ReadsBackWithEveryIdentity) {
  gsl_BBox box;
  box.Add(gsl_Point(1.0, 2.0, 3.0));
  box.Add(gsl_Point(-1.0, 5.0, 3.5));
  const gsl_RecordStore store = Written(box);
  const gsl_BBox read = ReadBack<gsl_BBox>(store);
  EXPECT_EQ(read.Uid(), box.Uid());
  EXPECT_EQ(read.min.uid, box.min.uid);
  EXPECT_EQ(read.max.uid, box.max.uid);
  EXPECT_EQ(read.min.x, -1.0);
  EXPECT_EQ(read.max.y, 5.0);
  EXPECT_EQ(Written(read).ToBytes(), store.ToBytes());
}

TEST(GslBBoxRecord, EmptyBoxStaysEmpty) {
  EXPECT_TRUE(ReadBack<gsl_BBox>(Written(gsl_BBox())).IsEmpty());
}

TEST(GslBBoxRecord, CornersAroundOnePointCarryOneIdentityAndAreBothKept) {
  gsl_BBox box;
  const gsl_Point point(1.0, 2.0, 3.0);
  box.Add(point);
  box.Add(gsl_Point(4.0, 4.0, 4.0));
  const gsl_BBox read = ReadBack<gsl_BBox>(Written(box));
  EXPECT_EQ(read.min.x, 1.0);
  EXPECT_EQ(read.max.x, 4.0);
  EXPECT_EQ(read.min.uid, point.uid);
  EXPECT_EQ(read.max.uid, point.uid);
}

TEST(GslBBoxRecord, MissingCornerIsTheOrigin) {
  const gsl_BBox read = ReadBack<gsl_BBox>(Without(Written(gsl_BBox()), "_high"));
  EXPECT_EQ(read.max.x, 0.0);
  EXPECT_TRUE(read.max.uid.IsNull());
}

TEST(GslBBoxRecord, DBWriteIsItsOnlyVirtualOperation) {
  EXPECT_EQ(sizeof(gsl_BBox), sizeof(void*) + 2 * sizeof(gsl_Point) + sizeof(cls_Uid));
}
