#ifndef GSL_SWEEP_MADE_LATER_H
#define GSL_SWEEP_MADE_LATER_H

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <new>

namespace gsl_sweep {

/// An object that saves time and nothing else. It is made when it seems worth it, by one thread,
/// while other threads go on without it.
template <class T>
class MadeLater {
public:
  /// Returns null until it has been made.
  const T* IfMade() const { return m_made.load(std::memory_order_acquire); }

  /// Keeps what make(goesOn) returns. Returns at once where another thread is making it. Gives up,
  /// so that it can be made later, when make returns null or throws, or `goesOn` throws. Gives up
  /// for good when memory is short. `goesOn` is not called again after it has thrown or returned
  /// false.
  ///
  /// Errors     what `goesOn` throws, whatever it is, and what make throws but std::bad_alloc.
  template <class Make>
  void MakeOnce(const std::function<bool()>& goesOn, const Make& make) {
    if (m_isBegun.exchange(true)) return;
    std::exception_ptr thrown;
    bool isStopped = false;
    const auto asked = [&] {
      if (isStopped) return false;
      try {
        isStopped = goesOn && !goesOn();
      } catch (...) {
        thrown = std::current_exception();
        isStopped = true;
      }
      return !isStopped;
    };
    try {
      m_own = make(asked);
    } catch (const std::bad_alloc&) {
      if (!thrown) return;
    } catch (...) {
      m_isBegun = false;
      throw;
    }
    if (m_own) {
      m_made.store(m_own.get(), std::memory_order_release);
    } else {
      m_isBegun = false;
    }
    if (thrown) std::rethrow_exception(thrown);
  }

private:
  std::atomic<bool> m_isBegun{false};
  std::unique_ptr<const T> m_own;
  std::atomic<const T*> m_made{nullptr};
};

} // namespace gsl_sweep

#endif
