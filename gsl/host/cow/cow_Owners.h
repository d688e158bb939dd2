#ifndef COW_OWNERS_H
#define COW_OWNERS_H

#include <atomic>
#include <cstddef>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#define GSL_HOST_KNOWS_THREADS
#endif

/// Counts the owners of a shared object. The count is atomic: owners in different threads may come
/// and go at once.
// A process of one thread needs no locked instruction, which takes ten times as long.
class cow_Owners {
public:
  /// Adds an owner. The caller is an owner already.
  static void Add(std::atomic<std::size_t>& owners) noexcept {
    if (IsOneThread()) {
      owners.store(owners.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    } else {
      owners.fetch_add(1, std::memory_order_relaxed);
    }
  }

  /// Removes an owner. Returns whether it was the last one, which then sees what all others wrote,
  /// and deletes the object.
  [[nodiscard]] static bool RemoveLast(std::atomic<std::size_t>& owners) noexcept {
    if (!IsOneThread()) return owners.fetch_sub(1, std::memory_order_acq_rel) == 1;
    const std::size_t others = owners.load(std::memory_order_relaxed) - 1;
    owners.store(others, std::memory_order_relaxed);
    return others == 0;
  }

private:
  /// Returns whether the process has one thread, as far as the C library knows.
  [[nodiscard]] static bool IsOneThread() noexcept {
#if defined(GSL_HOST_KNOWS_THREADS)
    return __libc_single_threaded != 0;
#else
    return false;
#endif
  }
};

#endif
