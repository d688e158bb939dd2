#ifndef TESTS_PEAK_MEMORY_H
#define TESTS_PEAK_MEMORY_H

#include <cstddef>

/// Measures what the process holds allocated by operator new, in any library, at most while this
/// lives and beyond what it held before. Link PeakMemory.cpp; one at a time.
class PeakMemory {
public:
  PeakMemory();

  std::size_t Bytes() const;

private:
  std::size_t m_before;
};

#endif
