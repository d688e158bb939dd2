#ifndef GSL_WIDE_BATCH_WORK_H
#define GSL_WIDE_BATCH_WORK_H

#include <cstddef>

/// The arguments of the batches. The lanes handle whole groups of inputs. `one` runs the scalar
/// kernel for an input that a group does not decide, and for the inputs after the last whole group.
namespace gsl_wide {

/// Points that are read. Point k begins k * stride doubles after the first.
struct PointsIn {
  const double* first;
  std::ptrdiff_t stride;
};

struct PointSegmentBatch {
  std::size_t count;
  PointsIn p, p1, p2;
  double linearTolerance;
  double* distances;
  double* nearest;      ///< may be null
  unsigned char* parts; ///< may be null
  void (*one)(const PointSegmentBatch& batch, std::size_t k);
};

struct PointTriangleBatch {
  std::size_t count;
  PointsIn p, p1, p2, p3;
  double linearTolerance, cosineTolerance;
  double* distances;
  void (*one)(const PointTriangleBatch& batch, std::size_t k);
};

struct SegmentPairBatch {
  std::size_t count;
  PointsIn a1, a2, b1, b2;
  double linearTolerance;
  double* distances;
  double* onA;           ///< may be null
  double* onB;           ///< may be null
  unsigned char* partsA; ///< may be null
  unsigned char* partsB; ///< may be null
  void (*one)(const SegmentPairBatch& batch, std::size_t k);
};

/// `out` may be the array of a packed `in`.
struct TransformBatch {
  std::size_t count;
  PointsIn in;
  const double (*matrix)[4][4];
  double* out;
  void (*one)(const TransformBatch& batch, std::size_t k);
};

/// Boxes that are read by their corners, and written one after the other: min, then max.
struct BoxBatch {
  std::size_t count;
  PointsIn min, max;
  const double (*matrix)[4][4];
  double* out;
  void (*one)(const BoxBatch& batch, std::size_t k);
};

/// Pairs of triangles that are swept in order. `one` sweeps a pair with the distance of its turn.
struct TriangleSweepBatch {
  std::size_t count;
  PointsIn a[3], b[3];
  double direction[3]; ///< a unit vector or zero
  double length;       ///< of the direction, as it was measured
  double axis[3];      ///< the direction, normalised again
  double linearTolerance, cosineTolerance;
  bool twoSided[2];
  double margin;
  const double* distance; ///< the least distance so far, which `one` lowers
  void* contact;          ///< what `one` writes
  void (*one)(const TriangleSweepBatch& batch, std::size_t k);
};

/// The parts of a segment, as the batches write them.
constexpr int kPartFoot = 1, kPartFirst = 2, kPartSecond = 3;

} // namespace gsl_wide

#endif
