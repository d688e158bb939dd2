#include "Records.h"
#include "VirtualSlot.h"
#include "gsl_PersistentVector.h"

#include <gtest/gtest.h>
#include <type_traits>

TEST(GslPersistentVectorRecord, WritesTheFourStoredNumbers) {
  gsl_Vector vector(3.0, 4.0, 0.0);
  vector[0] = 8.0;
  EXPECT_EQ(TextOf(Written(gsl_PersistentVector(vector))), "0x030A0003\n"
                                                           "  -1 _x double 0x1p+3\n"
                                                           "  -1 _y double 0x1p+2\n"
                                                           "  -1 _z double 0x0p+0\n"
                                                           "  -1 _magnitude double 0x1.4p+2\n");
}

TEST(GslPersistentVectorRecord, StaleMagnitudeReadsBackUnchanged) {
  gsl_Vector vector(3.0, 4.0, 0.0);
  vector[0] = 8.0;
  const gsl_PersistentVector written(vector);
  const gsl_PersistentVector read = ReadBack<gsl_PersistentVector>(Written(written));
  EXPECT_EQ(read.Vector().x, 8.0);
  EXPECT_EQ(read.Vector().y, 4.0);
  EXPECT_EQ(read.Vector().z, 0.0);
  EXPECT_EQ(read.Vector().magnitude, 5.0);
  EXPECT_EQ(read.Uid(), written.Uid());
}

TEST(GslPersistentVectorRecord, MissingMagnitudeIsZeroAndNotComputed) {
  const gsl_RecordStore store =
      Without(Written(gsl_PersistentVector(gsl_Vector(3.0, 4.0, 0.0))), "_magnitude");
  const gsl_PersistentVector read = ReadBack<gsl_PersistentVector>(store);
  EXPECT_EQ(read.Vector().x, 3.0);
  EXPECT_EQ(read.Vector().magnitude, 0.0);
}

TEST(GslPersistentVectorRecord, DynamicTypeIsItsOwn) {
  EXPECT_EQ(gsl_PersistentVector().DynTypeId(), 0x030A0003u);
}

TEST(GslPersistentVectorRecord, VirtualSlotsStartWithTheTypeIdAndNotWithADestructor) {
  EXPECT_FALSE(std::has_virtual_destructor_v<gsl_PersistentVector>);
  EXPECT_EQ(VirtualSlot(&gsl_PersistentVector::DynTypeId), 0);
  EXPECT_EQ(VirtualSlot(&gsl_PersistentVector::DBWrite), 1);
}
