#ifndef TESTS_PEAK_MEMORY_H
#define TESTS_PEAK_MEMORY_H

#include <cstddef>

/// Measures the memory that operator new allocates in any library while this object lives: the
/// largest amount beyond the amount before. Programs that use it link PeakMemory.cpp. Only one
/// object may live at a time.
class PeakMemory {
public:
  PeakMemory();

  std::size_t Bytes() const;

private:
  std::size_t m_before;
};

#endif
