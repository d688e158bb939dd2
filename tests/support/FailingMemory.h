#ifndef FAILING_MEMORY_H
#define FAILING_MEMORY_H

#include <cstddef>

/// While an object of this class lives, arrays of at least `limit` bytes that are requested without
/// exceptions are not granted. Link FailingMemory.cpp.
class FailingMemory {
public:
  explicit FailingMemory(std::size_t limit);
  ~FailingMemory();
  FailingMemory(const FailingMemory&) = delete;
  FailingMemory& operator=(const FailingMemory&) = delete;

  /// Bytes of the largest array that was asked for without exceptions since it was made, granted or
  /// not.
  std::size_t LargestAsked() const;
};

#endif
