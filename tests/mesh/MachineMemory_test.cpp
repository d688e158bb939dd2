#include "MachineMemory.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

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

TEST(MachineMemory, LargePagesKeepContents) {
  // From an odd address, so that neither end is the end of a page.
  std::string bytes(std::size_t{9} << 20, 'a');
  gsl_mesh::PreferLargePages(bytes.data() + 1, bytes.size() - 3);
  gsl_mesh::PreferLargePages(nullptr, 0);
  EXPECT_EQ(bytes, std::string(bytes.size(), 'a'));
  std::vector<int> numbers{1, 2, 3};
  gsl_mesh::ReserveLarge(numbers, std::size_t{1} << 21);
  EXPECT_EQ(numbers, (std::vector<int>{1, 2, 3}));
  EXPECT_GE(numbers.capacity(), std::size_t{1} << 21);
}
