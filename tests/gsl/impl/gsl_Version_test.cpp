#include "gsl_Version.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

// PROJECT_VERSION_TEXT is the version in the names of the package and the libraries.

TEST(GslVersion, TheLibraryReportsTheVersionOfTheBuild) {
  EXPECT_STREQ(gsl_LibraryVersionText(), PROJECT_VERSION_TEXT);
}

TEST(GslVersion, NumberAndTextAreOneVersion) {
  int major = -1, minor = -1, patch = -1, end = 0;
  ASSERT_EQ(std::sscanf(gsl_LibraryVersionText(), "%d.%d.%d%n", &major, &minor, &patch, &end), 3);
  EXPECT_EQ(gsl_LibraryVersionText()[end], '\0');
  EXPECT_EQ(gsl_LibraryVersion(), (major * 100 + minor) * 100 + patch);
}

TEST(GslVersion, TheLibraryIsOfTheVersionOfItsHeaders) {
  EXPECT_EQ(gsl_LibraryVersion(), GSL_VERSION_NUMBER);
  const int parts[] = {GSL_VERSION_MAJOR, GSL_VERSION_MINOR, GSL_VERSION_PATCH};
  const std::string text =
      std::to_string(parts[0]) + "." + std::to_string(parts[1]) + "." + std::to_string(parts[2]);
  EXPECT_EQ(text, gsl_LibraryVersionText());
}

TEST(GslVersion, MacrosWorkInThePreprocessor) {
#if GSL_VERSION_NUMBER >= 100 && GSL_VERSION_NUMBER < 10000000
  constexpr bool isComparable = true;
#else
  constexpr bool isComparable = false;
#endif
  EXPECT_TRUE(isComparable);
  // One number orders versions only while each of the last two stays below 100.
  EXPECT_LT(GSL_VERSION_MINOR, 100);
  EXPECT_LT(GSL_VERSION_PATCH, 100);
}
