#ifndef GSL_SWEEP_PARALLEL_H
#define GSL_SWEEP_PARALLEL_H

#include <exception>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace gsl_sweep {

/// Runs work(k) for k = 0 .. count-1 on as many threads, with 0 on the calling thread, and waits
/// for all.
///
/// work(k) must also be right when another call has done or will do all the work: fewer threads run
/// where the system provides no more.
/// Errors     the first exception that a call throws. `stop` is called, from any thread, as soon as
///            a call throws.
template <class Work, class Stop>
void RunOnThreads(unsigned count, const Work& work, const Stop& stop) {
  std::exception_ptr error;
  std::mutex errorMutex;
  const auto guarded = [&](unsigned k) {
    try {
      work(k);
    } catch (...) {
      {
        const std::lock_guard<std::mutex> lock(errorMutex);
        if (!error) error = std::current_exception();
      }
      stop();
    }
  };
  std::vector<std::thread> others;
  others.reserve(count);
  for (unsigned k = 1; k < count; ++k) {
    try {
      others.emplace_back(guarded, k);
    } catch (const std::system_error&) {
      break;
    } catch (const std::bad_alloc&) {
      break;
    }
  }
  guarded(0);
  for (std::thread& other : others)
    other.join();
  if (error) std::rethrow_exception(error);
}

} // namespace gsl_sweep

#endif
