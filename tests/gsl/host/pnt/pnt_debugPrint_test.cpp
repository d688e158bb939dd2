#include "pnt_debugPrint.h"

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>

TEST(PntDebugPrint, IsStandardErrorUnlessRedirected) {
  EXPECT_EQ(&pnt_debugPrint(), &std::cerr);
}

TEST(PntDebugPrint, GoesWhereItIsSentUntilItIsSentBack) {
  std::ostringstream first, second;
  pnt_redirectDebugPrint(&first);
  pnt_debugPrint() << "one";
  pnt_redirectDebugPrint(&second);
  pnt_debugPrint() << "two";
  pnt_redirectDebugPrint(nullptr);
  EXPECT_EQ(first.str(), "one");
  EXPECT_EQ(second.str(), "two");
  EXPECT_EQ(&pnt_debugPrint(), &std::cerr);
}
