#ifndef GSL_SWEEP_JOBS_H
#define GSL_SWEEP_JOBS_H

#include "gsl_Sweep.h"

#include <atomic>
#include <chrono>
#include <exception>
#include <mutex>
#include <thread>

namespace gsl_sweep {

/// Runs job(0) to job(count - 1) on threads as `run` says, and returns when all have returned.
/// Fewer threads run where the system provides no more.
///
/// Errors     the exception of the first job in order that throws, after all others have run.
void RunJobs(const Run& run, std::size_t count, const std::function<void(std::size_t)>& job);

/// The exception of the first job in order that has thrown.
class FirstError {
public:
  /// To be called where an exception of the job is caught.
  void Keep(std::size_t job);
  void Rethrow() const;

private:
  std::mutex m_mutex;
  std::exception_ptr m_error;
  std::size_t m_job = 0;
};

/// Runs jobs of which nobody knows whether they take a microsecond or a minute. The calling thread
/// begins alone. The others are started once the work has taken longer than starting them does.
/// Threads take several short jobs at a time.
class UnevenJobs {
public:
  using Job = std::function<void(std::size_t)>;

  /// `start` returns the function that runs jobs on one thread. An executor gets one for each job.
  UnevenJobs(const Run& run, std::size_t count, std::function<Job()> start);

  /// Returns when all jobs have returned.
  ///
  /// Errors     the exception of the first job in order that throws, after all others have run.
  void RunAll();

  /// A long job calls this now and then, so that the other threads start during the first job.
  void Tick();

private:
  using Clock = std::chrono::steady_clock;

  void RunOn(Job& job, std::size_t k);
  void TakeJobs();

  const Run& m_run;
  const std::size_t m_count;
  const std::function<Job()> m_start;
  std::size_t m_threads;
  FirstError m_error;
  std::atomic<std::size_t> m_next{0};
  std::atomic<bool> m_isSpread; ///< the other threads have been started, or nobody wants them
  Clock::time_point m_begin;
  std::vector<std::thread> m_others;
};

} // namespace gsl_sweep

#endif
