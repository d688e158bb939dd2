#ifndef GSL_SWEEP_LANES_H
#define GSL_SWEEP_LANES_H

#include <cmath>
#include <cstdint>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace gsl_sweep {

/// Four numbers side by side, in registers of 16 bytes. Each operation works on each number alone
/// and rounds it like the operation on a single number.
template <class Scalar>
struct Four {
  typedef Scalar Part __attribute__((vector_size(16)));
  static constexpr int kParts = sizeof(Scalar) / 4;
  static constexpr int kInPart = 4 / kParts;

  Part part[kParts];

  static Four Of(Scalar x) {
    Four result;
    for (int p = 0; p < kParts; ++p)
      result.part[p] = x - Part{};
    return result;
  }

  static Four At(const Scalar* from) {
    Four result;
    std::memcpy(&result, from, sizeof result);
    return result;
  }

  void Store(Scalar* to) const { std::memcpy(to, part, sizeof part); }

  Scalar operator[](int k) const { return part[k / kInPart][k % kInPart]; }
  void Set(int k, Scalar x) { part[k / kInPart][k % kInPart] = x; }

  friend Four operator+(const Four& a, const Four& b) {
    Four result;
    for (int p = 0; p < kParts; ++p)
      result.part[p] = a.part[p] + b.part[p];
    return result;
  }
  friend Four operator-(const Four& a, const Four& b) {
    Four result;
    for (int p = 0; p < kParts; ++p)
      result.part[p] = a.part[p] - b.part[p];
    return result;
  }
  friend Four operator*(const Four& a, const Four& b) {
    Four result;
    for (int p = 0; p < kParts; ++p)
      result.part[p] = a.part[p] * b.part[p];
    return result;
  }
  friend Four operator/(const Four& a, const Four& b) {
    Four result;
    for (int p = 0; p < kParts; ++p)
      result.part[p] = a.part[p] / b.part[p];
    return result;
  }
  Four operator-() const {
    Four result;
    for (int p = 0; p < kParts; ++p)
      result.part[p] = -part[p];
    return result;
  }
};

using Float4 = Four<float>;
using Double4 = Four<double>;

#if defined(__SSE2__)

inline Float4 Most(const Float4& a, const Float4& b) {
  return {{_mm_max_ps(a.part[0], b.part[0])}};
}
inline Float4 Least(const Float4& a, const Float4& b) {
  return {{_mm_min_ps(a.part[0], b.part[0])}};
}
inline Double4 Most(const Double4& a, const Double4& b) {
  return {{_mm_max_pd(a.part[0], b.part[0]), _mm_max_pd(a.part[1], b.part[1])}};
}
inline Double4 Least(const Double4& a, const Double4& b) {
  return {{_mm_min_pd(a.part[0], b.part[0]), _mm_min_pd(a.part[1], b.part[1])}};
}
inline unsigned AtMost(const Float4& a, const Float4& b) {
  return static_cast<unsigned>(_mm_movemask_ps(_mm_cmple_ps(a.part[0], b.part[0])));
}
inline unsigned AtMost(const Double4& a, const Double4& b) {
  return static_cast<unsigned>(_mm_movemask_pd(_mm_cmple_pd(a.part[0], b.part[0])) |
                               _mm_movemask_pd(_mm_cmple_pd(a.part[1], b.part[1])) << 2);
}
/// Returns `a` where `below` is less than `limit`, and `b` elsewhere.
inline Float4 Choose(const Float4& below, const Float4& limit, const Float4& a, const Float4& b) {
  const __m128 mask = _mm_cmplt_ps(below.part[0], limit.part[0]);
  return {{_mm_or_ps(_mm_and_ps(mask, a.part[0]), _mm_andnot_ps(mask, b.part[0]))}};
}
inline Double4 Choose(const Double4& below, const Double4& limit, const Double4& a,
                      const Double4& b) {
  Double4 result;
  for (int p = 0; p < 2; ++p) {
    const __m128d mask = _mm_cmplt_pd(below.part[p], limit.part[p]);
    result.part[p] = _mm_or_pd(_mm_and_pd(mask, a.part[p]), _mm_andnot_pd(mask, b.part[p]));
  }
  return result;
}
inline Double4 Root(const Double4& a) {
  return {{_mm_sqrt_pd(a.part[0]), _mm_sqrt_pd(a.part[1])}};
}
/// Returns the three numbers from `from` on, rounded to nearest. The fourth is arbitrary.
inline Float4 Rounded(const double* from) {
  return {{_mm_movelh_ps(_mm_cvtpd_ps(_mm_loadu_pd(from)), _mm_cvtpd_ps(_mm_load_sd(from + 2)))}};
}

#else

/// Returns the greater and the less number. The result is b when either is NaN.
template <class Scalar>
Four<Scalar> Most(const Four<Scalar>& a, const Four<Scalar>& b) {
  Four<Scalar> result;
  for (int k = 0; k < 4; ++k)
    result.Set(k, a[k] > b[k] ? a[k] : b[k]);
  return result;
}
template <class Scalar>
Four<Scalar> Least(const Four<Scalar>& a, const Four<Scalar>& b) {
  Four<Scalar> result;
  for (int k = 0; k < 4; ++k)
    result.Set(k, a[k] < b[k] ? a[k] : b[k]);
  return result;
}
/// Bit k is set where a[k] <= b[k].
template <class Scalar>
unsigned AtMost(const Four<Scalar>& a, const Four<Scalar>& b) {
  unsigned mask = 0;
  for (int k = 0; k < 4; ++k)
    mask |= a[k] <= b[k] ? 1u << k : 0u;
  return mask;
}
template <class Scalar>
Four<Scalar> Choose(const Four<Scalar>& below, const Four<Scalar>& limit, const Four<Scalar>& a,
                    const Four<Scalar>& b) {
  Four<Scalar> result;
  for (int k = 0; k < 4; ++k)
    result.Set(k, below[k] < limit[k] ? a[k] : b[k]);
  return result;
}
inline Double4 Root(const Double4& a) {
  Double4 result;
  for (int k = 0; k < 4; ++k)
    result.Set(k, std::sqrt(a[k]));
  return result;
}
inline Float4 Rounded(const double* from) {
  volatile float x = static_cast<float>(from[0]);
  volatile float y = static_cast<float>(from[1]);
  volatile float z = static_cast<float>(from[2]);
  const float all[4] = {x, y, z, 0.0f};
  return Float4::At(all);
}

#endif

template <class Scalar>
Four<Scalar> Magnitude(const Four<Scalar>& a) {
  return Most(a, -a);
}

} // namespace gsl_sweep

#endif
