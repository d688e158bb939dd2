#include "wide/gsl_WideKernels.h"

#include <initializer_list>

const gsl_WideKernels* gsl_FindWideKernels(gsl_VectorWidth width) {
  if (width == gsl_VectorWidth::Baseline) return &gsl_WideKernelsBaseline;
#if defined(GSL_X86_WIDTHS)
  if (width == gsl_VectorWidth::Avx2 && __builtin_cpu_supports("avx2")) return &gsl_WideKernelsAvx2;
  if (width == gsl_VectorWidth::Avx512 && __builtin_cpu_supports("avx512f"))
    return &gsl_WideKernelsAvx512;
#endif
  return nullptr;
}

bool gsl_SplitsWideVectors() {
#if defined(GSL_X86_WIDTHS)
  // CPUID has a bit for the width of the units, but virtual machines hide it. Of the processors
  // with AVX-512, those of this family split the vectors.
  return __builtin_cpu_is("amdfam19h") != 0;
#else
  return false;
#endif
}

const gsl_WideKernels& gsl_BestWideKernels() {
  static const gsl_WideKernels& best = []() -> const gsl_WideKernels& {
    for (const gsl_VectorWidth width : {gsl_VectorWidth::Avx512, gsl_VectorWidth::Avx2}) {
      if (const gsl_WideKernels* const kernels = gsl_FindWideKernels(width)) return *kernels;
    }
    return gsl_WideKernelsBaseline;
  }();
  return best;
}
