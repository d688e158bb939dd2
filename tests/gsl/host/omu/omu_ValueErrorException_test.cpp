#include "omu_ValueErrorException.h"

#include <gtest/gtest.h>

#include <type_traits>

TEST(OmuValueErrorException, CarriesItsMessageAndTheObject) {
  const omu_ValueErrorException error("text", cls_Uid(1, 2));
  EXPECT_STREQ(error.what(), "text");
  EXPECT_EQ(error.Uid(), cls_Uid(1, 2));
  EXPECT_TRUE(omu_ValueErrorException("text").Uid().IsNull());
}

TEST(OmuValueErrorException, ThrowKeepsItsTypeWhenOnlyTheBaseIsKnown) {
  const omu_ValueErrorException error("text", cls_Uid(1, 2));
  const nex_Exception& base = error;
  try {
    nex_Exception::Throw(base, "unit", 7);
    FAIL() << "nothing was thrown";
  } catch (const omu_ValueErrorException& caught) {
    EXPECT_STREQ(caught.what(), "text");
    EXPECT_STREQ(caught.SourceName().CStr(), "unit");
    EXPECT_EQ(caught.LineNumber(), 7);
    EXPECT_EQ(caught.Uid(), cls_Uid(1, 2));
  }
}

TEST(OmuValueErrorException, DerivesFromItsFamilyAndCopiesWithoutThrowing) {
  EXPECT_TRUE((std::is_base_of_v<nex_CommandException, omu_ValueErrorException>));
  EXPECT_TRUE(std::is_nothrow_copy_constructible_v<omu_ValueErrorException>);
  EXPECT_TRUE(std::is_nothrow_copy_assignable_v<omu_ValueErrorException>);
}
