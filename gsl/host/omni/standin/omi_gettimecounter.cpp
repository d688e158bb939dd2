#include "omi_gettimecounter.h"

#include <chrono>

double omi_gettimecounter() {
  const std::chrono::duration<double> now = std::chrono::steady_clock::now().time_since_epoch();
  return now.count();
}
