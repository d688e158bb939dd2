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

/// Where the numbers of a prepared triangle begin. Number i of triangle k is i * pitch + k doubles
/// after the first.
constexpr int kPreparedCorners = 0;    ///< three corners of three coordinates
constexpr int kPreparedNormal = 9;     ///< the unit normal
constexpr int kPreparedMagnitude = 12; ///< the length of the unit normal, as it was scaled
constexpr int kPreparedArea = 13;      ///< the length of the cross product of the first two edges
constexpr int kPreparedLengths = 14;   ///< the lengths of the three edges
constexpr int kPreparedUnits = 17;     ///< the unit vectors of the three edges
constexpr int kPreparedNumbers = 26;

/// Prepared triangles that are read. Null: the triangles are not prepared. A step of 0 means that
/// one triangle serves every pair, and otherwise the step is 1.
struct PreparedIn {
  const double* first;
  std::size_t pitch;
  std::size_t step;
};

/// What a group of pairs has found, one pair in each lane. Lanes of neither mask are rejected.
struct TriangleGroup {
  std::size_t k;        ///< the first pair
  unsigned left;        ///< lanes that the scalar kernel sweeps; bit 0 is lane 0
  unsigned found;       ///< lanes with a contact, unless `ahead` is out of reach at their turn
  double ahead[8];      ///< how far the extent of B is ahead of the extent of A
  double distance[8];   ///< the least distance of a contact
  double contact[3][8]; ///< the coordinates of this contact on A
};

/// Pairs of triangles that are swept in order. `one` sweeps a pair with the distance of its turn,
/// and `take` does so for the pairs of a group.
struct TriangleSweepBatch {
  std::size_t count;
  PointsIn a[3], b[3];             ///< read where the triangles are not prepared
  PreparedIn preparedA, preparedB; ///< both, or neither
  double direction[3];             ///< a unit vector or zero
  double length;                   ///< of the direction, as it was measured
  double axis[3];                  ///< the direction, normalised again
  double linearTolerance, cosineTolerance;
  bool twoSided[2];
  double margin;
  const double* distance; ///< the least distance so far, which `one` and `take` lower
  void* contact;          ///< what `one` and `take` write
  void (*one)(const TriangleSweepBatch& batch, std::size_t k);
  void (*take)(const TriangleSweepBatch& batch, const TriangleGroup& group);
};

/// Pairs of segments that are swept in order. `one` sweeps a pair with the distance of its turn.
struct SegmentSweepBatch {
  std::size_t count;
  PointsIn a[2], b[2];
  double direction[3]; ///< a unit vector or zero
  double length;       ///< of the direction, as it was measured
  double linearTolerance, cosineTolerance;
  bool twoSided[2];
  double margin;
  const double* distance; ///< the least distance so far, which `one` lowers
  void* contact;          ///< what `one` writes
  void (*one)(const SegmentSweepBatch& batch, std::size_t k);
};

/// The parts of a segment, as the batches write them.
constexpr int kPartFoot = 1, kPartFirst = 2, kPartSecond = 3;

} // namespace gsl_wide

#endif
