#ifndef BENCH_MEASURING_H
#define BENCH_MEASURING_H

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <sched.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

/// Times and memory of work that runs in a process of its own.
namespace measuring {

/// A measurement that takes longer is ended, in seconds. (A timer of processor time would make the
/// processor clock coarse.)
constexpr unsigned kPatience = 10;

inline double SecondsOf(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

inline double ProcessorSeconds() {
  return SecondsOf(CLOCK_PROCESS_CPUTIME_ID);
}

inline double WallSeconds() {
  return SecondsOf(CLOCK_MONOTONIC);
}

/// The processors that this program was given.
inline std::vector<std::size_t> Processors() {
  cpu_set_t set;
  CPU_ZERO(&set);
  sched_getaffinity(0, sizeof set, &set);
  std::vector<std::size_t> processors;
  for (std::size_t k = 0; k < CPU_SETSIZE; ++k) {
    if (CPU_ISSET(k, &set)) processors.push_back(k);
  }
  return processors;
}

inline void PinToTheLast(const std::vector<std::size_t>& processors) {
  cpu_set_t set;
  CPU_ZERO(&set);
  CPU_SET(processors.back(), &set);
  sched_setaffinity(0, sizeof set, &set);
}

/// Returns a number of /proc/self/status in bytes; the keys are VmHWM (the peak) and VmRSS.
inline double MemoryBytes(const std::string& key) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.compare(0, key.size() + 1, key + ":") == 0) {
      return 1024.0 * std::stod(line.substr(key.size() + 1));
    }
  }
  throw std::runtime_error("/proc/self/status has no line " + key);
}

inline void ForgetPeakMemory() {
  std::ofstream("/proc/self/clear_refs") << "5";
}

/// Runs the work in a child process, so that its memory is fresh. Returns nothing when the work
/// takes longer than the patience.
template <class Work>
auto InChild(const Work& work) {
  using Result = decltype(work());
  static_assert(std::is_trivially_copyable_v<Result>, "it goes through a pipe");
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("no child process");
  if (child == 0) {
    int status = 1;
    alarm(kPatience);
    try {
      const Result result = work();
      if (write(ends[1], &result, sizeof result) == static_cast<ssize_t>(sizeof result)) status = 0;
    } catch (const std::exception& error) {
      std::fprintf(stderr, "%s\n", error.what());
    }
    _exit(status);
  }
  close(ends[1]);
  Result result;
  const ssize_t count = read(ends[0], &result, sizeof result);
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM) return std::optional<Result>();
  if (count != static_cast<ssize_t>(sizeof result) || status != 0) {
    throw std::runtime_error("a child process failed");
  }
  return std::optional<Result>(result);
}

inline double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t half = values.size() / 2;
  return values.size() % 2 == 1 ? values[half] : 0.5 * (values[half - 1] + values[half]);
}

/// The least value that is not below the given part of the values.
inline double Quantile(std::vector<double> values, double part) {
  std::sort(values.begin(), values.end());
  const double rank = std::ceil(part * static_cast<double>(values.size()));
  return values[static_cast<std::size_t>(std::max(rank, 1.0)) - 1];
}

} // namespace measuring

#endif
