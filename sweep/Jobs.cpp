#include "Jobs.h"

#include "Parallel.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace gsl_sweep {

namespace {

/// Starting a thread, and waiting for its end, takes about this long.
constexpr std::chrono::microseconds kStartOfThread{100};
/// The time of the jobs that a thread takes at once: long beside the cost of taking them, and short
/// beside the start of a thread.
constexpr std::chrono::microseconds kShortest{20};

std::size_t ThreadCount(const Run& run, std::size_t count) {
  const unsigned wanted = run.threads != 0 ? run.threads : std::thread::hardware_concurrency();
  return std::min<std::size_t>(std::max(wanted, 1u), count);
}

} // namespace

void FirstError::Keep(std::size_t job) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_error && m_job < job) return;
  m_error = std::current_exception();
  m_job = job;
}

void FirstError::Rethrow() const {
  if (m_error) std::rethrow_exception(m_error);
}

void RunJobs(const Run& run, std::size_t count, const std::function<void(std::size_t)>& job) {
  if (count == 0) return;
  FirstError error;
  const auto guarded = [&](std::size_t k) {
    try {
      job(k);
    } catch (...) {
      error.Keep(k);
    }
  };
  if (run.executor) {
    run.executor(count, guarded);
  } else {
    std::atomic<std::size_t> next{0};
    RunOnThreads(
        static_cast<unsigned>(ThreadCount(run, count)),
        [&](unsigned) {
          for (std::size_t k = next++; k < count; k = next++)
            guarded(k);
        },
        [] {});
  }
  error.Rethrow();
}

UnevenJobs::UnevenJobs(const Run& run, std::size_t count, std::function<Job()> start)
    : m_run(run), m_count(count), m_start(std::move(start)), m_threads(ThreadCount(run, count)),
      m_isSpread(run.executor || m_threads < 2), m_begin(Clock::now()) {}

void UnevenJobs::RunAll() {
  if (m_count == 0) return;
  if (m_run.executor) {
    m_run.executor(m_count, [this](std::size_t k) {
      Job job;
      RunOn(job, k);
    });
  } else {
    TakeJobs();
    for (std::thread& other : m_others)
      other.join();
  }
  m_error.Rethrow();
}

void UnevenJobs::RunOn(Job& job, std::size_t k) {
  try {
    if (!job) job = m_start();
    job(k);
  } catch (...) {
    m_error.Keep(k);
  }
}

void UnevenJobs::TakeJobs() {
  Job job;
  std::size_t wanted = 1;
  Clock::time_point from = Clock::now();
  for (;;) {
    // The last jobs are taken one at a time, so that the threads end together.
    const std::size_t left = m_count - std::min(m_next.load(), m_count);
    const std::size_t taken = std::max<std::size_t>(1, std::min(wanted, left / (4 * m_threads)));
    const std::size_t begin = m_next.fetch_add(taken);
    if (begin >= m_count) return;
    const std::size_t end = std::min(begin + taken, m_count);
    for (std::size_t k = begin; k < end; ++k)
      RunOn(job, k);
    Tick();
    const Clock::time_point to = Clock::now();
    if (to - from < kShortest) {
      wanted = 2 * taken;
    } else {
      wanted = std::max<std::size_t>(1, taken / 2);
    }
    from = to;
  }
}

void UnevenJobs::Tick() {
  if (m_isSpread) return; // on any thread but the first, this is true
  const Clock::duration taken = Clock::now() - m_begin;
  if (taken < kStartOfThread) return;
  const std::size_t begun = std::min(m_next.load(), m_count);
  const std::size_t left = m_count - begun;
  if (taken * left < kStartOfThread * begun) return;
  m_isSpread = true;
  try {
    m_others.reserve(m_threads - 1);
    for (std::size_t k = 0; k < std::min(m_threads - 1, left); ++k)
      m_others.emplace_back([this] { TakeJobs(); });
  } catch (const std::system_error&) {
    // The threads that have started do the work.
  } catch (const std::bad_alloc&) {
    // The same.
  }
}

} // namespace gsl_sweep
