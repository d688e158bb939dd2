#include "typ_DebugFlags.h"

#include <gtest/gtest.h>

#include <climits>

TEST(TypDebugFlags, AreZeroUntilSet) {
  EXPECT_EQ(typ_DebugFlags::GetDebugFlags(123456), 0);
  EXPECT_EQ(typ_DebugFlags::GetDebugFlags(INT_MIN), 0);
}

TEST(TypDebugFlags, KeepTheirLevelsApart) {
  typ_DebugFlags::SetDebugFlags(9001, 3);
  typ_DebugFlags::SetDebugFlags(-9001, -4);
  EXPECT_EQ(typ_DebugFlags::GetDebugFlags(9001), 3);
  EXPECT_EQ(typ_DebugFlags::GetDebugFlags(-9001), -4);
  EXPECT_EQ(typ_DebugFlags::GetDebugFlags(9002), 0);
  typ_DebugFlags::SetDebugFlags(9001, 0);
  EXPECT_EQ(typ_DebugFlags::GetDebugFlags(9001), 0);
  EXPECT_EQ(typ_DebugFlags::GetDebugFlags(-9001), -4);
}
