#ifndef GSL_WIDE_LANES_H
#define GSL_WIDE_LANES_H

#include "wide/Broadcast.h"

#include <cstddef>
#include <cstdint>

/// Vectors of doubles, as wide as the instruction set that this source is compiled for. They use
/// the compiler's vector extension. Every operation rounds each lane as the scalar operation does.
///
/// The same source is compiled once per instruction set. Each set has a namespace of its own, so
/// that the linker never uses the inline functions of one set for another set. For the same reason
/// these headers call no inline function of the standard library.

#if defined(__AVX512F__)
#define GSL_LANES 8
#define GSL_LANES_NAMESPACE avx512
#elif defined(__AVX2__)
#define GSL_LANES 4
#define GSL_LANES_NAMESPACE avx2
#else
#define GSL_LANES 2
#define GSL_LANES_NAMESPACE baseline
#endif

#define GSL_ALWAYS_INLINE inline __attribute__((always_inline))

namespace gsl_wide {
namespace GSL_LANES_NAMESPACE {

constexpr int kLanes = GSL_LANES;

typedef double Doubles __attribute__((vector_size(kLanes * 8)));
typedef std::int64_t Bits __attribute__((vector_size(kLanes * 8)));
typedef Doubles UnalignedDoubles __attribute__((aligned(8), may_alias));
typedef Bits UnalignedBits __attribute__((aligned(1), may_alias));

GSL_ALWAYS_INLINE Doubles Load(const double* from) {
  return *reinterpret_cast<const UnalignedDoubles*>(from);
}
GSL_ALWAYS_INLINE void Store(double* to, Doubles v) {
  *reinterpret_cast<UnalignedDoubles*>(to) = v;
}

/// Fetches an element into the cache. The index may lie outside the array: nothing is read then.
GSL_ALWAYS_INLINE void Prefetch(const double* array, std::ptrdiff_t index) {
  const auto at =
      reinterpret_cast<std::uintptr_t>(array) + static_cast<std::uintptr_t>(index) * sizeof(double);
  // A pointer must not leave the array, but a number may.
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  __builtin_prefetch(reinterpret_cast<const void*>(at), 1, 3);
}

GSL_ALWAYS_INLINE Bits LoadBits(const unsigned char* from) {
  return *reinterpret_cast<const UnalignedBits*>(from);
}

#if GSL_LANES == 8

GSL_ALWAYS_INLINE Doubles Splat(double s) {
  return Doubles{s, s, s, s, s, s, s, s};
}
GSL_ALWAYS_INLINE Doubles ZeroToLast() {
  return Doubles{0, 1, 2, 3, 4, 5, 6, 7};
}
GSL_ALWAYS_INLINE Bits SplatBits(std::int64_t s) {
  return Bits{s, s, s, s, s, s, s, s};
}
GSL_ALWAYS_INLINE Doubles SwapHalves(Doubles v) {
  return __builtin_shufflevector(v, v, 4, 5, 6, 7, 0, 1, 2, 3);
}
GSL_ALWAYS_INLINE Doubles SwapPairs(Doubles v) {
  return __builtin_shufflevector(v, v, 2, 3, 0, 1, 6, 7, 4, 5);
}
GSL_ALWAYS_INLINE Doubles SwapNeighbours(Doubles v) {
  return __builtin_shufflevector(v, v, 1, 0, 3, 2, 5, 4, 7, 6);
}

#elif GSL_LANES == 4

GSL_ALWAYS_INLINE Doubles Splat(double s) {
  return Doubles{s, s, s, s};
}
GSL_ALWAYS_INLINE Doubles ZeroToLast() {
  return Doubles{0, 1, 2, 3};
}
GSL_ALWAYS_INLINE Bits SplatBits(std::int64_t s) {
  return Bits{s, s, s, s};
}
GSL_ALWAYS_INLINE Doubles SwapHalves(Doubles v) {
  return v;
}
GSL_ALWAYS_INLINE Doubles SwapPairs(Doubles v) {
  return __builtin_shufflevector(v, v, 2, 3, 0, 1);
}
GSL_ALWAYS_INLINE Doubles SwapNeighbours(Doubles v) {
  return __builtin_shufflevector(v, v, 1, 0, 3, 2);
}

#else

GSL_ALWAYS_INLINE Doubles Splat(double s) {
  return Doubles{s, s};
}
GSL_ALWAYS_INLINE Doubles ZeroToLast() {
  return Doubles{0, 1};
}
GSL_ALWAYS_INLINE Bits SplatBits(std::int64_t s) {
  return Bits{s, s};
}
GSL_ALWAYS_INLINE Doubles SwapHalves(Doubles v) {
  return v;
}
GSL_ALWAYS_INLINE Doubles SwapPairs(Doubles v) {
  return v;
}
GSL_ALWAYS_INLINE Doubles SwapNeighbours(Doubles v) {
  return __builtin_shufflevector(v, v, 1, 0);
}

#endif

/// Returns *s times each lane.
template <Broadcast kBroadcast = Broadcast::InOperand>
GSL_ALWAYS_INLINE Doubles Times(const double* s, Doubles v) {
#if GSL_LANES == 8 && defined(__x86_64__)
  // A compiler would broadcast into a register once and use the register often.
  if constexpr (kBroadcast == Broadcast::InOperand) {
    Doubles product;
    __asm__("vmulpd %1%{1to8%}, %2, %0" : "=v"(product) : "m"(*s), "v"(v));
    return product;
  }
#endif
  return Splat(*s) * v;
}

GSL_ALWAYS_INLINE Doubles Magnitude(Doubles v) {
  return reinterpret_cast<Doubles>(reinterpret_cast<Bits>(v) & SplatBits(INT64_MAX));
}

/// Returns the larger value of each lane, and b where a is NaN.
GSL_ALWAYS_INLINE Doubles Larger(Doubles a, Doubles b) {
  return a > b ? a : b;
}

/// Returns the square root of each lane, correctly rounded.
#if defined(__AVX512F__)
GSL_ALWAYS_INLINE Doubles SquareRoot(Doubles v) {
  Doubles root;
  __asm__("vsqrtpd %1, %0" : "=v"(root) : "v"(v));
  return root;
}
#elif defined(__AVX2__)
GSL_ALWAYS_INLINE Doubles SquareRoot(Doubles v) {
  Doubles root;
  __asm__("vsqrtpd %1, %0" : "=x"(root) : "x"(v));
  return root;
}
#elif defined(__x86_64__)
GSL_ALWAYS_INLINE Doubles SquareRoot(Doubles v) {
  Doubles root;
  __asm__("sqrtpd %1, %0" : "=x"(root) : "x"(v));
  return root;
}
#else
GSL_ALWAYS_INLINE Doubles SquareRoot(Doubles v) {
  for (int i = 0; i < kLanes; ++i)
    v[i] = __builtin_sqrt(v[i]);
  return v;
}
#endif

/// Returns a bit for each lane in which a and b are equal; bit 0 is lane 0.
GSL_ALWAYS_INLINE unsigned EqualLanes(Doubles a, Doubles b) {
#if defined(__AVX512F__)
  // The compilers make this mask from a vector of bits, which takes twice as long.
  unsigned short mask;
  __asm__("vcmpeqpd %2, %1, %0" : "=k"(mask) : "v"(a), "v"(b));
  return mask;
#elif defined(__AVX2__)
  return static_cast<unsigned>(__builtin_ia32_movmskpd256(reinterpret_cast<Doubles>(a == b)));
#elif defined(__x86_64__)
  return static_cast<unsigned>(__builtin_ia32_movmskpd(reinterpret_cast<Doubles>(a == b)));
#else
  unsigned mask = 0;
  for (int i = 0; i < kLanes; ++i)
    mask |= (a[i] == b[i] ? 1u : 0u) << i;
  return mask;
#endif
}

/// Returns a bit for each lane in which a mask of comparisons holds; bit 0 is lane 0.
GSL_ALWAYS_INLINE unsigned MaskOf(Bits v) {
#if defined(__AVX512F__)
  unsigned short mask;
  __asm__("vptestmq %1, %1, %0" : "=k"(mask) : "v"(v));
  return mask;
#elif defined(__AVX2__)
  return static_cast<unsigned>(__builtin_ia32_movmskpd256(reinterpret_cast<Doubles>(v)));
#elif defined(__x86_64__)
  return static_cast<unsigned>(__builtin_ia32_movmskpd(reinterpret_cast<Doubles>(v)));
#else
  unsigned mask = 0;
  for (int i = 0; i < kLanes; ++i)
    mask |= (v[i] != 0 ? 1u : 0u) << i;
  return mask;
#endif
}

/// Returns the largest lane. Requires that no lane is NaN.
GSL_ALWAYS_INLINE double Largest(Doubles v) {
  v = Larger(v, SwapHalves(v));
  v = Larger(v, SwapPairs(v));
  v = Larger(v, SwapNeighbours(v));
  return v[0];
}

/// Returns whether a bit of any lane is set.
GSL_ALWAYS_INLINE bool AnyBit(Bits v) {
#if defined(__AVX512F__)
  return MaskOf(v) != 0;
#else
  v |= reinterpret_cast<Bits>(SwapHalves(reinterpret_cast<Doubles>(v)));
  v |= reinterpret_cast<Bits>(SwapPairs(reinterpret_cast<Doubles>(v)));
  return (v[0] | v[1]) != 0;
#endif
}

/// Returns whether a mask of comparisons holds in every lane.
GSL_ALWAYS_INLINE bool AllLanes(Bits mask) {
  return !AnyBit(~mask);
}

/// Transposes kLanes rows of kLanes doubles in place.
#if GSL_LANES == 8
GSL_ALWAYS_INLINE void Transpose(Doubles (&r)[kLanes]) {
  Doubles pair[8]; // of two neighbouring rows: the even columns, then the odd ones
#pragma GCC unroll 8
  for (int i = 0; i < 8; i += 2) {
    pair[i] = __builtin_shufflevector(r[i], r[i + 1], 0, 8, 2, 10, 4, 12, 6, 14);
    pair[i + 1] = __builtin_shufflevector(r[i], r[i + 1], 1, 9, 3, 11, 5, 13, 7, 15);
  }
#pragma GCC unroll 8
  for (int o = 0; o < 2; ++o) {
    const Doubles a = __builtin_shufflevector(pair[o], pair[2 + o], 0, 1, 4, 5, 8, 9, 12, 13);
    const Doubles b = __builtin_shufflevector(pair[o], pair[2 + o], 2, 3, 6, 7, 10, 11, 14, 15);
    const Doubles c = __builtin_shufflevector(pair[4 + o], pair[6 + o], 0, 1, 4, 5, 8, 9, 12, 13);
    const Doubles d = __builtin_shufflevector(pair[4 + o], pair[6 + o], 2, 3, 6, 7, 10, 11, 14, 15);
    r[o] = __builtin_shufflevector(a, c, 0, 1, 4, 5, 8, 9, 12, 13);
    r[4 + o] = __builtin_shufflevector(a, c, 2, 3, 6, 7, 10, 11, 14, 15);
    r[2 + o] = __builtin_shufflevector(b, d, 0, 1, 4, 5, 8, 9, 12, 13);
    r[6 + o] = __builtin_shufflevector(b, d, 2, 3, 6, 7, 10, 11, 14, 15);
  }
}
#elif GSL_LANES == 4
GSL_ALWAYS_INLINE void Transpose(Doubles (&r)[kLanes]) {
  const Doubles a = __builtin_shufflevector(r[0], r[1], 0, 4, 2, 6);
  const Doubles b = __builtin_shufflevector(r[0], r[1], 1, 5, 3, 7);
  const Doubles c = __builtin_shufflevector(r[2], r[3], 0, 4, 2, 6);
  const Doubles d = __builtin_shufflevector(r[2], r[3], 1, 5, 3, 7);
  r[0] = __builtin_shufflevector(a, c, 0, 1, 4, 5);
  r[1] = __builtin_shufflevector(b, d, 0, 1, 4, 5);
  r[2] = __builtin_shufflevector(a, c, 2, 3, 6, 7);
  r[3] = __builtin_shufflevector(b, d, 2, 3, 6, 7);
}
#else
GSL_ALWAYS_INLINE void Transpose(Doubles (&r)[kLanes]) {
  const Doubles a = r[0];
  const Doubles b = r[1];
  r[0] = __builtin_shufflevector(a, b, 0, 2);
  r[1] = __builtin_shufflevector(a, b, 1, 3);
}
#endif

} // namespace GSL_LANES_NAMESPACE
} // namespace gsl_wide

#endif
