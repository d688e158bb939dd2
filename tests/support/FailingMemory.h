#ifndef FAILING_MEMORY_H
#define FAILING_MEMORY_H

#include <cstddef>

/// While one lives, arrays of at least `limit` bytes that are asked for without exceptions are not
/// granted. Link FailingMemory.cpp.
class FailingMemory {
public:
  explicit FailingMemory(std::size_t limit);
  ~FailingMemory();
  FailingMemory(const FailingMemory&) = delete;
  FailingMemory& operator=(const FailingMemory&) = delete;
};

#endif
