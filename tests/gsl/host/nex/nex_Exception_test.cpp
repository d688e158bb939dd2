#include "nex_Exception.h"

#include "SingletonProbe.h"
#include "gsl_utils.h"
#include "nex_AssertException.h"
#include "nex_CommandException.h"

#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <type_traits>

namespace {

/// A class of a host module: derived, with its own Raise.
class ModuleException : public nex_AssertException {
public:
  explicit ModuleException(int number) : nex_AssertException("module"), detail(number) {}
  int detail;

protected:
  [[noreturn]] void Raise(const cow_String& source, int line) const override {
    RaiseCopy(*this, source, line);
  }
};

} // namespace

TEST(NexException, CarriesMessageIdentifierAndNoLocationYet) {
  const cls_Uid object = cls_Uid::AllocateUid();
  const nex_Exception e("text", object);
  EXPECT_STREQ(e.Message().CStr(), "text");
  EXPECT_STREQ(e.what(), "text");
  EXPECT_EQ(e.Uid(), object);
  EXPECT_TRUE(e.SourceName().IsEmpty());
  EXPECT_EQ(e.LineNumber(), 0);
  EXPECT_TRUE(nex_Exception("text").Uid().IsNull());
}

TEST(NexException, CopiesShareTheTextsWithoutThrowing) {
  const nex_Exception e("text");
  const nex_Exception copy(e);
  EXPECT_TRUE(copy.Message().SharesWith(e.Message()));
  EXPECT_TRUE(std::is_nothrow_copy_constructible<nex_Exception>::value);
  EXPECT_TRUE(std::is_nothrow_copy_constructible<nex_AssertException>::value);
  EXPECT_TRUE(std::is_nothrow_copy_constructible<nex_CommandException>::value);
  EXPECT_TRUE(std::is_nothrow_copy_assignable<nex_AssertException>::value);
}

TEST(NexException, ThrowRaisesItsOwnTypeWithTheLocation) {
  const cls_Uid object = cls_Uid::AllocateUid();
  const nex_AssertException original("failed", object);
  try {
    nex_Exception::Throw(original, "unit/name", 77);
    FAIL();
  } catch (const nex_CommandException&) {
    FAIL();
  } catch (const nex_AssertException& e) {
    EXPECT_STREQ(e.what(), "failed");
    EXPECT_STREQ(e.SourceName().CStr(), "unit/name");
    EXPECT_EQ(e.LineNumber(), 77);
    EXPECT_EQ(e.Uid(), object);
  }
  EXPECT_EQ(original.LineNumber(), 0) << "a copy was thrown";
}

TEST(NexException, ThrowKeepsADerivedTypeOfAModule) {
  try {
    const ModuleException e(5);
    const nex_Exception& base = e;
    nex_Exception::Throw(base, "module.cpp", 3);
    FAIL();
  } catch (const ModuleException& e) {
    EXPECT_EQ(e.detail, 5);
    EXPECT_EQ(e.LineNumber(), 3);
  }
}

TEST(NexException, IsCaughtAcrossALibraryBoundaryByItsType) {
  EXPECT_THROW(RaiseAssertInSecondLibrary(), nex_AssertException);
  EXPECT_THROW(RaiseCommandInSecondLibrary(), nex_CommandException);
  EXPECT_THROW(RaisePlainInSecondLibrary(), nex_Exception);
  EXPECT_THROW(gsl_Truncate(1.0, 0), nex_AssertException);
}

TEST(NexException, IsCaughtAcrossALibraryBoundaryByItsBases) {
  EXPECT_THROW(RaiseAssertInSecondLibrary(), nex_Exception);
  EXPECT_THROW(RaiseCommandInSecondLibrary(), std::exception);
  try {
    RaiseCommandInSecondLibrary();
    FAIL();
  } catch (const nex_AssertException&) {
    FAIL() << "the two are no relatives";
  } catch (const nex_Exception& e) {
    EXPECT_STREQ(e.what(), "commanded");
    EXPECT_STREQ(e.SourceName().CStr(), "second_library");
    EXPECT_EQ(e.LineNumber(), 12);
    EXPECT_NE(dynamic_cast<const nex_CommandException*>(&e), nullptr);
  }
}

TEST(NexException, AssignmentTakesEverything) {
  nex_AssertException target("old");
  try {
    RaiseAssertInSecondLibrary();
  } catch (const nex_AssertException& e) {
    target = e;
  }
  EXPECT_STREQ(target.what(), "asserted");
  EXPECT_EQ(target.LineNumber(), 11);
}
