#include "support/Stages.h"

#include "Printable.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

#include <sys/resource.h>
#include <unistd.h>

namespace gsl_tools {

namespace {

constexpr double kMegabyte = 1e6;

double WallSeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

rusage Usage() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage;
}

/// Returns the processor time of all threads.
double ProcessorSeconds() {
  const rusage usage = Usage();
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Returns the greatest memory so far. The system counts in steps, so its count may be less than
/// the present memory.
double PeakMegabytes(double present) {
  return std::max(static_cast<double>(Usage().ru_maxrss) * 1024.0 / kMegabyte, present);
}

/// Returns the memory at present; 0 when it is not known.
double PresentMegabytes() {
  std::FILE* const file = std::fopen("/proc/self/statm", "re");
  if (file == nullptr) return 0.0;
  long all = 0;
  long resident = 0;
  const int read = std::fscanf(file, "%ld %ld", &all, &resident);
  std::fclose(file);
  if (read != 2) return 0.0;
  return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / kMegabyte;
}

} // namespace

void Stages::Pause() {
  for (Stage& stage : m_stages) {
    if (stage.name != m_running) continue;
    stage.wall += WallSeconds() - m_wall;
    stage.processor += ProcessorSeconds() - m_processor;
  }
  m_running.clear();
}

void Stages::Enter(const std::string& name) {
  if (!m_isOn) return;
  Pause();
  const auto isNamed = [&](const Stage& stage) { return stage.name == name; };
  if (std::none_of(m_stages.begin(), m_stages.end(), isNamed)) m_stages.push_back({name});
  m_running = name;
  m_wall = WallSeconds();
  m_processor = ProcessorSeconds();
}

void Stages::End(const std::string& name) {
  const auto isNamed = [&](const Stage& stage) { return stage.name == name; };
  const auto stage = std::find_if(m_stages.begin(), m_stages.end(), isNamed);
  if (stage == m_stages.end()) return;
  if (m_running == name) Pause();
  m_progress.Clear();
  const double present = PresentMegabytes();
  std::fprintf(stderr,
               "gsl-sweep: %s: %.3f s, %.3f s of processor time, %.1f MB, at most %.1f MB\n",
               gsl_mesh::Printable(name).c_str(), stage->wall, stage->processor, present,
               PeakMegabytes(present));
  m_stages.erase(stage);
}

} // namespace gsl_tools
