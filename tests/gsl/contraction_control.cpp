#include "gsl_FloatingPoint.h"

#include <cstdio>
#include <cstring>

/// This program is built with contraction, and proves that the check notices it. It exits with 0
/// when the check does, and with 77 where the processor cannot fuse.
int main() {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("fma") == 0) return 77;
#endif
  const char* const fault = gsl_CheckFloatingPoint();
  std::puts(fault != nullptr ? fault : "nothing noticed");
  return fault != nullptr && std::strstr(fault, "-ffp-contract=off") != nullptr ? 0 : 1;
}
