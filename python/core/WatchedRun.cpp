#include "WatchedRun.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

namespace gsl_python {

namespace {

namespace py = pybind11;
using gsl_sweep::Run;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBetweenLooks{50};

/// What the interpreter wants while the work runs. Every member needs the interpreter's lock.
class Wishes {
public:
  explicit Wishes(const py::object& progress) : m_progress(progress) {}

  /// Handles signals and shows the part done. Returns whether the work goes on.
  bool Look(double part) {
    if (m_isCancelled) return false;
    try {
      if (PyErr_CheckSignals() != 0) throw py::error_already_set();
      if (!m_progress.is_none() && m_progress(part).equal(py::bool_(false))) m_isCancelled = true;
    } catch (...) {
      m_error = std::current_exception();
      m_isCancelled = true;
    }
    return !m_isCancelled;
  }

  void Rethrow() {
    if (m_error) std::rethrow_exception(m_error);
  }

private:
  const py::object& m_progress;
  std::exception_ptr m_error;
  bool m_isCancelled = false;
};

/// Work on a thread of its own.
class Worker {
public:
  Worker(const Work& work, unsigned threads) {
    m_run.threads = threads;
    m_run.progress = [this](double part) {
      m_part = part;
      return !m_isCancelled;
    };
    m_thread = std::thread([this, &work] { Do(work); });
  }
  ~Worker() {
    Cancel();
    m_thread.join();
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  void Cancel() { m_isCancelled = true; }
  double Part() const { return m_part; }
  /// Waits a while for the end of the work, and returns whether it has ended.
  bool HasEnded() {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_ended.wait_for(lock, kBetweenLooks, [this] { return m_hasEnded; });
  }
  void Rethrow() const {
    if (m_error) std::rethrow_exception(m_error);
  }

private:
  void Do(const Work& work) {
    try {
      work(m_run);
    } catch (...) {
      m_error = std::current_exception();
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_hasEnded = true;
    m_ended.notify_one();
  }

  Run m_run;
  std::atomic<double> m_part{0.0};
  std::atomic<bool> m_isCancelled{false};
  std::mutex m_mutex;
  std::condition_variable m_ended;
  bool m_hasEnded = false;
  std::exception_ptr m_error;
  std::thread m_thread;
};

void WaitFor(Worker& worker, Wishes& wishes) {
  const py::gil_scoped_release unlocked;
  while (!worker.HasEnded()) {
    const py::gil_scoped_acquire locked;
    if (!wishes.Look(worker.Part())) worker.Cancel();
  }
}

} // namespace

void RunHere(const Work& work) {
  const py::object noProgress = py::none();
  Wishes wishes(noProgress);
  bool isCancelled = false;
  Clock::time_point next = Clock::now() + kBetweenLooks;
  Run run;
  run.threads = 1;
  run.progress = [&](double part) {
    if (Clock::now() < next) return !isCancelled;
    const py::gil_scoped_acquire locked;
    if (!wishes.Look(part)) isCancelled = true;
    next = Clock::now() + kBetweenLooks;
    return !isCancelled;
  };
  {
    const py::gil_scoped_release unlocked;
    work(run);
  }
  wishes.Rethrow();
}

void RunWatched(const Work& work, unsigned threads, const py::object& progress) {
  Wishes wishes(progress);
  {
    std::optional<Worker> worker;
    try {
      worker.emplace(work, threads);
    } catch (const std::system_error&) {
      RunHere(work); // the system provides no thread
      return;
    }
    WaitFor(*worker, wishes);
    wishes.Rethrow();
    worker->Rethrow();
  }
  wishes.Look(1.0);
  wishes.Rethrow();
}

} // namespace gsl_python
