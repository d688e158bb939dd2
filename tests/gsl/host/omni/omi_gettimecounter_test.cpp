#include "omi_gettimecounter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

TEST(OmiGettimecounter, NeverRunsBackwards) {
  double last = omi_gettimecounter();
  for (int i = 0; i < 10000; ++i) {
    const double now = omi_gettimecounter();
    ASSERT_GE(now, last);
    last = now;
  }
}

TEST(OmiGettimecounter, CountsSeconds) {
  const double before = omi_gettimecounter();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  const double passed = omi_gettimecounter() - before;
  EXPECT_GE(passed, 0.02);
  // A counter of milliseconds or of ticks would be far beyond.
  EXPECT_LT(passed, 15.0);
}
