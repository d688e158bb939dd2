#include "gsl_ModelSegment.h"

#include "CountedDot.h"
#include "FailingAllocation.h"
#include "FeatureList.h"
#include "Numbers.h"
#include "VirtualSlot.h"
#include "omu_PrimTuple.h"

#include <gtest/gtest.h>
#include <memory>
#include <type_traits>

namespace {

std::unique_ptr<omu_PrimTuple> TupleOf(const gsl_ModelSegment& segment) {
  omu_Primitive* const primitive = omu_ReturnPrim(segment);
  auto* const tuple = dynamic_cast<omu_PrimTuple*>(primitive);
  EXPECT_NE(tuple, nullptr);
  return std::unique_ptr<omu_PrimTuple>(tuple);
}

void ExpectTuple(const gsl_ModelSegment& segment, double x, double y, double z) {
  const std::unique_ptr<omu_PrimTuple> tuple = TupleOf(segment);
  ASSERT_EQ(tuple->Count(), 3u);
  EXPECT_EQ(tuple->Kind(), 40);
  EXPECT_EQ(tuple->Number(0), x);
  EXPECT_EQ(tuple->Number(1), y);
  EXPECT_EQ(tuple->Number(2), z);
}

TEST(GslModelSegment, DefaultHasNoEnds) {
  const gsl_ModelSegment segment;
  EXPECT_FALSE(segment.HasPoint1());
  EXPECT_FALSE(segment.HasPoint2());
  EXPECT_EQ(segment.Length(), 0.0);
  EXPECT_XYZ(segment.Direction(), 0.0, 0.0, 1.0);
  EXPECT_EQ(segment.Direction().magnitude, 1.0);
  EXPECT_FALSE(segment.Uid().IsNull());
}

TEST(GslModelSegment, DirectionRunsFromTheFirstEndAndIsNotNormalised) {
  const gsl_ModelSegment segment(gsl_Dot(1.0, 0.0, 0.0), gsl_Dot(4.0, 0.0, 4.0));
  EXPECT_XYZ(segment.Direction(), 3.0, 0.0, 4.0);
  EXPECT_EQ(segment.Direction().magnitude, 5.0);
  EXPECT_EQ(segment.Length(), 5.0);
}

TEST(GslModelSegment, HoldsCopiesOfTheDotsWithTheirIdentities) {
  gsl_Dot p1(7, 42);
  const gsl_Dot p2(1.0, 2.0, 3.0);
  const gsl_ModelSegment segment(p1, p2);
  p1.SetValues(9.0, 9.0, 9.0);
  EXPECT_NE(&segment.Point1(), &p1);
  EXPECT_XYZ(segment.Point1().GetPoint(), 0.0, 0.0, 0.0);
  EXPECT_EQ(segment.Point1().GetMethod(), gsl_FROM_NODE);
  EXPECT_EQ(segment.Point1().GetEntityId(), 42);
  EXPECT_EQ(segment.Point1().Uid(), p1.Uid());
  EXPECT_EQ(segment.Point2().Uid(), p2.Uid());
}

TEST(GslModelSegment, SegmentsOfTheSameDotsDoNotShareThem) {
  const gsl_Dot p1(1.0, 0.0, 0.0);
  const gsl_Dot p2(2.0, 0.0, 0.0);
  const gsl_ModelSegment a(p1, p2);
  const gsl_ModelSegment b(p1, p2);
  EXPECT_NE(&a.Point1(), &b.Point1());
  EXPECT_NE(&a.Point2(), &b.Point2());
  EXPECT_NE(a.Uid(), b.Uid());
}

TEST(GslModelSegment, EndsOfOneDotAreNotShared) {
  const gsl_Dot p(1.0, 0.0, 0.0);
  const gsl_ModelSegment segment(p, p);
  EXPECT_NE(&segment.Point1(), &segment.Point2());
}

TEST(GslModelSegment, CopySharesTheDotsAndKeepsTheIdentity) {
  const CountedDot p1(gsl_Point(1.0, 0.0, 0.0));
  const CountedDot p2(gsl_Point(2.0, 0.0, 0.0));
  const gsl_ModelSegment segment(p1, p2);
  const int copies = CountedDot::copies;
  const gsl_ModelSegment copy(segment);
  EXPECT_EQ(CountedDot::copies, copies);
  EXPECT_EQ(&copy.Point1(), &segment.Point1());
  EXPECT_EQ(&copy.Point2(), &segment.Point2());
  EXPECT_EQ(copy.Uid(), segment.Uid());
}

TEST(GslModelSegment, AssignmentSharesTheDotsAndTakesTheIdentity) {
  const gsl_ModelSegment segment(gsl_Dot(1.0, 0.0, 0.0), gsl_Dot(2.0, 0.0, 0.0));
  gsl_ModelSegment other(gsl_Dot(3.0, 0.0, 0.0), gsl_Dot(4.0, 0.0, 0.0));
  gsl_ModelSegment& result = (other = segment);
  EXPECT_EQ(&result, &other);
  EXPECT_EQ(&other.Point1(), &segment.Point1());
  EXPECT_EQ(&other.Point2(), &segment.Point2());
  EXPECT_EQ(other.Uid(), segment.Uid());
  other = gsl_ModelSegment();
  EXPECT_FALSE(other.HasPoint1());
  EXPECT_TRUE(segment.HasPoint1());
}

TEST(GslModelSegment, AssignmentToItselfKeepsEverything) {
  gsl_ModelSegment segment(gsl_Dot(1.0, 0.0, 0.0), gsl_Dot(2.0, 0.0, 0.0));
  const gsl_Dot* const first = &segment.Point1();
  const gsl_ModelSegment& same = segment;
  segment = same;
  EXPECT_EQ(&segment.Point1(), first);
  EXPECT_EQ(segment.Length(), 1.0);
}

TEST(GslModelSegment, RegeneratingACopyLeavesTheSourceAlone) {
  const gsl_ModelSegment segment(CountedDot(gsl_Point(1.0, 0.0, 0.0)),
                                 CountedDot(gsl_Point(5.0, 0.0, 0.0)));
  gsl_ModelSegment copy(segment);
  copy.Regenerate(nullptr);
  EXPECT_XYZ(segment.Point1().GetPoint(), 1.0, 0.0, 0.0);
  EXPECT_XYZ(segment.Point2().GetPoint(), 5.0, 0.0, 0.0);
  EXPECT_XYZ(copy.Point1().GetPoint(), 2.0, 0.0, 0.0);
  EXPECT_XYZ(copy.Point2().GetPoint(), 6.0, 0.0, 0.0);
  EXPECT_NE(&copy.Point1(), &segment.Point1());
  EXPECT_NE(&copy.Point2(), &segment.Point2());
  EXPECT_EQ(copy.Point1().Uid(), segment.Point1().Uid());
}

TEST(GslModelSegment, RegenerateClonesPlainDotsToo) {
  const gsl_ModelSegment segment(gsl_Dot(1.0, 0.0, 0.0), gsl_Dot(5.0, 0.0, 0.0));
  gsl_ModelSegment copy(segment);
  copy.Regenerate(nullptr);
  EXPECT_NE(&copy.Point1(), &segment.Point1());
  EXPECT_EQ(copy.Length(), 4.0);
}

TEST(GslModelSegment, RegenerateOfAnUnsharedSegmentClonesNothing) {
  gsl_ModelSegment segment(CountedDot(gsl_Point(1.0, 0.0, 0.0)),
                           CountedDot(gsl_Point(5.0, 0.0, 0.0)));
  const gsl_Dot* const first = &segment.Point1();
  const int copies = CountedDot::copies;
  segment.Regenerate(nullptr);
  EXPECT_EQ(CountedDot::copies, copies);
  EXPECT_EQ(&segment.Point1(), first);
}

TEST(GslModelSegment, RegeneratePassesTheFeatureListAndIgnoresTheResult) {
  const ftr_FeatureList* const features = UnreadableList();
  gsl_ModelSegment segment(CountedDot(gsl_Point(1.0, 0.0, 0.0)),
                           CountedDot(gsl_Point(5.0, 0.0, 0.0)));
  CountedDot::lastFeatures = nullptr;
  segment.Regenerate(features);
  EXPECT_EQ(CountedDot::lastFeatures.load(), features);
  // The first dot returns false, and the second is still regenerated.
  EXPECT_EQ(dynamic_cast<const CountedDot&>(segment.Point2()).regenerated, 1);
}

/// Records its mark when it is regenerated.
class OrderedDot : public gsl_Dot {
public:
  explicit OrderedDot(int markOfDot) : mark(markOfDot) {}
  OrderedDot* Copy() const override { return new OrderedDot(*this); }
  bool Regenerate(const ftr_FeatureList*) override {
    order = 10 * order + mark;
    return true;
  }

  int mark;
  static inline int order = 0;
};

TEST(GslModelSegment, RegenerateTakesTheFirstEndFirst) {
  OrderedDot::order = 0;
  gsl_ModelSegment segment(OrderedDot(1), OrderedDot(2));
  segment.Regenerate(nullptr);
  EXPECT_EQ(OrderedDot::order, 12);
}

TEST(GslModelSegment, RegenerateOfEmptyEndsDoesNothing) {
  gsl_ModelSegment segment;
  segment.Regenerate(nullptr);
  EXPECT_FALSE(segment.HasPoint1());
}

TEST(GslModelSegment, DerivedDotsKeepTheirTypeThroughEverything) {
  const int before = CountedDot::live;
  {
    const gsl_ModelSegment segment(CountedDot(gsl_Point(1.0, 0.0, 0.0), 11),
                                   CountedDot(gsl_Point(5.0, 0.0, 0.0), 22));
    gsl_ModelSegment copy(segment);
    gsl_ModelSegment assigned;
    assigned = copy;
    copy.Regenerate(nullptr);
    for (const gsl_ModelSegment* const s : {&segment, static_cast<const gsl_ModelSegment*>(&copy),
                                            static_cast<const gsl_ModelSegment*>(&assigned)}) {
      EXPECT_EQ(dynamic_cast<const CountedDot&>(s->Point1()).mark, 11);
      EXPECT_EQ(dynamic_cast<const CountedDot&>(s->Point2()).mark, 22);
    }
    EXPECT_EQ(dynamic_cast<const CountedDot&>(copy.Point1()).regenerated, 1);
    EXPECT_EQ(dynamic_cast<const CountedDot&>(segment.Point1()).regenerated, 0);
  }
  EXPECT_EQ(CountedDot::live, before);
}

TEST(GslModelSegment, LiveDotsAreCountedExactly) {
  const int before = CountedDot::live;
  auto segment =
      std::make_unique<gsl_ModelSegment>(CountedDot(gsl_Point()), CountedDot(gsl_Point()));
  EXPECT_EQ(CountedDot::live, before + 2);
  auto copy = std::make_unique<gsl_ModelSegment>(*segment);
  EXPECT_EQ(CountedDot::live, before + 2);
  segment.reset();
  EXPECT_EQ(CountedDot::live, before + 2);
  auto third = std::make_unique<gsl_ModelSegment>(*copy);
  third->Regenerate(nullptr);
  EXPECT_EQ(CountedDot::live, before + 4);
  *third = *copy;
  EXPECT_EQ(CountedDot::live, before + 2);
  copy.reset();
  third.reset();
  EXPECT_EQ(CountedDot::live, before);
}

TEST(GslModelSegment, DotThatCannotBeCopiedLeavesTheEndEmpty) {
  CountedDot uncopyable(gsl_Point(1.0, 0.0, 0.0));
  uncopyable.copyable = false;
  const gsl_ModelSegment segment(uncopyable, gsl_Dot(2.0, 0.0, 0.0));
  EXPECT_FALSE(segment.HasPoint1());
  EXPECT_TRUE(segment.HasPoint2());
}

TEST(GslModelSegment, OneEmptyEndMakesTheLengthZeroAndTheDirectionUnitZ) {
  CountedDot uncopyable(gsl_Point(1.0, 0.0, 0.0));
  uncopyable.copyable = false;
  const CountedDot dot(gsl_Point(2.0, 0.0, 0.0));
  for (const bool first : {false, true}) {
    gsl_ModelSegment segment(first ? uncopyable : dot, first ? dot : uncopyable);
    EXPECT_NE(segment.HasPoint1(), first);
    EXPECT_EQ(segment.HasPoint2(), first);
    EXPECT_EQ(segment.Length(), 0.0);
    EXPECT_XYZ(segment.Direction(), 0.0, 0.0, 1.0);
    ExpectTuple(segment, 0.0, 0.0, 1.0);
    segment.Regenerate(nullptr);
    const gsl_Dot& held = first ? segment.Point2() : segment.Point1();
    EXPECT_EQ(dynamic_cast<const CountedDot&>(held).regenerated, 1);
  }
}

TEST(GslModelSegment, NoMemoryForTheDotOrItsHolderLeavesTheEndEmpty) {
  const CountedDot p(gsl_Point(1.0, 0.0, 0.0));
  const int before = CountedDot::live;
  for (const int successes : {0, 1}) {
    const FailingAllocation failing(successes);
    const gsl_ModelSegment segment(p, p);
    EXPECT_FALSE(segment.HasPoint1());
    EXPECT_FALSE(segment.HasPoint2());
    EXPECT_EQ(CountedDot::live, before);
  }
}

TEST(GslModelSegment, RegenerateWithoutMemoryForTheCloneLeavesThatEndAsItIs) {
  const gsl_ModelSegment segment(CountedDot(gsl_Point(1.0, 0.0, 0.0)),
                                 CountedDot(gsl_Point(5.0, 0.0, 0.0)));
  gsl_ModelSegment copy(segment);
  {
    // Two allocations for the first end's clone, then none.
    const FailingAllocation failing(2);
    copy.Regenerate(nullptr);
  }
  EXPECT_XYZ(copy.Point1().GetPoint(), 2.0, 0.0, 0.0);
  EXPECT_XYZ(copy.Point2().GetPoint(), 5.0, 0.0, 0.0);
  EXPECT_EQ(&copy.Point2(), &segment.Point2());
  EXPECT_XYZ(segment.Point1().GetPoint(), 1.0, 0.0, 0.0);
}

TEST(GslModelSegment, ReturnPrimIsTheUnitDirection) {
  ExpectTuple(gsl_ModelSegment(gsl_Dot(0.0, 0.0, 0.0), gsl_Dot(3.0, 0.0, 4.0)), 0.6, 0.0, 0.8);
}

TEST(GslModelSegment, ReturnPrimOfAnEmptyEndIsUnitZ) {
  ExpectTuple(gsl_ModelSegment(), 0.0, 0.0, 1.0);
}

TEST(GslModelSegment, ReturnPrimOfEqualEndsIsZero) {
  ExpectTuple(gsl_ModelSegment(gsl_Dot(3.0, 0.0, 4.0), gsl_Dot(3.0, 0.0, 4.0)), 0.0, 0.0, 0.0);
}

TEST(GslModelSegment, ReturnPrimOfAVeryShortSegmentIsStillUnit) {
  ExpectTuple(gsl_ModelSegment(gsl_Dot(0.0, 0.0, 0.0), gsl_Dot(0.0, -1e-9, 0.0)), 0.0, -1.0, 0.0);
}

TEST(GslModelSegment, TypeIdIsFixed) {
  EXPECT_EQ(gsl_ModelSegment::TypeId(), 0x030A000Bu);
  EXPECT_EQ(gsl_ModelSegment().DynTypeId(), gsl_ModelSegment::TypeId());
}

TEST(GslModelSegment, VirtualOperationsKeepTheirSlots) {
  static_assert(!std::has_virtual_destructor_v<gsl_ModelSegment>, "the table starts at slot 0");
  EXPECT_EQ(VirtualSlot(&gsl_ModelSegment::DynTypeId), 0);
  EXPECT_EQ(VirtualSlot(&gsl_ModelSegment::DBWrite), 1);
}

} // namespace
