#include "Records.h"
#include "cls_MetadataRegistrar.h"
#include "gsl_StLine.h"
#include "omu_ValueErrorException.h"

#include <gtest/gtest.h>

namespace {

constexpr unsigned int kHostAxisTypeId = 0x7F000001u;

/// An axis class of a host module.
class HostAxis : public gsl_StLine {
public:
  HostAxis() = default;
  explicit HostAxis(const cls_ReadVisitor& visitor) : gsl_StLine(visitor) {}
  unsigned int DynTypeId() const override { return kHostAxisTypeId; }
  static constexpr unsigned int TypeId() { return kHostAxisTypeId; }
  static void InitializeMetadata(cls_ClassRegistrar& registrar) {
    registrar.AddClassMD(new cls_TypeAdapter<HostAxis>("HostAxis", 1, 1u))
        .AddBase(gsl_StLine::TypeId(), [](void* axis) -> void* {
          return static_cast<gsl_StLine*>(static_cast<HostAxis*>(axis));
        });
  }
};

gsl_StLine SampleAxis() {
  gsl_StLine axis(gsl_Point(1.0, 2.0, 3.0), gsl_Point(1.0, 2.0, 7.0));
  axis.SetFlip(true);
  axis.SetOk(false);
  axis.ParentIds().Append(3);
  axis.SetOwnerFeatID(9);
  return axis;
}

} // namespace

TEST(GslStLineRecord, WritesOkAfterFlip) {
  EXPECT_EQ(TextOf(Written(SampleAxis())), "0x030A0006\n"
                                           "  0 _point record 0x030A0001\n"
                                           "    -1 _x double 0x1p+0\n"
                                           "    -1 _y double 0x1p+1\n"
                                           "    -1 _z double 0x1.8p+1\n"
                                           "  1 _dir record 0x030A0003\n"
                                           "    -1 _x double 0x0p+0\n"
                                           "    -1 _y double 0x0p+0\n"
                                           "    -1 _z double 0x1p+2\n"
                                           "    -1 _magnitude double 0x1p+2\n"
                                           "  2 _method string FROM_PNT_PNT\n"
                                           "  3 _flip boolean true\n"
                                           "  4 _ok boolean false\n"
                                           "  5 parent_ids record 0x00230001 of 57 3\n"
                                           "  6 owner_feat_id integer 9\n");
}

TEST(GslStLineRecord, ReadsBackBitForBitWithEveryIdentity) {
  const gsl_StLine axis = SampleAxis();
  const gsl_RecordStore store = Written(axis);
  const gsl_StLine read = ReadBack<gsl_StLine>(store);
  EXPECT_EQ(read.Uid(), axis.Uid());
  EXPECT_EQ(read.PointOn().uid, axis.PointOn().uid);
  EXPECT_EQ(read.Method(), FROM_PNT_PNT);
  EXPECT_TRUE(read.Flip());
  EXPECT_FALSE(read.Ok());
  EXPECT_EQ(read.OwnerFeatID(), 9);
  EXPECT_EQ(read.ParentIds(), axis.ParentIds());
  EXPECT_EQ(Written(read).ToBytes(), store.ToBytes());
}

TEST(GslStLineRecord, RegenerateIsTrueWhateverTheStoredOkFlag) {
  gsl_StLine read = ReadBack<gsl_StLine>(Written(SampleAxis()));
  EXPECT_FALSE(read.Ok());
  EXPECT_TRUE(read.Regenerate(nullptr));
}

TEST(GslStLineRecord, MissingFieldsReadAsTheDefaultsOfTheirKinds) {
  const gsl_RecordStore whole = Written(SampleAxis());
  EXPECT_EQ(ReadBack<gsl_StLine>(Without(whole, "_point")).PointOn().z, 0.0);
  EXPECT_EQ(ReadBack<gsl_StLine>(Without(whole, "_dir")).Direction().magnitude, 0.0);
  EXPECT_FALSE(ReadBack<gsl_StLine>(Without(whole, "_flip")).Flip());
  EXPECT_FALSE(ReadBack<gsl_StLine>(Without(whole, "_ok")).Ok());
  EXPECT_TRUE(ReadBack<gsl_StLine>(Without(whole, "parent_ids")).ParentIds().IsEmpty());
  EXPECT_EQ(ReadBack<gsl_StLine>(Without(whole, "owner_feat_id")).OwnerFeatID(), 0);
  EXPECT_THROW(ReadBack<gsl_StLine>(Without(whole, "_method")), omu_ValueErrorException);
}

TEST(GslStLineRecord, IsAItsClassAndRegisteredBases) {
  EXPECT_TRUE(gsl_StLine().IsA(0x030A0006u));
  EXPECT_FALSE(gsl_StLine().IsA(0x030A0004u));
  const HostAxis axis;
  EXPECT_TRUE(axis.IsA(kHostAxisTypeId));
  omi_Singleton<cls_MetadataRegistrar>::Instance().initClassMetadata(&HostAxis::InitializeMetadata,
                                                                     3);
  EXPECT_TRUE(axis.IsA(0x030A0006u));
  EXPECT_FALSE(gsl_StLine().IsA(kHostAxisTypeId));
}
