#include "typ_ArchCompTable.h"

#include <gtest/gtest.h>

namespace {
constexpr typ_Entry kRows[] = {{0, 1, nullptr}, {7, 1, "first"}, {7, 3, "second"}};
}

TEST(TypArchCompTable, FindsAModulesTable) {
  typ_ArchCompTable::InsertEntry(9001, typ_ArchCompEntry(kRows, 3));
  const typ_ArchCompEntry found = typ_ArchCompTable::FindEntry(9001);
  ASSERT_EQ(found.RowCount(), 3u);
  EXPECT_STREQ(found.Row(2).className, "second");
  EXPECT_EQ(found.Row(2).secondWord, 3u);
  EXPECT_EQ(typ_ArchCompTable::FindEntry(9002).RowCount(), 0u);
}

TEST(TypArchCompTable, LaterTableReplacesTheEarlier) {
  typ_ArchCompTable::InsertEntry(9003, typ_ArchCompEntry(kRows, 3));
  typ_ArchCompTable::InsertEntry(9003, typ_ArchCompEntry(kRows, 2));
  EXPECT_EQ(typ_ArchCompTable::FindEntry(9003).RowCount(), 2u);
}
