#include "cls_xo1DArrayList.h"

#include "Records.h"
#include "cls_RecordException.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

namespace {

template <class T>
cls_xo1DArrayList<T> ReadList(const gsl_RecordStore& store) {
  cls_Load load(store);
  const cls_ReadVisitor root(load, 0);
  return cls_xo1DArrayList<T>(root, root.GetUid());
}

} // namespace

TEST(ClsXo1DArrayList, WritesEveryElementInOrder) {
  cls_xo1DArrayList<gsl_Point> list;
  list.Append(gsl_Point(1.0, 0.0, 0.0));
  list.Append(gsl_Point(0.0, 2.0, 0.0));
  EXPECT_EQ(TextOf(Written(list)), "0x00230001 of 1\n"
                                   "  record 0x030A0001\n"
                                   "    -1 _x double 0x1p+0\n"
                                   "    -1 _y double 0x0p+0\n"
                                   "    -1 _z double 0x0p+0\n"
                                   "  record 0x030A0001\n"
                                   "    -1 _x double 0x0p+0\n"
                                   "    -1 _y double 0x1p+1\n"
                                   "    -1 _z double 0x0p+0\n");
}

TEST(ClsXo1DArrayList, ReadsBackWithEveryIdentity) {
  cls_xo1DArrayList<gsl_Point> list;
  for (int i = 0; i < 100; ++i)
    list.Append(gsl_Point(i, -i, 0.5 * i));
  const gsl_RecordStore store = Written(list);
  const auto read = ReadList<gsl_Point>(store);
  ASSERT_EQ(read.Count(), 100u);
  EXPECT_EQ(read.Uid(), list.Uid());
  for (std::size_t i = 0; i < 100; ++i) {
    EXPECT_EQ(read[i].uid, list[i].uid);
    EXPECT_EQ(read[i].z, list[i].z);
  }
  EXPECT_EQ(Written(read).ToBytes(), store.ToBytes());
}

TEST(ClsXo1DArrayList, EmptyList) {
  const gsl_RecordStore store = Written(cls_xo1DArrayList<gsl_ModelSegment>());
  EXPECT_EQ(TextOf(store), "0x00230001 of 1\n");
  EXPECT_TRUE(ReadList<gsl_ModelSegment>(store).IsEmpty());
}

TEST(ClsXo1DArrayList, ModelSegmentsShareTheirDatumPointsAgain) {
  cls_xo1DArrayList<gsl_ModelSegment> list;
  const gsl_ModelSegment segment(gsl_Dot(1, 1), gsl_Dot(2, 2));
  list.Append(segment);
  list.Append(gsl_ModelSegment());
  list.Append(segment);
  const auto read = ReadList<gsl_ModelSegment>(Written(list));
  ASSERT_EQ(read.Count(), 3u);
  EXPECT_EQ(&read[0].Point1(), &read[2].Point1());
  EXPECT_FALSE(read[1].HasPoint1());
  EXPECT_EQ(read[0].Uid(), segment.Uid());
  EXPECT_EQ(read[2].Point2().GetEntityId(), 2);
}

TEST(ClsXo1DArrayList, CopiesShareTheirElementsUntilOneChanges) {
  cls_xo1DArrayList<gsl_Point> list;
  list.Append(gsl_Point());
  cls_xo1DArrayList<gsl_Point> copy(list);
  EXPECT_TRUE(copy.Elements().SharesWith(list.Elements()));
  EXPECT_EQ(copy.Uid(), list.Uid());
  copy.Append(gsl_Point());
  EXPECT_EQ(list.Count(), 1u);
  EXPECT_EQ(copy.Count(), 2u);
  copy.Clear();
  EXPECT_TRUE(copy.IsEmpty());
  EXPECT_EQ(list.Count(), 1u);
}

TEST(ClsXo1DArrayList, TakesTheIdentityThatTheCallerRead) {
  const gsl_RecordStore store = Written(cls_xo1DArrayList<gsl_Point>());
  cls_Load load(store);
  const cls_xo1DArrayList<gsl_Point> read(cls_ReadVisitor(load, 0), cls_Uid(3, 4));
  EXPECT_EQ(read.Uid(), cls_Uid(3, 4));
}

TEST(ClsXo1DArrayList, AbsentRecordHasNoElements) {
  const gsl_RecordStore store = Written(gsl_Point());
  cls_Load load(store);
  const cls_ReadVisitor root(load, 0);
  const cls_xo1DArrayList<gsl_Point> read(cls_ReadVisitor(root, {-1, "list"}), cls_Uid());
  EXPECT_TRUE(read.IsEmpty());
}

TEST(ClsXo1DArrayList, NullAndForeignEntriesAreRefused) {
  for (const bool isNull : {true, false}) {
    const gsl_RecordStore store =
        Recorded(cls_kCollectionTypeId, cls_Uid(), [=](const cls_WriteVisitor& to) {
          const std::unique_ptr<cls_ListWriter> list(to.GetListWriter());
          if (isNull) {
            list->WriteNull(gsl_Point::TypeId());
          } else {
            const cls_WriteRequestListObj request(*list);
            gsl_Dot().DBWrite(cls_WriteVisitor(request));
          }
        });
    EXPECT_THROW(ReadList<gsl_Point>(store), cls_RecordException);
  }
}

TEST(ClsXo1DArrayList, IteratesOverItsElementsInOrder) {
  cls_xo1DArrayList<gsl_Point> list;
  EXPECT_EQ(list.begin(), list.end());
  list.Append(gsl_Point(1.0, 0.0, 0.0));
  list.Append(gsl_Point(2.0, 0.0, 0.0));
  double sum = 0.0;
  for (const gsl_Point& p : list)
    sum = 10.0 * sum + p.x;
  EXPECT_EQ(sum, 12.0);
}

TEST(ClsXo1DArrayList, MoveTakesTheElementsAndTheIdentityAlong) {
  using PointList = cls_xo1DArrayList<gsl_Point>;
  EXPECT_TRUE(std::is_nothrow_move_constructible_v<PointList>);
  EXPECT_TRUE(std::is_nothrow_move_assignable_v<PointList>);
  PointList source;
  source.Append(gsl_Point(1.0, 0.0, 0.0));
  const gsl_Point* const first = &source[0];
  const cls_Uid uid = source.Uid();
  PointList list(std::move(source));
  EXPECT_EQ(&list[0], first);
  EXPECT_EQ(list.Uid(), uid);
  // NOLINTBEGIN(bugprone-use-after-move): what a moved list holds is said.
  EXPECT_TRUE(source.IsEmpty());
  EXPECT_NE(source.Uid(), uid);
  EXPECT_FALSE(source.Uid().IsNull());
  source.Append(gsl_Point(2.0, 0.0, 0.0));
  source = std::move(list);
  EXPECT_EQ(&source[0], first);
  EXPECT_EQ(source.Count(), 1u);
  EXPECT_EQ(source.Uid(), uid);
  EXPECT_TRUE(list.IsEmpty());
  // NOLINTEND(bugprone-use-after-move)
  PointList& same = source;
  source = std::move(same);
  EXPECT_EQ(source.Count(), 1u);
}
