#include "omu_Shortcut.h"

#include <gtest/gtest.h>

namespace {

TEST(OmuShortcut, DefaultLeadsNowhereAndNeverExpires) {
  omu_Shortcut shortcut;
  EXPECT_TRUE(shortcut.IsEmpty());
  EXPECT_TRUE(shortcut.Path().IsEmpty());
  EXPECT_EQ(shortcut.Owners(), 0u);
  shortcut.Expire();
  EXPECT_FALSE(shortcut.IsExpired());
  EXPECT_FALSE(shortcut.SharesWith(omu_Shortcut()));
}

TEST(OmuShortcut, CopiesShareThePathAndCount) {
  const cow_String path("assembly.axes[1]");
  const omu_Shortcut shortcut(path);
  EXPECT_FALSE(shortcut.IsEmpty());
  EXPECT_TRUE(shortcut.Path().SharesWith(path));
  EXPECT_EQ(shortcut.Owners(), 1u);
  {
    const omu_Shortcut copy(shortcut);
    EXPECT_TRUE(copy.SharesWith(shortcut));
    EXPECT_EQ(shortcut.Owners(), 2u);
  }
  EXPECT_EQ(shortcut.Owners(), 1u);
}

TEST(OmuShortcut, SamePathTwiceIsNotTheSameShortcut) {
  EXPECT_FALSE(omu_Shortcut("assembly").SharesWith(omu_Shortcut("assembly")));
}

TEST(OmuShortcut, ExpiresForEveryCopy) {
  omu_Shortcut shortcut("assembly");
  const omu_Shortcut copy(shortcut);
  EXPECT_FALSE(copy.IsExpired());
  shortcut.Expire();
  EXPECT_TRUE(copy.IsExpired());
  EXPECT_TRUE(omu_Shortcut(copy).IsExpired());
  EXPECT_EQ(copy.Path(), cow_String("assembly"));
}

} // namespace
