#ifndef GSL_EXPORT_H
#define GSL_EXPORT_H

/// GSL_API marks what libgsl_geometry.so exports; everything else is hidden.
#if defined(__GNUC__)
#define GSL_API __attribute__((visibility("default")))
#else
#define GSL_API
#endif

// Every promise in these headers relies on NaN and on the order of operations.
#if defined(__FAST_MATH__) || (defined(__FINITE_MATH_ONLY__) && __FINITE_MATH_ONLY__ > 0)
#error "gsl_geometry cannot be used with -ffast-math or -ffinite-math-only"
#endif
#if defined(__FLT_EVAL_METHOD__) && __FLT_EVAL_METHOD__ != 0 && __FLT_EVAL_METHOD__ != 16
#error "gsl_geometry needs double arithmetic without excess precision"
#endif

#endif
