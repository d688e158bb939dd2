#include "cow_Map.h"

#include "cow_String.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Map = cow_Map<cow_String, unsigned int>;

TEST(CowMap, EmptyMapHasNothing) {
  const Map map;
  EXPECT_TRUE(map.IsEmpty());
  EXPECT_EQ(map.Count(), 0u);
  EXPECT_EQ(map.begin(), map.end());
  EXPECT_EQ(map.Find("a"), nullptr);
}

TEST(CowMap, IteratesInTheOrderOfInsertion) {
  Map map;
  const std::vector<std::string> keys = {"zeta", "alpha", "mu", "beta", "omega"};
  for (std::size_t i = 0; i < keys.size(); ++i)
    EXPECT_TRUE(map.Insert(keys[i].c_str(), static_cast<unsigned int>(i)));
  std::size_t i = 0;
  for (const auto& [key, value] : map) {
    EXPECT_EQ(key, cow_String(keys[i].c_str()));
    EXPECT_EQ(value, i++);
  }
  EXPECT_EQ(i, keys.size());
}

TEST(CowMap, InsertKeepsTheFirstValueOfAKey) {
  Map map;
  EXPECT_TRUE(map.Insert("key", 1));
  EXPECT_FALSE(map.Insert("key", 2));
  ASSERT_NE(map.Find("key"), nullptr);
  EXPECT_EQ(*map.Find("key"), 1u);
  EXPECT_EQ(map.Count(), 1u);
}

TEST(CowMap, CopiesShareUntilOneWrites) {
  Map map;
  map.Insert("a", 1);
  Map copy(map);
  EXPECT_TRUE(copy.SharesWith(map));
  copy.Insert("b", 2);
  EXPECT_FALSE(copy.SharesWith(map));
  EXPECT_EQ(map.Find("b"), nullptr);
  EXPECT_EQ(*copy.Find("a"), 1u);
  EXPECT_EQ(*copy.Find("b"), 2u);
}

TEST(CowMap, RefusedInsertDoesNotUnshare) {
  Map map;
  map.Insert("a", 1);
  Map copy(map);
  EXPECT_FALSE(copy.Insert("a", 2));
  EXPECT_TRUE(copy.SharesWith(map));
}

TEST(CowMap, AssignmentToItselfAndMoves) {
  Map map;
  map.Insert("a", 1);
  const Map& same = map;
  map = same;
  EXPECT_EQ(map.Count(), 1u);
  Map moved(std::move(map));
  EXPECT_EQ(*moved.Find("a"), 1u);
  Map other;
  other = moved;
  EXPECT_TRUE(other.SharesWith(moved));
}
