#include "nex_AssertException.h"

#include <gtest/gtest.h>

#include <type_traits>

TEST(NexAssertException, CarriesItsMessageAndTheObject) {
  const nex_AssertException error("text", cls_Uid(1, 2));
  EXPECT_STREQ(error.what(), "text");
  EXPECT_EQ(error.Uid(), cls_Uid(1, 2));
  EXPECT_TRUE(nex_AssertException("text").Uid().IsNull());
}

TEST(NexAssertException, ThrowKeepsItsTypeWhenOnlyTheBaseIsKnown) {
  const nex_AssertException error("text", cls_Uid(1, 2));
  const nex_Exception& base = error;
  try {
    nex_Exception::Throw(base, "unit", 7);
    FAIL() << "nothing was thrown";
  } catch (const nex_AssertException& caught) {
    EXPECT_STREQ(caught.what(), "text");
    EXPECT_STREQ(caught.SourceName().CStr(), "unit");
    EXPECT_EQ(caught.LineNumber(), 7);
    EXPECT_EQ(caught.Uid(), cls_Uid(1, 2));
  }
}

TEST(NexAssertException, DerivesFromItsFamilyAndCopiesWithoutThrowing) {
  EXPECT_TRUE((std::is_base_of_v<nex_Exception, nex_AssertException>));
  EXPECT_TRUE(std::is_nothrow_copy_constructible_v<nex_AssertException>);
  EXPECT_TRUE(std::is_nothrow_copy_assignable_v<nex_AssertException>);
}
