#ifndef HOST_ALLOCATOR_H
#define HOST_ALLOCATOR_H

#include <string>

/// Counts what the process allocates through mem_Malloc, mem_Realloc and the global allocation
/// operators, which are the host's. Programs that use it link HostAllocator.cpp, which replaces
/// them in the program and in every library.

/// Returns the number of blocks that are allocated and not freed. Blocks from malloc count too,
/// except under a sanitizer, which owns malloc.
long LiveBlocks();

/// Returns how often the process took memory in another way, from malloc and its family, while a
/// FailingNth lived. The storage of exceptions in flight, which belongs to the language, and the
/// stores of records do not count. Always returns 0 under a sanitizer.
long AllocationsAround();

/// Returns the function that took memory in another way last, "library: function".
std::string LastAllocationAround();

/// Returns whether AllocationsAround can count.
bool SeesAllocationsAround();

/// Which allocations are counted and fail. Under a sanitizer both are the host's.
enum class Allocations {
  OfTheHost, ///< through the operators and the functions of the host
  All,       ///< those, and what C libraries take from malloc
};

/// While an object of this class lives, the allocations of all threads are counted, and the one
/// after the first `successes` allocations fails. A negative number makes none fail.
class FailingNth {
public:
  explicit FailingNth(long successes, Allocations which = Allocations::OfTheHost);
  ~FailingNth();
  FailingNth(const FailingNth&) = delete;
  FailingNth& operator=(const FailingNth&) = delete;

  [[nodiscard]] bool HasFailed() const;
  /// Returns how many allocations were asked for since this object was made.
  [[nodiscard]] long Asked() const;
};

#endif
