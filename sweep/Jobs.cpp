#include "Jobs.h"

#include "Parallel.h"

#include <algorithm>
#include <atomic>

namespace gsl_sweep {

namespace {

/// The exception of the first job in order that has thrown.
class FirstError {
public:
  void Keep(std::size_t job) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_error && m_job < job) return;
    m_error = std::current_exception();
    m_job = job;
  }
  void Rethrow() const {
    if (m_error) std::rethrow_exception(m_error);
  }

private:
  std::mutex m_mutex;
  std::exception_ptr m_error;
  std::size_t m_job = 0;
};

} // namespace

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
    const unsigned wanted = run.threads != 0 ? run.threads : std::thread::hardware_concurrency();
    const std::size_t threads = std::min<std::size_t>(std::max(wanted, 1u), count);
    std::atomic<std::size_t> next{0};
    RunOnThreads(
        static_cast<unsigned>(threads),
        [&](unsigned) {
          for (std::size_t k = next++; k < count; k = next++)
            guarded(k);
        },
        [] {});
  }
  error.Rethrow();
}

} // namespace gsl_sweep
