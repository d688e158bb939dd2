#ifndef GSL_SWEEP_TALLY_H
#define GSL_SWEEP_TALLY_H

#include "gsl_Sweep.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <mutex>

namespace gsl_sweep {

/// The progress of jobs that end in any order. After a call of the function has returned false or
/// thrown, the work is cancelled and the function is not called again.
class Tally {
public:
  Tally(const Run& run, std::size_t count) : m_run(run), m_count(count) {}

  bool IsCancelled() const { return m_isCancelled.load(std::memory_order_relaxed); }
  /// Counts one job as done.
  void Add() {
    if (!m_run.progress) return;
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_done;
    Report(0.0);
  }
  /// Reports that one job has come this far, from 0 to 1, unless another job reports just now.
  /// Returns false when the work is cancelled.
  bool Continue(double part) {
    if (!m_run.progress) return !IsCancelled();
    const std::unique_lock<std::mutex> lock(m_mutex, std::try_to_lock);
    if (lock.owns_lock()) Report(part);
    return !IsCancelled();
  }
  void Cancel() { m_isCancelled = true; }

private:
  /// The other jobs that are being worked on count as not begun, so that the number can only be too
  /// small.
  void Report(double part) {
    if (!m_run.progress || IsCancelled()) return;
    const double done = (static_cast<double>(m_done) + part) / static_cast<double>(m_count);
    m_reported = std::max(m_reported, std::min(done, 1.0));
    try {
      if (!m_run.progress(m_reported)) m_isCancelled = true;
    } catch (...) {
      m_isCancelled = true;
      throw;
    }
  }

  const Run& m_run;
  std::size_t m_count, m_done = 0;
  double m_reported = 0.0;
  std::mutex m_mutex;
  std::atomic<bool> m_isCancelled{false};
};

} // namespace gsl_sweep

#endif
