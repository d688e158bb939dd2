#include "omu_xoObjVarray.h"

#include "Records.h"
#include "cls_MetadataRegistrar.h"
#include "cls_RecordException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

namespace {

using DotArray = omu_xoObjVarray<gsl_Dot>;

/// Counts its live objects.
class CountedDot : public gsl_Dot {
public:
  CountedDot() { ++alive; }
  CountedDot(const CountedDot& other) : gsl_Dot(other) { ++alive; }
  ~CountedDot() override { --alive; }
  CountedDot* Copy() const override { return new CountedDot(*this); }

  static int alive;
};

int CountedDot::alive = 0;

constexpr unsigned int kHostDotTypeId = 0x7F000025u;

/// A datum point class of a host module that writes records of its own class.
class HostDot : public gsl_Dot {
public:
  explicit HostDot(int entity) : gsl_Dot(1, entity) {}
  explicit HostDot(const cls_ReadVisitor& visitor) : gsl_Dot(visitor) {}
  HostDot* Copy() const override { return new HostDot(*this); }
  void DBWrite(const cls_WriteVisitor& visitor) const override {
    if (visitor.StartWrite(kHostDotTypeId, Uid()) == 0) return;
    GetPoint().DBWrite(cls_WriteVisitor(visitor, {-1, "_point"}));
    visitor.WriteString({-1, "_method"}, "gsl_FROM_NODE");
    visitor.WriteInteger({-1, "_entityId"}, GetEntityId());
  }
  static constexpr unsigned int TypeId() { return kHostDotTypeId; }
  static void InitializeMetadata(cls_ClassRegistrar& registrar) {
    registrar.AddClassMD(new cls_TypeAdapter<HostDot>("HostDot", 1, 1u))
        .AddBase(gsl_Dot::TypeId(), [](void* dot) -> void* {
          return static_cast<gsl_Dot*>(static_cast<HostDot*>(dot));
        });
  }
};

template <class T>
omu_xoObjVarray<T> ReadArray(const gsl_RecordStore& store, const cls_Uid* first = nullptr,
                             const cls_Uid* second = nullptr) {
  cls_Load load(store);
  return omu_xoObjVarray<T>(cls_ReadVisitor(load, 0), first, second);
}

} // namespace

TEST(OmuXoObjVarray, NullEntryBetweenTwoDatumPointsKeepsItsPlace) {
  DotArray array(4, 1.5);
  array.Add(new gsl_Dot(1, 10));
  array.Add(nullptr);
  array.Add(new gsl_Dot(2, 20));
  const gsl_RecordStore store = Written(array);
  EXPECT_EQ(TextOf(store), "0x030A000E\n"
                           "  -1 growthRatio_ double 0x1.8p+0\n"
                           "  -1 data_ record 0x00230001 of 1\n"
                           "    record 0x030A0005\n"
                           "      -1 _point record 0x030A0001\n"
                           "        -1 _x double 0x0p+0\n"
                           "        -1 _y double 0x0p+0\n"
                           "        -1 _z double 0x0p+0\n"
                           "      -1 _method string gsl_FROM_NODE\n"
                           "      -1 _instanceId integer 1\n"
                           "      -1 _entityId integer 10\n"
                           "    null 0x030A0005\n"
                           "    record 0x030A0005\n"
                           "      -1 _point record 0x030A0001\n"
                           "        -1 _x double 0x0p+0\n"
                           "        -1 _y double 0x0p+0\n"
                           "        -1 _z double 0x0p+0\n"
                           "      -1 _method string gsl_FROM_NODE\n"
                           "      -1 _instanceId integer 2\n"
                           "      -1 _entityId integer 20\n");
  const DotArray read = ReadArray<gsl_Dot>(store);
  ASSERT_EQ(read.Count(), 3u);
  EXPECT_EQ(read[0]->GetEntityId(), 10);
  EXPECT_EQ(read[0]->Uid(), array[0]->Uid());
  EXPECT_EQ(read[1], nullptr);
  EXPECT_EQ(read[2]->GetEntityId(), 20);
  EXPECT_EQ(read.GrowthRatio(), 1.5);
  EXPECT_EQ(read.Uid(), array.Uid());
  EXPECT_EQ(read.DataUid(), array.DataUid());
  EXPECT_EQ(Written(read).ToBytes(), store.ToBytes());
}

TEST(OmuXoObjVarray, EmptyArrayWritesItsRatioAndAnEmptyList) {
  EXPECT_EQ(TextOf(Written(DotArray(0, 3.0))), "0x030A000E\n"
                                               "  -1 growthRatio_ double 0x1.8p+1\n"
                                               "  -1 data_ record 0x00230001 of 1\n");
  EXPECT_EQ(ReadArray<gsl_Dot>(Written(DotArray())).Count(), 0u);
}

TEST(OmuXoObjVarray, MissingGrowthRatioReadsAsZeroAndTheArrayStillGrows) {
  DotArray read = ReadArray<gsl_Dot>(Without(Written(DotArray()), "growthRatio_"));
  EXPECT_TRUE(SameBits(read.GrowthRatio(), 0.0));
  for (int i = 0; i < 1000; ++i)
    read.Add(new gsl_Dot(0, i));
  EXPECT_EQ(read.Count(), 1000u);
  EXPECT_EQ(read[999]->GetEntityId(), 999);
}

TEST(OmuXoObjVarray, MissingDataReadsAsNoEntriesAndNoDataIdentity) {
  const DotArray read = ReadArray<gsl_Dot>(Without(Written(DotArray()), "data_"));
  EXPECT_EQ(read.Count(), 0u);
  EXPECT_TRUE(read.DataUid().IsNull());
}

TEST(OmuXoObjVarray, ConstructorsKeepOwnersCapacityAndRatio) {
  const cls_Uid first(1, 1);
  const cls_Uid second(2, 2);
  const DotArray plain;
  EXPECT_EQ(plain.FirstOwner(), nullptr);
  EXPECT_EQ(plain.SecondOwner(), nullptr);
  EXPECT_EQ(plain.Capacity(), 0u);
  EXPECT_FALSE(plain.Uid().IsNull());
  EXPECT_FALSE(plain.DataUid().IsNull());
  EXPECT_NE(plain.Uid(), plain.DataUid());

  const DotArray sized(8, 1.25);
  EXPECT_EQ(sized.Capacity(), 8u);
  EXPECT_EQ(sized.GrowthRatio(), 1.25);
  EXPECT_EQ(sized.FirstOwner(), nullptr);

  const DotArray owned(&first, &second);
  EXPECT_EQ(owned.FirstOwner(), &first);
  EXPECT_EQ(owned.SecondOwner(), &second);
  EXPECT_EQ(owned.Count(), 0u);

  const DotArray both(&first, &second, 3, 4.0);
  EXPECT_EQ(both.FirstOwner(), &first);
  EXPECT_EQ(both.SecondOwner(), &second);
  EXPECT_EQ(both.Capacity(), 3u);
  EXPECT_EQ(both.GrowthRatio(), 4.0);

  const DotArray read = ReadArray<gsl_Dot>(Written(plain), &second, &first);
  EXPECT_EQ(read.FirstOwner(), &second);
  EXPECT_EQ(read.SecondOwner(), &first);
}

TEST(OmuXoObjVarray, OwnersAreNotStored) {
  const cls_Uid owner(1, 1);
  DotArray owned(&owner, nullptr);
  const DotArray read = ReadArray<gsl_Dot>(Written(owned));
  EXPECT_EQ(read.FirstOwner(), nullptr);
}

TEST(OmuXoObjVarray, DeletesItsElementsUnlessTheyAreReleased) {
  {
    DotArray array;
    for (int i = 0; i < 5; ++i)
      array.Add(new CountedDot());
    array.Add(nullptr);
    EXPECT_EQ(CountedDot::alive, 5);
    const std::unique_ptr<gsl_Dot> released(array.Release(2));
    EXPECT_EQ(array[2], nullptr);
    EXPECT_EQ(CountedDot::alive, 5);
    array.Clear();
    EXPECT_EQ(array.Count(), 0u);
    EXPECT_EQ(CountedDot::alive, 1);
    array.Add(new CountedDot());
  }
  EXPECT_EQ(CountedDot::alive, 0);
}

TEST(OmuXoObjVarray, ElementsOfOneIdentityAreAllKept) {
  const gsl_Dot dot(1, 1);
  DotArray array;
  for (int i = 0; i < 3; ++i) {
    auto* const copy = new gsl_Dot(dot);
    copy->SetValues(i, 0.0, 0.0);
    array.Add(copy);
  }
  const DotArray read = ReadArray<gsl_Dot>(Written(array));
  for (unsigned int i = 0; i < 3; ++i) {
    EXPECT_EQ(read[i]->GetPoint().x, i);
    EXPECT_EQ(read[i]->Uid(), dot.Uid());
  }
}

TEST(OmuXoObjVarray, PlanesAndAxesHaveArraysOfTheirOwn) {
  omu_xoObjVarray<gsl_Plane> planes;
  planes.Add(new gsl_Plane());
  planes.Add(nullptr);
  const gsl_RecordStore planeStore = Written(planes);
  EXPECT_EQ(planeStore.TypeId(planeStore.Root(0)), 0x030A000Du);
  EXPECT_NE(TextOf(planeStore).find("null 0x030A0004"), std::string::npos);
  EXPECT_EQ(ReadArray<gsl_Plane>(planeStore)[0]->Uid(), planes[0]->Uid());
  EXPECT_EQ(planes.DynTypeId(), 0x030A000Du);

  omu_xoObjVarray<gsl_StLine> axes;
  axes.Add(nullptr);
  axes.Add(new gsl_StLine());
  const gsl_RecordStore axisStore = Written(axes);
  EXPECT_EQ(axisStore.TypeId(axisStore.Root(0)), 0x030A000Au);
  EXPECT_NE(TextOf(axisStore).find("null 0x030A0006"), std::string::npos);
  EXPECT_EQ(ReadArray<gsl_StLine>(axisStore)[1]->Uid(), axes[1]->Uid());
}

TEST(OmuXoObjVarray, DerivedElementsKeepTheirClass) {
  omi_Singleton<cls_MetadataRegistrar>::Instance().initClassMetadata(&HostDot::InitializeMetadata,
                                                                     7);
  DotArray array;
  array.Add(new gsl_Dot(1, 10));
  array.Add(new HostDot(20));
  const DotArray read = ReadArray<gsl_Dot>(Written(array));
  ASSERT_EQ(read.Count(), 2u);
  EXPECT_EQ(dynamic_cast<HostDot*>(read[0]), nullptr);
  ASSERT_NE(dynamic_cast<HostDot*>(read[1]), nullptr);
  EXPECT_EQ(read[1]->GetEntityId(), 20);
  EXPECT_EQ(read[1]->Uid(), array[1]->Uid());
}

TEST(OmuXoObjVarray, ElementOfAnotherClassIsRefusedWithoutALeak) {
  const gsl_RecordStore store = Edited(
      Written(DotArray()), {"data_", [](const cls_WriteVisitor& to, const auto& field) {
                              const cls_WriteVisitor data(to, field);
                              data.StartWrite(cls_kCollectionTypeId, cls_Uid());
                              const std::unique_ptr<cls_ListWriter> list(data.GetListWriter());
                              const cls_WriteRequestListObj first(*list);
                              gsl_Dot().DBWrite(cls_WriteVisitor(first));
                              const cls_WriteRequestListObj second(*list);
                              gsl_Plane().DBWrite(cls_WriteVisitor(second));
                            }});
  EXPECT_THROW(ReadArray<gsl_Dot>(store), cls_RecordException);
}

TEST(OmuXoObjVarray, StoredRatioCannotExhaustMemory) {
  for (const double ratio : {1e300, std::numeric_limits<double>::infinity(), -1e300,
                             std::numeric_limits<double>::quiet_NaN()}) {
    DotArray array(0, ratio);
    for (int i = 0; i < 10; ++i)
      array.Add(nullptr);
    DotArray read = ReadArray<gsl_Dot>(Written(array));
    EXPECT_TRUE(SameBits(read.GrowthRatio(), ratio));
    read.Add(nullptr);
    EXPECT_EQ(read.Count(), 11u);
    EXPECT_LE(read.Capacity(), 2u << 20);
  }
}

TEST(OmuXoObjVarray, IteratesOverItsEntriesInOrder) {
  DotArray array;
  EXPECT_EQ(array.begin(), array.end());
  array.Add(new gsl_Dot(1.0, 0.0, 0.0));
  array.Add(nullptr);
  array.Add(new gsl_Dot(3.0, 0.0, 0.0));
  std::string seen;
  for (gsl_Dot* const dot : array)
    seen += dot != nullptr ? std::to_string(dot->GetPoint().x) + " " : "null ";
  EXPECT_EQ(seen, "1.000000 null 3.000000 ");
  EXPECT_EQ(array.end() - array.begin(), 3);
  EXPECT_EQ(array.begin()[2], array[2]);
  EXPECT_TRUE(array.end() >= array.begin());
  EXPECT_TRUE(array.begin() >= array.begin());
  EXPECT_FALSE(array.begin() >= array.end());
  EXPECT_EQ(std::count(array.begin(), array.end(), nullptr), 1);
  const auto isFar = [](const gsl_Dot* dot) { return dot != nullptr && dot->GetPoint().x > 2.0; };
  EXPECT_EQ(*std::find_if(array.begin(), array.end(), isFar), array[2]);
}

TEST(OmuXoObjVarray, MoveTakesElementsIdentitiesAndOwnersAlong) {
  EXPECT_TRUE(std::is_nothrow_move_constructible_v<DotArray>);
  EXPECT_TRUE(std::is_nothrow_move_assignable_v<DotArray>);
  EXPECT_FALSE(std::is_copy_constructible_v<DotArray>);
  const cls_Uid owners[2] = {cls_Uid::AllocateUid(), cls_Uid::AllocateUid()};
  DotArray source(&owners[0], &owners[1], 8, 1.5);
  source.Add(new CountedDot());
  source.Add(new CountedDot());
  const gsl_Dot* const first = source[0];
  const cls_Uid uid = source.Uid(), dataUid = source.DataUid();

  DotArray array(std::move(source));
  EXPECT_EQ(array.Count(), 2u);
  EXPECT_EQ(array[0], first);
  EXPECT_EQ(array.GrowthRatio(), 1.5);
  EXPECT_EQ(array.Uid(), uid);
  EXPECT_EQ(array.DataUid(), dataUid);
  EXPECT_EQ(array.FirstOwner(), &owners[0]);
  EXPECT_EQ(array.SecondOwner(), &owners[1]);
  EXPECT_EQ(CountedDot::alive, 2);
  // NOLINTBEGIN(bugprone-use-after-move): what a moved array holds is said.
  EXPECT_EQ(source.Count(), 0u);
  EXPECT_NE(source.Uid(), uid);
  EXPECT_FALSE(source.Uid().IsNull());
  EXPECT_NE(source.DataUid(), dataUid);
  EXPECT_EQ(source.FirstOwner(), nullptr);
  source.Add(new CountedDot());
  EXPECT_EQ(source.Count(), 1u);
  // NOLINTEND(bugprone-use-after-move)

  source = std::move(array);
  EXPECT_EQ(CountedDot::alive, 2) << "what it had is deleted";
  EXPECT_EQ(source[0], first);
  EXPECT_EQ(source.Uid(), uid);
  EXPECT_EQ(source.FirstOwner(), &owners[0]);
  EXPECT_EQ(source.SecondOwner(), &owners[1]);
  EXPECT_EQ(array.FirstOwner(), nullptr);  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(array.SecondOwner(), nullptr); // NOLINT(bugprone-use-after-move)
  DotArray& same = source;
  source = std::move(same);
  EXPECT_EQ(source.Count(), 2u);
  EXPECT_EQ(source.Uid(), uid);
  source.Clear();
  EXPECT_EQ(CountedDot::alive, 0);
}

TEST(OmuXoObjVarray, RootOfADerivedClassIsReadAsItsBase) {
  HostDot dot(7);
  dot.SetValues(1.0, 2.0, 3.0);
  const gsl_RecordStore store = Written(dot);
  omi_Singleton<cls_MetadataRegistrar>::Instance().initClassMetadata(&HostDot::InitializeMetadata,
                                                                     3);
  const gsl_Dot read = ReadBack<gsl_Dot>(store);
  EXPECT_EQ(read.GetEntityId(), 7);
  EXPECT_EQ(read.GetPoint().z, 3.0);
  EXPECT_EQ(read.Uid(), dot.Uid());
  EXPECT_THROW(ReadBack<gsl_Point>(store), cls_RecordException) << "derived from another class";
}
