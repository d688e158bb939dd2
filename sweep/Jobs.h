#ifndef GSL_SWEEP_JOBS_H
#define GSL_SWEEP_JOBS_H

#include "gsl_Sweep.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
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

/// The threads of a run, for several loops one after the other and for loops within the jobs of a
/// loop. Threads start when a loop needs them. A thread without work helps in any loop, so that a
/// large job does not leave the others idle.
///
/// An executor of the run takes the place of the threads. It must get no loop within a loop, and no
/// loop inside a call_once or under a lock.
class Team {
public:
  using Job = std::function<void(std::size_t)>;

  /// Makes a team of the calling thread alone.
  Team() = default;
  /// Returns such a team, which any threads may use at once.
  static Team& Alone();
  /// `run` outlives the team. At most `worthwhile` threads share the work, one if it is 0; an
  /// executor decides by itself.
  Team(const Run& run, std::size_t worthwhile);
  ~Team();
  Team(const Team&) = delete;
  Team& operator=(const Team&) = delete;

  /// Returns true when no other thread will work on a loop.
  bool IsAlone() const { return m_executor == nullptr && m_threads < 2; }
  /// Returns true when jobs must not call ForEach.
  bool HasExecutor() const { return m_executor != nullptr; }
  /// Returns this team, or Alone() where an executor would run the jobs. It is for work that other
  /// threads wait for. A thread that waits in an executor may run any other job meanwhile, and that
  /// job may wait for the same work.
  Team& OwnThreads() { return HasExecutor() ? Alone() : *this; }
  /// Returns how many threads work on a long loop, as far as that is known.
  std::size_t Width() const;

  /// Runs job(0) to job(count - 1) and returns when all have returned. Fewer threads run where the
  /// system provides no more.
  ///
  /// Errors     the exception of the first job in order that throws, after all others have run.
  void ForEach(std::size_t count, const Job& job);

private:
  struct Loop {
    const Job& job;
    const std::size_t count;
    std::atomic<std::size_t> next{0};
    std::size_t helpers = 0; ///< threads in the loop, without the thread that called
    std::size_t number = 0;  ///< loops that were opened later have greater numbers
    Loop* before = nullptr;  ///< the next open loop, which was opened earlier
    FirstError error{};

    void Run();
  };

  void Open(Loop& loop);
  void Close(Loop& loop);
  void StartThreads(std::size_t wanted);
  Loop* FindWork(std::size_t after) const;
  void Help(Loop& loop, std::unique_lock<std::mutex>& lock);
  void Serve();

  const Executor* m_executor = nullptr;
  std::size_t m_threads = 1;
  std::mutex m_mutex; ///< guards what follows
  std::condition_variable m_changed;
  Loop* m_open = nullptr; ///< the loop that was opened last
  std::size_t m_opened = 0;
  std::size_t m_wanted = 0; ///< threads beside the caller that the loops so far could use
  bool m_isEnded = false;
  std::vector<std::thread> m_others;
};

/// The blocks of a long loop over 0 .. count - 1. All have the same length but the last one.
class Blocks {
public:
  Blocks(std::size_t count, std::size_t length) : m_count(count), m_length(length) {}

  std::size_t Count() const { return m_count == 0 ? 0 : (m_count - 1) / m_length + 1; }
  std::size_t Begin(std::size_t block) const { return block * m_length; }
  std::size_t End(std::size_t block) const { return std::min(m_count, (block + 1) * m_length); }

  /// Calls work(block) for each. Each thread goes through blocks that follow each other, as far as
  /// it can, so that two threads seldom touch a page first.
  template <class Work>
  void ForEach(Team& team, const Work& work) const {
    const std::size_t blocks = Count();
    const std::size_t rows = std::max<std::size_t>(1, std::min(team.Width(), blocks));
    const std::size_t inRow = (blocks + rows - 1) / rows;
    team.ForEach(rows * inRow, [&](std::size_t k) {
      const std::size_t block = k % rows * inRow + k / rows;
      if (block < blocks) work(block);
    });
  }

private:
  std::size_t m_count, m_length;
};

/// Asks from any thread whether work goes on. Calls of `goesOn` never overlap.
class GoesOn {
public:
  explicit GoesOn(const std::function<bool()>& goesOn) : m_goesOn(goesOn) {}

  bool IsStopped() const { return m_isStopped.load(std::memory_order_relaxed); }
  /// Returns false when the work shall stop. Does not ask while another thread does.
  ///
  /// Errors     what `goesOn` throws; the other threads are then stopped.
  bool Ask();

private:
  const std::function<bool()>& m_goesOn;
  std::mutex m_mutex;
  std::atomic<bool> m_isStopped{false};
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
