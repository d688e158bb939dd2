#ifndef GSL_EXPORT_H
#define GSL_EXPORT_H

/// GSL_API marks what libgsl_geometry.so exports; everything else is hidden.
#if defined(__GNUC__)
#define GSL_API __attribute__((visibility("default")))
#else
#define GSL_API
#endif

// These headers promise that NaN compares equal and that operations keep their order.
#if defined(__FAST_MATH__) || (defined(__FINITE_MATH_ONLY__) && __FINITE_MATH_ONLY__ > 0)
#error "gsl_geometry cannot be used with -ffast-math or -ffinite-math-only"
#endif
#if defined(__FLT_EVAL_METHOD__) && __FLT_EVAL_METHOD__ != 0 && __FLT_EVAL_METHOD__ != 16
#error "gsl_geometry needs double arithmetic without excess precision"
#endif

#endif
