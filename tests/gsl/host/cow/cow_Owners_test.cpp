#include "cow_Owners.h"

#include "TestScale.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <thread>

namespace {

TEST(CowOwners, OnlyTheLastOwnerThatGoesIsTheLast) {
  std::atomic<std::size_t> owners{1};
  cow_Owners::Add(owners);
  cow_Owners::Add(owners);
  EXPECT_EQ(owners.load(), 3u);
  EXPECT_FALSE(cow_Owners::RemoveLast(owners));
  EXPECT_FALSE(cow_Owners::RemoveLast(owners));
  EXPECT_TRUE(cow_Owners::RemoveLast(owners));
  EXPECT_EQ(owners.load(), 0u);
}

TEST(CowOwners, OwnersOfTwoThreadsAreAllCounted) {
  std::atomic<std::size_t> owners{1};
  std::atomic<int> lastOwners{0};
  const int rounds = Scaled(100000);
  const auto comeAndGo = [&] {
    for (int i = 0; i < rounds; ++i) {
      cow_Owners::Add(owners);
      if (cow_Owners::RemoveLast(owners)) ++lastOwners;
    }
  };
  std::thread other(comeAndGo);
  comeAndGo();
  other.join();
  EXPECT_EQ(owners.load(), 1u);
  EXPECT_EQ(lastOwners.load(), 0);
  EXPECT_TRUE(cow_Owners::RemoveLast(owners));
}

} // namespace
