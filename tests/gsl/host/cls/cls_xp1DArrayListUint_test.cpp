#include "cls_xp1DArrayListUint.h"

#include <gtest/gtest.h>

#include <numeric>
#include <type_traits>
#include <utility>

namespace {

cls_xp1DArrayListUint ListOf(std::initializer_list<unsigned int> values) {
  cls_xp1DArrayListUint list;
  for (const unsigned int value : values)
    list.Append(value);
  return list;
}

} // namespace

TEST(ClsXp1DArrayListUint, IteratesOverItsElementsInOrder) {
  const cls_xp1DArrayListUint none;
  EXPECT_EQ(none.begin(), none.end());
  const cls_xp1DArrayListUint list = ListOf({4, 2, 3});
  EXPECT_EQ(std::accumulate(list.begin(), list.end(), 0u,
                            [](unsigned int sum, unsigned int v) { return 10 * sum + v; }),
            423u);
}

TEST(ClsXp1DArrayListUint, CopyKeepsTheIdentityAndEqualityDoesNotLookAtIt) {
  const cls_xp1DArrayListUint list = ListOf({1, 2});
  const cls_xp1DArrayListUint copy = list;
  EXPECT_EQ(copy.Uid(), list.Uid());
  EXPECT_TRUE(copy == list);
  EXPECT_TRUE(ListOf({1, 2}) == list);
  EXPECT_TRUE(ListOf({2, 1}) != list);
}

TEST(ClsXp1DArrayListUint, MoveTakesTheElementsAndTheIdentityAlong) {
  EXPECT_TRUE(std::is_nothrow_move_constructible_v<cls_xp1DArrayListUint>);
  EXPECT_TRUE(std::is_nothrow_move_assignable_v<cls_xp1DArrayListUint>);
  cls_xp1DArrayListUint source = ListOf({7, 8});
  const cls_Uid uid = source.Uid();
  cls_xp1DArrayListUint list(std::move(source));
  EXPECT_TRUE(list == ListOf({7, 8}));
  EXPECT_EQ(list.Uid(), uid);
  // NOLINTBEGIN(bugprone-use-after-move): what a moved list holds is said.
  EXPECT_TRUE(source.IsEmpty());
  EXPECT_NE(source.Uid(), uid);
  EXPECT_FALSE(source.Uid().IsNull());
  source.Append(1);
  source = std::move(list);
  EXPECT_TRUE(source == ListOf({7, 8}));
  EXPECT_EQ(source.Uid(), uid);
  EXPECT_TRUE(list.IsEmpty());
  // NOLINTEND(bugprone-use-after-move)
  cls_xp1DArrayListUint& same = source;
  source = std::move(same);
  EXPECT_EQ(source.Count(), 2u);
}
