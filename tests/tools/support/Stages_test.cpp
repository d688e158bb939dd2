#include "support/Stages.h"

#include "TestScale.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using gsl_tools::Progress;
using gsl_tools::ProgressStyle;
using gsl_tools::Stages;

struct Line {
  std::string name;
  double wall = -1.0, processor = -1.0, present = -1.0, peak = -1.0;
};

/// Reads the lines that were written to stderr.
std::vector<Line> Captured() {
  std::istringstream text(testing::internal::GetCapturedStderr());
  std::vector<Line> lines;
  for (std::string line; std::getline(text, line);) {
    Line read;
    char name[64] = "";
    const int fields = std::sscanf(
        line.c_str(), "gsl-sweep: %63[^:]: %lf s, %lf s of processor time, %lf MB, at most %lf MB",
        name, &read.wall, &read.processor, &read.present, &read.peak);
    EXPECT_EQ(fields, 5) << line;
    read.name = name;
    lines.push_back(read);
  }
  return lines;
}

void Sleep(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void Compute(double seconds) {
  const std::clock_t end = std::clock() + static_cast<std::clock_t>(seconds * CLOCKS_PER_SEC);
  while (std::clock() < end) {
  }
}

TEST(Stages, EachStageHasItsTime) {
  Progress progress(ProgressStyle::Never);
  Stages stages(true, progress);
  testing::internal::CaptureStderr();
  stages.Enter("wait");
  Sleep(60);
  stages.End("wait");
  stages.Enter("compute");
  Compute(0.06);
  stages.End("compute");
  const std::vector<Line> lines = Captured();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].name, "wait");
  EXPECT_GE(lines[0].wall, 0.06);
  EXPECT_LT(lines[0].processor, 0.05);
  EXPECT_EQ(lines[1].name, "compute");
  EXPECT_GE(lines[1].wall, 0.05);
  EXPECT_GE(lines[1].processor, 0.055);
}

TEST(Stages, PausedStageGoesOn) {
  Progress progress(ProgressStyle::Never);
  Stages stages(true, progress);
  testing::internal::CaptureStderr();
  stages.Enter("search");
  Sleep(30);
  stages.Enter("write");
  Sleep(200);
  stages.Enter("search");
  Sleep(30);
  stages.End("search");
  stages.End("write");
  const std::vector<Line> lines = Captured();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].name, "search");
  EXPECT_GE(lines[0].wall, 0.06);
  EXPECT_LT(lines[0].wall, 0.19);
  EXPECT_GE(lines[1].wall, 0.2);
}

TEST(Stages, MemoryIsThatOfTheProcess) {
  Progress progress(ProgressStyle::Never);
  Stages stages(true, progress);
  testing::internal::CaptureStderr();
  stages.Enter("small");
  stages.End("small");
  {
    stages.Enter("large");
    const std::vector<char> large(100000000, 'a');
    stages.End(large.back() == 'a' ? "large" : "");
  }
  stages.Enter("small again");
  stages.End("small again");
  const std::vector<Line> lines = Captured();
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_GT(lines[0].present, 0.5);
  EXPECT_GE(lines[0].peak, lines[0].present);
  EXPECT_GE(lines[1].present - lines[0].present, 90.0);
  // A sanitizer keeps what was freed for a while.
  if (TEST_UNDER_SANITIZER == 0) {
    EXPECT_LT(lines[2].present, lines[1].present - 90.0);
  }
  EXPECT_GE(lines[2].peak, 100.0);
}

TEST(Stages, OffWritesNothing) {
  Progress progress(ProgressStyle::Never);
  Stages stages(false, progress);
  testing::internal::CaptureStderr();
  stages.Enter("read");
  stages.End("read");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Stages, StageThatWasNotBegunHasNoLine) {
  Progress progress(ProgressStyle::Never);
  Stages stages(true, progress);
  testing::internal::CaptureStderr();
  stages.End("read");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
