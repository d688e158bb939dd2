#include "Records.h"
#include "cls_RecordException.h"
#include "gsl_Segment.h"

#include <gtest/gtest.h>

TEST(GslSegmentRecord, WritesBothEndsUnderScore) {
  const gsl_Segment segment(gsl_Point(1.0, 0.0, 0.0), gsl_Point(0.0, 2.0, 0.0));
  EXPECT_EQ(TextOf(Written(segment)), "0x030A0008\n"
                                      "  -1 _point1 record 0x030A0001\n"
                                      "    -1 _x double 0x1p+0\n"
                                      "    -1 _y double 0x0p+0\n"
                                      "    -1 _z double 0x0p+0\n"
                                      "  -1 _point2 record 0x030A0001\n"
                                      "    -1 _x double 0x0p+0\n"
                                      "    -1 _y double 0x1p+1\n"
                                      "    -1 _z double 0x0p+0\n");
}

TEST(GslSegmentRecord, ReadsBackWithEveryIdentity) {
  const gsl_Segment segment(gsl_Point(1.0, 2.0, 3.0), gsl_Point(4.0, 5.0, 6.0));
  const gsl_RecordStore store = Written(segment);
  const gsl_Segment read = ReadBack<gsl_Segment>(store);
  EXPECT_EQ(read.Uid(), segment.Uid());
  EXPECT_EQ(read.Point1().uid, segment.Point1().uid);
  EXPECT_EQ(read.Point2().uid, segment.Point2().uid);
  EXPECT_EQ(read.Point2().y, 5.0);
  EXPECT_EQ(Written(read).ToBytes(), store.ToBytes());
}

TEST(GslSegmentRecord, EndsThatCarryOneIdentityKeepTheirOwnCoordinates) {
  const gsl_Point end(1.0, 2.0, 3.0);
  gsl_Point moved(end);
  moved.z = 9.0;
  const gsl_Segment read = ReadBack<gsl_Segment>(Written(gsl_Segment(end, moved)));
  EXPECT_EQ(read.Point1().z, 3.0);
  EXPECT_EQ(read.Point2().z, 9.0);
  EXPECT_EQ(read.Point1().uid, read.Point2().uid);
}

TEST(GslSegmentRecord, MissingEndIsTheOriginWithoutIdentity) {
  const gsl_Segment segment(gsl_Point(1.0, 2.0, 3.0), gsl_Point(4.0, 5.0, 6.0));
  const gsl_Segment read = ReadBack<gsl_Segment>(Without(Written(segment), "_point2"));
  EXPECT_EQ(read.Point1().x, 1.0);
  EXPECT_EQ(read.Point2().x, 0.0);
  EXPECT_TRUE(read.Point2().uid.IsNull());
}

TEST(GslSegmentRecord, EndOfAnotherClassIsRefused) {
  const gsl_RecordStore store =
      Edited(Written(gsl_Segment()), {"_point1", [](const cls_WriteVisitor& to, const auto& f) {
                                        gsl_Segment().DBWrite(cls_WriteVisitor(to, f));
                                      }});
  EXPECT_THROW(ReadBack<gsl_Segment>(store), cls_RecordException);
}
