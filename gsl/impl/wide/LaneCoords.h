#ifndef GSL_WIDE_LANE_COORDS_H
#define GSL_WIDE_LANE_COORDS_H

#include "wide/BatchWork.h"
#include "wide/Lanes.h"

/// The arithmetic of gsl_Arithmetic.h on one point or vector in each lane. Every formula is
/// evaluated in the same order.
namespace gsl_wide {
namespace GSL_LANES_NAMESPACE {

struct Coords {
  Doubles x, y, z;
};

GSL_ALWAYS_INLINE Coords Add(const Coords& a, const Coords& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
GSL_ALWAYS_INLINE Coords Subtract(const Coords& a, const Coords& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
GSL_ALWAYS_INLINE Coords Multiply(const Coords& a, Doubles s) {
  return {a.x * s, a.y * s, a.z * s};
}
GSL_ALWAYS_INLINE Coords Divide(const Coords& a, Doubles s) {
  return {a.x / s, a.y / s, a.z / s};
}
GSL_ALWAYS_INLINE Doubles Dot(const Coords& a, const Coords& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
GSL_ALWAYS_INLINE Coords Cross(const Coords& a, const Coords& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
GSL_ALWAYS_INLINE Doubles Length(const Coords& a) {
  return SquareRoot(Dot(a, a));
}
GSL_ALWAYS_INLINE Doubles Distance(const Coords& a, const Coords& b) {
  return Length(Subtract(b, a));
}

/// Returns a where the mask holds, and b elsewhere.
GSL_ALWAYS_INLINE Coords Choose(Bits mask, const Coords& a, const Coords& b) {
  return {mask ? a.x : b.x, mask ? a.y : b.y, mask ? a.z : b.z};
}

/// Returns kLanes doubles that are `stride` doubles apart.
GSL_ALWAYS_INLINE Doubles LoadSpaced(const double* from, std::ptrdiff_t stride) {
#if GSL_LANES == 8
  return Doubles{from[0],          from[stride],     from[2 * stride], from[3 * stride],
                 from[4 * stride], from[5 * stride], from[6 * stride], from[7 * stride]};
#elif GSL_LANES == 4
  return Doubles{from[0], from[stride], from[2 * stride], from[3 * stride]};
#else
  return Doubles{from[0], from[stride]};
#endif
}

/// Returns kLanes points that follow one another without a gap.
GSL_ALWAYS_INLINE Coords LoadPacked(const double* from) {
  const Doubles a = Load(from), b = Load(from + kLanes), c = Load(from + 2 * kLanes);
#if GSL_LANES == 8
  const Doubles x = __builtin_shufflevector(a, b, 0, 3, 6, 9, 12, 15, 15, 15);
  const Doubles y = __builtin_shufflevector(a, b, 1, 4, 7, 10, 13, 13, 13, 13);
  const Doubles z = __builtin_shufflevector(a, b, 2, 5, 8, 11, 14, 14, 14, 14);
  return {__builtin_shufflevector(x, c, 0, 1, 2, 3, 4, 5, 10, 13),
          __builtin_shufflevector(y, c, 0, 1, 2, 3, 4, 8, 11, 14),
          __builtin_shufflevector(z, c, 0, 1, 2, 3, 4, 9, 12, 15)};
#elif GSL_LANES == 4
  const Doubles x = __builtin_shufflevector(a, b, 0, 3, 6, 6);
  const Doubles y = __builtin_shufflevector(a, b, 1, 4, 7, 7);
  const Doubles z = __builtin_shufflevector(a, b, 2, 5, 5, 5);
  return {__builtin_shufflevector(x, c, 0, 1, 2, 5), __builtin_shufflevector(y, c, 0, 1, 2, 6),
          __builtin_shufflevector(z, c, 0, 1, 4, 7)};
#else
  return {__builtin_shufflevector(a, b, 0, 3), __builtin_shufflevector(a, c, 1, 2),
          __builtin_shufflevector(b, c, 0, 3)};
#endif
}

/// Writes kLanes points without a gap.
GSL_ALWAYS_INLINE void StorePacked(double* to, const Coords& v) {
#if GSL_LANES == 8
  const Doubles a = __builtin_shufflevector(v.x, v.y, 0, 8, 0, 1, 9, 0, 2, 10);
  const Doubles b = __builtin_shufflevector(v.x, v.y, 0, 3, 11, 0, 4, 12, 0, 5);
  const Doubles c = __builtin_shufflevector(v.x, v.y, 13, 0, 6, 14, 0, 7, 15, 0);
  Store(to, __builtin_shufflevector(a, v.z, 0, 1, 8, 3, 4, 9, 6, 7));
  Store(to + 8, __builtin_shufflevector(b, v.z, 10, 1, 2, 11, 4, 5, 12, 7));
  Store(to + 16, __builtin_shufflevector(c, v.z, 0, 13, 2, 3, 14, 5, 6, 15));
#elif GSL_LANES == 4
  const Doubles a = __builtin_shufflevector(v.x, v.y, 0, 4, 0, 1);
  const Doubles b = __builtin_shufflevector(v.x, v.y, 5, 0, 2, 6);
  const Doubles c = __builtin_shufflevector(v.x, v.y, 0, 3, 7, 0);
  Store(to, __builtin_shufflevector(a, v.z, 0, 1, 4, 3));
  Store(to + 4, __builtin_shufflevector(b, v.z, 0, 5, 2, 3));
  Store(to + 8, __builtin_shufflevector(c, v.z, 6, 1, 2, 7));
#else
  Store(to, __builtin_shufflevector(v.x, v.y, 0, 2));
  Store(to + 2, __builtin_shufflevector(v.z, v.x, 0, 3));
  Store(to + 4, __builtin_shufflevector(v.y, v.z, 1, 3));
#endif
}

/// Returns the points k .. k + kLanes - 1.
GSL_ALWAYS_INLINE Coords LoadPoints(const PointsIn& in, std::size_t k) {
  const double* const from = in.first + static_cast<std::ptrdiff_t>(k) * in.stride;
  if (in.stride == 3) return LoadPacked(from);
  if (in.stride == 0) return {Splat(from[0]), Splat(from[1]), Splat(from[2])};
  return {LoadSpaced(from, in.stride), LoadSpaced(from + 1, in.stride),
          LoadSpaced(from + 2, in.stride)};
}

/// Writes the points k .. k + kLanes - 1 where the mask holds. Writes nothing to null.
GSL_ALWAYS_INLINE void StorePoints(double* to, std::size_t k, const Coords& v, Bits mask,
                                   bool isWhole) {
  if (to == nullptr) return;
  double* const at = to + 3 * k;
  if (isWhole) {
    StorePacked(at, v);
    return;
  }
  for (int i = 0; i < kLanes; ++i) {
    if (mask[i] == 0) continue;
    at[3 * i] = v.x[i];
    at[3 * i + 1] = v.y[i];
    at[3 * i + 2] = v.z[i];
  }
}

/// Writes a small number for each lane where the mask holds. Writes nothing to null.
GSL_ALWAYS_INLINE void StoreBytes(unsigned char* to, std::size_t k, Bits v, Bits mask) {
  if (to == nullptr) return;
  for (int i = 0; i < kLanes; ++i) {
    if (mask[i] != 0) to[k + static_cast<std::size_t>(i)] = static_cast<unsigned char>(v[i]);
  }
}

/// Calls `one` for each lane where the mask does not hold.
template <class Batch>
GSL_ALWAYS_INLINE void RunOthers(const Batch& batch, std::size_t k, Bits mask) {
  for (int i = 0; i < kLanes; ++i) {
    if (mask[i] == 0) batch.one(batch, k + static_cast<std::size_t>(i));
  }
}

/// Calls group(k) for each whole group, and `one` for the inputs that are left.
template <class Batch, class Group>
GSL_ALWAYS_INLINE void ForGroups(const Batch& batch, const Group& group) {
  std::size_t k = 0;
  for (; batch.count - k >= kLanes; k += kLanes)
    group(k);
  for (; k < batch.count; ++k)
    batch.one(batch, k);
}

} // namespace GSL_LANES_NAMESPACE
} // namespace gsl_wide

#endif
