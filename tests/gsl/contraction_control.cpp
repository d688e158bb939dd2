#include "ContractionCanary.h"

/// Built with contraction on: proves that the canary would notice. 0 when it does, 77 where the
/// processor cannot fuse.
int main() {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("fma") == 0) return 77;
#endif
  return IsInlineArithmeticContracted() ? 0 : 1;
}
