#include "support/Progress.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <unistd.h>

using gsl_tools::Progress;
using gsl_tools::ProgressStyle;

namespace {

/// Returns what `act` writes to stderr while stderr is a terminal of this name.
std::string SeenOnTerminal(const char* terminalName, const std::function<void()>& act) {
  int master = -1;
  int terminal = -1;
  if (openpty(&master, &terminal, nullptr, nullptr, nullptr) != 0) return "no terminal";
  setenv("TERM", terminalName, 1);
  std::fflush(stderr);
  const int kept = dup(STDERR_FILENO);
  dup2(terminal, STDERR_FILENO);
  act();
  std::fflush(stderr);
  dup2(kept, STDERR_FILENO);
  close(kept);
  close(terminal);
  std::string seen;
  char buffer[512];
  for (ssize_t got = 0; (got = read(master, buffer, sizeof buffer)) > 0;)
    seen.append(buffer, static_cast<std::size_t>(got));
  close(master);
  return seen;
}

void Work(ProgressStyle style) {
  Progress progress(style);
  progress.Begin("Reading");
  progress.Update(0.5); // too soon to be shown
  std::this_thread::sleep_for(std::chrono::milliseconds(110));
  progress.Update(0.257);
  progress.Clear();
}

} // namespace

TEST(Progress, AutoWritesOverItsLineAndRemovesIt) {
  EXPECT_EQ(SeenOnTerminal("xterm", [] { Work(ProgressStyle::Auto); }),
            "\r\033[KReading\r\033[KReading: 25 %\r\033[K");
}

TEST(Progress, PlainWritesLinesOnceASecond) {
  EXPECT_EQ(SeenOnTerminal("xterm", [] { Work(ProgressStyle::Plain); }), "Reading\r\n");
}

TEST(Progress, AutoIsPlainWhereATerminalCannotWriteOverALine) {
  EXPECT_EQ(SeenOnTerminal("dumb", [] { Work(ProgressStyle::Auto); }), "Reading\r\n");
  EXPECT_EQ(SeenOnTerminal("", [] { Work(ProgressStyle::Auto); }), "Reading\r\n");
}

TEST(Progress, NeverWritesNothing) {
  EXPECT_EQ(SeenOnTerminal("xterm", [] { Work(ProgressStyle::Never); }), "");
}

TEST(Progress, TheEndRemovesWhatWasWrittenOver) {
  EXPECT_EQ(SeenOnTerminal("xterm", [] { Progress(ProgressStyle::Auto).Begin("a"); }),
            "\r\033[Ka\r\033[K");
}

TEST(Progress, AStageCannotCommandTheTerminal) {
  EXPECT_EQ(SeenOnTerminal("xterm", [] { Progress(ProgressStyle::Plain).Begin("a\n\033[2J"); }),
            "a??[2J\r\n");
}

TEST(Progress, WritesOnlyToATerminal) {
  testing::internal::CaptureStderr();
  Work(ProgressStyle::Auto);
  Work(ProgressStyle::Plain);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
