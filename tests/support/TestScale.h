#ifndef TEST_SCALE_H
#define TEST_SCALE_H

#if defined(__has_feature)
#define TEST_HAS_FEATURE(x) __has_feature(x)
#else
#define TEST_HAS_FEATURE(x) 0
#endif

/// Is 1 when a sanitizer instruments the build.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) ||                               \
    TEST_HAS_FEATURE(address_sanitizer) || TEST_HAS_FEATURE(thread_sanitizer) ||                   \
    TEST_HAS_FEATURE(memory_sanitizer)
#define TEST_UNDER_SANITIZER 1
#else
#define TEST_UNDER_SANITIZER 0
#endif

/// Random tests run in full in an optimised build. A build that is instrumented or not optimised is
/// slow, and runs a fraction of the cases.
#if TEST_UNDER_SANITIZER || !defined(__OPTIMIZE__) || defined(GSL_COVERAGE)
constexpr int kTestScaleDivisor = 20;
#else
constexpr int kTestScaleDivisor = 1;
#endif

/// Returns the number of cases to run when an optimised build runs `full`.
constexpr long Scaled(long full) {
  return full / kTestScaleDivisor;
}

#endif
