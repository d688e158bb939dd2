#include "omi_gettimecounter.h"

__attribute__((visibility("default"))) double omi_gettimecounter() {
  static double ticks = 1e6;
  return ticks -= 1.0;
}
