#include "gsl_Dot.h"

#include "Records.h"
#include "cls_MetadataRegistrar.h"
#include "omu_ValueErrorException.h"

#include <gtest/gtest.h>

namespace {

constexpr unsigned int kHostDotTypeId = 0x7F000015u;

/// A datum point class of a host module.
class HostDot : public gsl_Dot {
public:
  HostDot() = default;
  explicit HostDot(const cls_ReadVisitor& visitor) : gsl_Dot(visitor) {}
  unsigned int DynTypeId() const override { return kHostDotTypeId; }
  static constexpr unsigned int TypeId() { return kHostDotTypeId; }
  static void InitializeMetadata(cls_ClassRegistrar& registrar) {
    registrar.AddClassMD(new cls_TypeAdapter<HostDot>("HostDot", 1, 1u))
        .AddBase(gsl_Dot::TypeId(), [](void* dot) -> void* {
          return static_cast<gsl_Dot*>(static_cast<HostDot*>(dot));
        });
  }
};

gsl_Dot SampleDot() {
  gsl_Dot dot(7, 42);
  dot.SetValues(1.0, 2.0, 4.0);
  return dot;
}

} // namespace

TEST(GslDotRecord, WritesItsFieldsByNameAlone) {
  EXPECT_EQ(TextOf(Written(SampleDot())), "0x030A0005\n"
                                          "  -1 _point record 0x030A0001\n"
                                          "    -1 _x double 0x1p+0\n"
                                          "    -1 _y double 0x1p+1\n"
                                          "    -1 _z double 0x1p+2\n"
                                          "  -1 _method string gsl_FROM_NODE\n"
                                          "  -1 _instanceId integer 7\n"
                                          "  -1 _entityId integer 42\n");
}

TEST(GslDotRecord, ReadsBackWithEveryIdentity) {
  const gsl_Dot dot = SampleDot();
  const gsl_RecordStore store = Written(dot);
  const gsl_Dot read = ReadBack<gsl_Dot>(store);
  EXPECT_EQ(read.Uid(), dot.Uid());
  EXPECT_EQ(read.GetPoint().uid, dot.GetPoint().uid);
  EXPECT_EQ(read.GetPoint().z, 4.0);
  EXPECT_EQ(read.GetMethod(), gsl_FROM_NODE);
  EXPECT_EQ(read.GetInstanceId(), 7);
  EXPECT_EQ(read.GetEntityId(), 42);
  EXPECT_EQ(Written(read).ToBytes(), store.ToBytes());
}

TEST(GslDotRecord, MissingEntityIdReadsAsZeroNotMinusOne) {
  const gsl_Dot plain;
  EXPECT_EQ(plain.GetEntityId(), -1);
  EXPECT_EQ(ReadBack<gsl_Dot>(Without(Written(plain), "_entityId")).GetEntityId(), 0);
  EXPECT_EQ(ReadBack<gsl_Dot>(Written(plain)).GetEntityId(), -1);
}

TEST(GslDotRecord, MissingNumbersAndPointAreZero) {
  const gsl_RecordStore whole = Written(SampleDot());
  EXPECT_EQ(ReadBack<gsl_Dot>(Without(whole, "_instanceId")).GetInstanceId(), 0);
  EXPECT_EQ(ReadBack<gsl_Dot>(Without(whole, "_point")).GetPoint().x, 0.0);
}

TEST(GslDotRecord, MissingMethodFailsToRead) {
  try {
    ReadBack<gsl_Dot>(Without(Written(SampleDot()), "_method"));
    FAIL() << "nothing was thrown";
  } catch (const omu_ValueErrorException& e) {
    const std::string message = e.what();
    EXPECT_EQ(message.rfind("omu_PrimEnum(const cow_String&) - str not allowed:   Permissible: "
                            "gsl_FROM_POINT, ",
                            0),
              0u);
    EXPECT_EQ(e.LineNumber(), 81);
  }
}

TEST(GslDotRecord, IsADatumPoint) {
  const gsl_Dot dot;
  EXPECT_TRUE(dot.IsA(gsl_Dot::TypeId()));
  EXPECT_FALSE(dot.IsA(0x030A0004u));
}

TEST(GslDotRecord, IsADerivedClassOnlyOnceThatIsRegistered) {
  const HostDot dot;
  const gsl_Dot& base = dot;
  EXPECT_TRUE(base.IsA(kHostDotTypeId));
  EXPECT_FALSE(base.IsA(gsl_Dot::TypeId()));
  omi_Singleton<cls_MetadataRegistrar>::Instance().initClassMetadata(&HostDot::InitializeMetadata,
                                                                     3);
  EXPECT_TRUE(base.IsA(gsl_Dot::TypeId()));
  EXPECT_TRUE(base.IsA(kHostDotTypeId));
  EXPECT_FALSE(base.IsA(0x030A0004u));
  EXPECT_FALSE(gsl_Dot().IsA(kHostDotTypeId));
}

TEST(GslDotRecord, TypeIdIsItsRow) {
  EXPECT_EQ(gsl_Dot::TypeId(), 0x030A0000u + 5);
}
