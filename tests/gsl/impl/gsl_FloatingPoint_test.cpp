#include "gsl_FloatingPoint.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <string>
#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

// ./scripts/check consumer tests the compiler's flags that must be noticed.

namespace {

/// Returns what the check says with that rounding mode, and restores the mode.
std::string SaidWhenRounding(int mode) {
  const int before = std::fegetround();
  std::fesetround(mode);
  const char* const fault = gsl_CheckFloatingPoint();
  std::fesetround(before);
  return fault != nullptr ? fault : "";
}

} // namespace

TEST(GslFloatingPoint, NothingIsWrongHere) {
  EXPECT_STREQ(gsl_CheckFloatingPoint(), nullptr);
}

TEST(GslFloatingPoint, EveryOtherRoundingModeIsNoticed) {
  EXPECT_EQ(SaidWhenRounding(FE_TONEAREST), "");
  for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    EXPECT_EQ(SaidWhenRounding(mode),
              "results are not rounded to nearest: call fesetround(FE_TONEAREST)")
        << mode;
  }
}

#if defined(__SSE2__)
TEST(GslFloatingPoint, FlushedSubnormalsAreNoticed) {
  const unsigned int before = _mm_getcsr();
  // Results, arguments.
  for (const unsigned int bit : {0x8000u, 0x0040u}) {
    _mm_setcsr(before | bit);
    const char* const fault = gsl_CheckFloatingPoint();
    _mm_setcsr(before);
    EXPECT_STREQ(fault, "subnormal numbers count as zero: link every module without -ffast-math")
        << bit;
  }
}
#endif
