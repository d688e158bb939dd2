#ifndef RESIDENT_PEAK_H
#define RESIDENT_PEAK_H

#include <cstddef>
#include <fstream>
#include <string>

#include <malloc.h>

/// Measures how much more memory this process has in use at most while this object lives, of every
/// allocator, as the system counts it. It is 0 where the system does not say it.
class ResidentPeak {
public:
  ResidentPeak() {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";
    m_before = Kilobytes("VmRSS:");
  }

  double Megabytes() const {
    const long peak = Kilobytes("VmHWM:");
    return peak > m_before ? static_cast<double>(peak - m_before) / 1024.0 : 0.0;
  }

private:
  static long Kilobytes(const std::string& key) {
    std::ifstream file("/proc/self/status");
    for (std::string word; file >> word;) {
      long value = 0;
      if (word == key && file >> value) return value;
    }
    return 0;
  }

  long m_before = 0;
};

#endif
