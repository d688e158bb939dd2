#include "MachineMemory.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

TEST(MachineMemory, IsTheSizeThatTheSystemReports) {
  std::ifstream file("/proc/meminfo");
  std::string word;
  double kibibytes = 0.0;
  while (file >> word && word != "MemTotal:") {
  }
  if (!(file >> kibibytes)) GTEST_SKIP() << "no /proc/meminfo here";
  const double expected = kibibytes * 1024.0;
  EXPECT_NEAR(static_cast<double>(gsl_mesh::MemoryOfMachine()), expected, 0.1 * expected);
}
