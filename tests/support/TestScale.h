#ifndef TEST_SCALE_H
#define TEST_SCALE_H

#if defined(__has_feature)
#define TEST_HAS_FEATURE(x) __has_feature(x)
#else
#define TEST_HAS_FEATURE(x) 0
#endif

/// 1 where a sanitizer instruments the build.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) ||                               \
    TEST_HAS_FEATURE(address_sanitizer) || TEST_HAS_FEATURE(thread_sanitizer) ||                   \
    TEST_HAS_FEATURE(memory_sanitizer)
#define TEST_UNDER_SANITIZER 1
#else
#define TEST_UNDER_SANITIZER 0
#endif

/// Random tests run in full in an optimised build, and with a fraction of the cases where the build
/// is slow: instrumented or not optimised.
#if TEST_UNDER_SANITIZER || !defined(__OPTIMIZE__)
constexpr int kTestScaleDivisor = 20;
#else
constexpr int kTestScaleDivisor = 1;
#endif

/// The number of cases to run where an optimised build runs `full`.
constexpr long Scaled(long full) {
  return full / kTestScaleDivisor;
}

#endif
