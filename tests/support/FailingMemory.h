#ifndef FAILING_MEMORY_H
#define FAILING_MEMORY_H

#include <cstddef>

/// While an object of this class lives, requests of this thread to mem_Malloc for at least `limit`
/// bytes fail. Programs that use it link FailingMemory.cpp, which replaces the host's allocator.
class FailingMemory {
public:
  explicit FailingMemory(std::size_t limit);
  ~FailingMemory();
  FailingMemory(const FailingMemory&) = delete;
  FailingMemory& operator=(const FailingMemory&) = delete;

  /// Returns the bytes of the largest block that was requested since this object was made.
  std::size_t LargestAsked() const;
};

#endif
