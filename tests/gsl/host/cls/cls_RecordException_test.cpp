#include "cls_RecordException.h"

#include <gtest/gtest.h>

#include <type_traits>

TEST(ClsRecordException, CarriesItsMessageAndTheObject) {
  const cls_RecordException error("text", cls_Uid(1, 2));
  EXPECT_STREQ(error.what(), "text");
  EXPECT_EQ(error.Uid(), cls_Uid(1, 2));
  EXPECT_TRUE(cls_RecordException("text").Uid().IsNull());
}

TEST(ClsRecordException, ThrowKeepsItsTypeWhenOnlyTheBaseIsKnown) {
  const cls_RecordException error("text", cls_Uid(1, 2));
  const nex_Exception& base = error;
  try {
    nex_Exception::Throw(base, "unit", 7);
    FAIL() << "nothing was thrown";
  } catch (const cls_RecordException& caught) {
    EXPECT_STREQ(caught.what(), "text");
    EXPECT_STREQ(caught.SourceName().CStr(), "unit");
    EXPECT_EQ(caught.LineNumber(), 7);
    EXPECT_EQ(caught.Uid(), cls_Uid(1, 2));
  }
}

TEST(ClsRecordException, DerivesFromItsFamilyAndCopiesWithoutThrowing) {
  EXPECT_TRUE((std::is_base_of_v<nex_CommandException, cls_RecordException>));
  EXPECT_TRUE(std::is_nothrow_copy_constructible_v<cls_RecordException>);
  EXPECT_TRUE(std::is_nothrow_copy_assignable_v<cls_RecordException>);
}
