#include "gsl_RecordError.h"

#include <gtest/gtest.h>

#include <type_traits>

TEST(GslRecordError, CarriesItsMessageAndIsAnExceptionOfTheStandardLibrary) {
  try {
    throw gsl_RecordError("text");
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "text");
  }
  EXPECT_TRUE(std::is_nothrow_copy_constructible_v<gsl_RecordError>);
}
