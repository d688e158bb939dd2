#include "Records.h"
#include "gsl_Point.h"

#include <gtest/gtest.h>

#include <limits>

TEST(GslPointRecord, WritesItsCoordinatesByNameAlone) {
  EXPECT_EQ(TextOf(Written(gsl_Point(0.5, -0.0, 3.0))), "0x030A0001\n"
                                                        "  -1 _x double 0x1p-1\n"
                                                        "  -1 _y double -0x0p+0\n"
                                                        "  -1 _z double 0x1.8p+1\n");
}

TEST(GslPointRecord, ReadsBackSpecialValuesBitForBit) {
  const double infinity = std::numeric_limits<double>::infinity();
  const double tiny = std::numeric_limits<double>::denorm_min();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const gsl_Point point(-infinity, -tiny, nan);
  const gsl_Point read = ReadBack<gsl_Point>(Written(point));
  EXPECT_TRUE(SameBits(read.x, -infinity));
  EXPECT_TRUE(SameBits(read.y, -tiny));
  EXPECT_TRUE(SameBits(read.z, nan));
  EXPECT_EQ(read.uid, point.uid);
}

TEST(GslPointRecord, MissingCoordinatesAreZero) {
  const gsl_RecordStore whole = Written(gsl_Point(1.0, 2.0, 3.0));
  const gsl_Point read = ReadBack<gsl_Point>(Without(whole, "_y"));
  EXPECT_EQ(read.x, 1.0);
  EXPECT_EQ(read.y, 0.0);
  EXPECT_EQ(read.z, 3.0);
}

TEST(GslPointRecord, DBWriteIsItsOnlyVirtualOperation) {
  // The members are the pointer to the table, three coordinates and the identity.
  EXPECT_EQ(sizeof(gsl_Point), sizeof(void*) + 3 * sizeof(double) + sizeof(cls_Uid));
}

TEST(GslPointRecord, EqualPointsWithOneIdentityAreBothWritten) {
  const gsl_Point point(1.0, 2.0, 3.0);
  gsl_Point moved(point);
  moved.x = 5.0;
  const gsl_RecordStore store = Written(point, moved);
  EXPECT_EQ(ReadBack<gsl_Point>(store, 0).x, 1.0);
  EXPECT_EQ(ReadBack<gsl_Point>(store, 1).x, 5.0);
  EXPECT_EQ(ReadBack<gsl_Point>(store, 1).uid, point.uid);
}
