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

std::size_t ThreadCount(const Run& run) {
  // Asking the system takes longer than a short question.
  static const unsigned kProcessors = std::max(std::thread::hardware_concurrency(), 1u);
  return run.threads != 0 ? run.threads : kProcessors;
}

std::size_t ThreadCount(const Run& run, std::size_t count) {
  return std::min(ThreadCount(run), count);
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

Team& Team::Alone() {
  static Team alone;
  return alone;
}

Team::Team(const Run& run, std::size_t worthwhile)
    : m_executor(run.executor ? &run.executor : nullptr),
      m_threads(std::min(ThreadCount(run), std::max<std::size_t>(worthwhile, 1))) {}

Team::~Team() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isEnded = true;
  }
  m_changed.notify_all();
  for (std::thread& other : m_others)
    other.join();
}

std::size_t Team::Width() const {
  constexpr std::size_t kOfExecutor = 4;
  return m_executor != nullptr ? kOfExecutor : m_threads;
}

void Team::Loop::Run() {
  for (std::size_t k = next++; k < count; k = next++) {
    try {
      job(k);
    } catch (...) {
      error.Keep(k);
    }
  }
}

void Team::ForEach(std::size_t count, const Job& job) {
  Loop loop{job, count};
  if (m_executor != nullptr && count > 1) {
    (*m_executor)(count, [&](std::size_t k) {
      try {
        job(k);
      } catch (...) {
        loop.error.Keep(k);
      }
    });
  } else if (m_executor != nullptr || m_threads < 2 || count < 2) {
    loop.Run();
  } else {
    Open(loop);
    loop.Run();
    Close(loop);
  }
  loop.error.Rethrow();
}

void Team::Open(Loop& loop) {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    loop.number = ++m_opened;
    loop.before = m_open;
    m_open = &loop;
    m_wanted += loop.count - 1;
    StartThreads(std::min(m_wanted, m_threads - 1));
  }
  m_changed.notify_all();
}

void Team::StartThreads(std::size_t wanted) {
  try {
    while (m_others.size() < wanted)
      m_others.emplace_back([this] { Serve(); });
  } catch (const std::system_error&) {
    // The threads that have started do the work.
  } catch (const std::bad_alloc&) {
    // The same.
  }
}

/// Waits for the threads that help. Meanwhile the calling thread helps in loops that were opened
/// later, which may be within the jobs that it waits for.
void Team::Close(Loop& loop) {
  std::unique_lock<std::mutex> lock(m_mutex);
  while (loop.helpers > 0) {
    if (Loop* later = FindWork(loop.number)) {
      Help(*later, lock);
    } else {
      m_changed.wait(lock);
    }
  }
  Loop** at = &m_open;
  while (*at != &loop)
    at = &(*at)->before;
  *at = loop.before;
}

/// Returns the last loop that was opened after loop `after` and has jobs that nobody has begun.
Team::Loop* Team::FindWork(std::size_t after) const {
  for (Loop* loop = m_open; loop != nullptr && loop->number > after; loop = loop->before) {
    if (loop->next < loop->count) return loop;
  }
  return nullptr;
}

void Team::Help(Loop& loop, std::unique_lock<std::mutex>& lock) {
  ++loop.helpers;
  lock.unlock();
  loop.Run();
  lock.lock();
  if (--loop.helpers == 0) m_changed.notify_all();
}

void Team::Serve() {
  std::unique_lock<std::mutex> lock(m_mutex);
  while (!m_isEnded) {
    if (Loop* loop = FindWork(0)) {
      Help(*loop, lock);
    } else {
      m_changed.wait(lock);
    }
  }
}

bool GoesOn::Ask() {
  if (!m_goesOn) return true;
  const std::unique_lock<std::mutex> lock(m_mutex, std::try_to_lock);
  if (!lock.owns_lock() || IsStopped()) return !IsStopped();
  try {
    if (!m_goesOn()) m_isStopped = true;
  } catch (...) {
    m_isStopped = true;
    throw;
  }
  return !IsStopped();
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
