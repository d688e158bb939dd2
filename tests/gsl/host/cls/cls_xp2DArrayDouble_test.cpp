#include "cls_xp2DArrayDouble.h"

#include <gtest/gtest.h>

#include <numeric>
#include <type_traits>
#include <utility>

TEST(ClsXp2DArrayDouble, IteratesOverItsEntriesRowByRow) {
  cls_xp2DArrayDouble array(2, 3);
  std::iota(array.begin(), array.end(), 1.0);
  EXPECT_EQ(array(0, 2), 3.0);
  EXPECT_EQ(array(1, 0), 4.0);
  const cls_xp2DArrayDouble& read = array;
  EXPECT_EQ(read.end() - read.begin(), 6);
  EXPECT_EQ(read.begin()[5], 6.0);
}

TEST(ClsXp2DArrayDouble, MoveLeavesItsSourceWithoutRows) {
  EXPECT_TRUE(std::is_nothrow_move_constructible_v<cls_xp2DArrayDouble>);
  EXPECT_TRUE(std::is_nothrow_move_assignable_v<cls_xp2DArrayDouble>);
  cls_xp2DArrayDouble source(2, 3);
  source(1, 2) = 7.0;
  const cls_Uid uid = source.Uid();
  cls_xp2DArrayDouble array(std::move(source));
  EXPECT_EQ(array(1, 2), 7.0);
  EXPECT_EQ(array.Uid(), uid);
  // NOLINTBEGIN(bugprone-use-after-move): what a moved array holds is said.
  EXPECT_EQ(source.Rows(), 0u);
  EXPECT_EQ(source.Columns(), 0u);
  EXPECT_NE(source.Uid(), uid);
  source = std::move(array);
  EXPECT_EQ(source.Rows(), 2u);
  EXPECT_EQ(source(1, 2), 7.0);
  EXPECT_EQ(source.Uid(), uid);
  EXPECT_EQ(array.Columns(), 0u);
  // NOLINTEND(bugprone-use-after-move)
  cls_xp2DArrayDouble& same = source;
  source = std::move(same);
  EXPECT_EQ(source.Rows(), 2u);
}
