#ifndef GSL_BATCH_H
#define GSL_BATCH_H

#include "gsl_Export.h"

#include <cstddef>

class gsl_Matrix;
class gsl_Vector;

/// Queries for a host that has many inputs, on arrays of doubles without identities.
///
/// Units      model units.
/// Results    the same bits as the scalar calls, on every processor and for every count. Of a NaN
///            only that it is one: its sign and its payload are not promised. The vector registers
///            of the processor are chosen at run time.
/// Tolerance  gsl_Util linearTolerance and cosineTolerance, read once per call.
/// Arrays     doubles need no alignment beyond 8 bytes. An output has room for `count` results
///            without a gap: one number each, or three coordinates each. A count of 0 reads and
///            writes nothing. Functions say where they differ.
/// Outputs    an output of points may be the array of an input whose stride is 3, from the same
///            first point. Unless a function says otherwise, everything else that is written must
///            be apart from the inputs, and outputs from each other: also from an input that begins
///            elsewhere in the same array.
/// Errors     none thrown, none printed; nothing is allocated.
/// Threads    calls are safe together while nobody writes the settings.

/// Points that a batch reads, as three doubles each.
struct gsl_BatchPoints {
  const double* first; ///< the coordinates of the first point
  /// The way from one point to the next, in doubles. 0 means that one point serves every input; it
  /// may be negative.
  std::ptrdiff_t stride = 3;
};

/// The part of a segment that holds the nearest point. None: there is no nearest point.
enum class gsl_BatchPart : unsigned char { None, Foot, First, Second };

/// Computes gsl_Point::GetDistance(segment, closest) for point k and the segment from p1[k] to
/// p2[k].
///
/// Outputs    `nearest` and `parts` may be null. A Foot is a computed point; First and Second are
///            the ends.
/// Degenerate a segment with linearTolerance > length has the part None and leaves its `nearest` as
///            it was. The distance leads to that point, and is NaN where `nearest` is null.
/// NaN        as in the scalar call: of the point and of p2 it spreads into the distance. A segment
///            with a NaN in p1 alone may still have p2 as its nearest point.
GSL_API void gsl_PointSegmentDistances(std::size_t count, const gsl_BatchPoints& points,
                                       const gsl_BatchPoints& p1, const gsl_BatchPoints& p2,
                                       double* distances, double* nearest = nullptr,
                                       gsl_BatchPart* parts = nullptr);

/// Computes gsl_Point::GetDistance(p1, p2, p3) for point k and the triangle of p1[k], p2[k] and
/// p3[k]. A triangle without a normal, by cosineTolerance, has the distance NaN.
GSL_API void gsl_PointTriangleDistances(std::size_t count, const gsl_BatchPoints& points,
                                        const gsl_BatchPoints& p1, const gsl_BatchPoints& p2,
                                        const gsl_BatchPoints& p3, double* distances);

/// Computes gsl_Segment::GetDistance for the segments from a1[k] to a2[k] and from b1[k] to b2[k].
/// The distance is the length of the connection.
///
/// Outputs    the ends of the connection, onA and onB, and their parts may be null. Where the
///            segments cross, both ends are the same Foot.
/// None       segments without any distance below 1e10, such as those of which every end is NaN,
///            have the part None and the distance NaN, and leave onA and onB as they were. A NaN in
///            one end alone leaves the connection of the others.
/// Degenerate for the ends of the other, a segment shorter than linearTolerance is its first point.
GSL_API void gsl_SegmentDistances(std::size_t count, const gsl_BatchPoints& a1,
                                  const gsl_BatchPoints& a2, const gsl_BatchPoints& b1,
                                  const gsl_BatchPoints& b2, double* distances,
                                  double* onA = nullptr, double* onB = nullptr,
                                  gsl_BatchPart* partsA = nullptr, gsl_BatchPart* partsB = nullptr);

/// Computes gsl_Matrix::Transform for each point. The flag of the matrix is not read.
GSL_API void gsl_TransformPoints(std::size_t count, const gsl_Matrix& matrix,
                                 const gsl_BatchPoints& points, double* moved);

/// Computes gsl_BBox::Transform for the box from min[k] to max[k]. Writes six doubles each, min and
/// then max. An empty box, whose min exceeds its max on some axis, is copied. `moved` may be the
/// array of the boxes when both strides are 6 and max begins 3 doubles after min.
GSL_API void gsl_TransformBoxes(std::size_t count, const gsl_Matrix& matrix,
                                const gsl_BatchPoints& min, const gsl_BatchPoints& max,
                                double* moved);

/// Writes the box around the points, min and then max, as gsl_BBox::Add finds it one point after
/// the other: a NaN of the first point stays, and a later NaN is ignored. `box` has room for six
/// doubles and may be among the points. A count of 0 writes the empty box, (0, 0, 0) and
/// (-1, -1, -1).
GSL_API void gsl_BoxOfPoints(std::size_t count, const gsl_BatchPoints& points, double* box);

/// Triangles that a batch reads: the first, second and third corners.
struct gsl_BatchTriangles {
  gsl_BatchPoints corners[3]; ///< the arrays of the three corners
};

/// Triangles that gsl_PrepareTriangles has written.
struct gsl_PreparedTriangles {
  const double* numbers; ///< what it wrote; they need no alignment beyond 8 bytes
  std::size_t count;     ///< the count of triangles that it was called with
  std::size_t first = 0; ///< the triangle of the first pair
  bool isShared = false; ///< true: this triangle serves every pair, instead of one after the other
};

/// Returns how many doubles gsl_PrepareTriangles writes.
[[nodiscard]] GSL_API std::size_t gsl_CountPreparedNumbers(std::size_t count);

/// Computes the normal and the edges of each triangle once, for any number of sweeps in any
/// direction.
///
/// Outputs    `numbers` has room for gsl_CountPreparedNumbers(count) doubles and must be apart from
///            the triangles. What they hold belongs to this version of the library, and is neither
///            stored nor sent.
/// Tolerance  none: a sweep decides by the settings at its call.
/// Degenerate a triangle without a normal, or with a NaN, is kept as it is.
GSL_API void gsl_PrepareTriangles(std::size_t count, const gsl_BatchTriangles& triangles,
                                  double* numbers);

/// The running minimum of gsl_SweepTriangles and gsl_SweepSegments.
struct gsl_BatchContact {
  double distance;  ///< the least distance so far; what is passed in limits the sweep
  double onA[3];    ///< the contact on A
  double onB[3];    ///< what the last call that found a contact wrote; see gsl_SweepTriangles
  std::size_t pair; ///< the number of the pair that wrote the distance last
};

/// Calls gsl_TriTriMinDirectionalDist for triangle A[k] and triangle B[k], one pair after the
/// other, with the distance and the contacts of the pairs before. A stride of 0 sweeps one triangle
/// against many.
///
/// Result     true when a call found a contact, which may be no closer than the distance so far.
/// Outputs    `contact` must be apart from the inputs. Its members are what the calls write, so
///            without a contact they stay. At a tie the earlier pair stays. A later pair whose
///            contact is no closer may still write onB, on its own plane, as the single call does.
///            For both points of `pair`, call gsl_TriTriMinDirectionalDist for that pair.
/// Arguments  `direction`, `margin`, degenerate input and NaN are as in the single call. Both flags
///            of twoSided are read.
/// Speed      pairs of faces are swept in vector registers. A pair with a triangle edge-on, and a
///            pair that touches at the border of a tolerance, take the time of the single call; so
///            do most pairs with a linear tolerance of 0.
[[nodiscard]] GSL_API bool gsl_SweepTriangles(std::size_t count, const gsl_Vector& direction,
                                              const gsl_BatchTriangles& a,
                                              const gsl_BatchTriangles& b, const bool* twoSided,
                                              double margin, gsl_BatchContact& contact);

/// Is gsl_SweepTriangles for prepared triangles, with the same results. It takes less time where
/// most pairs are rejected. Pair k is triangle `first` + k of each, or its shared triangle. They
/// must be among the `count` that were prepared.
[[nodiscard]] GSL_API bool
gsl_SweepPreparedTriangles(std::size_t count, const gsl_Vector& direction,
                           const gsl_PreparedTriangles& a, const gsl_PreparedTriangles& b,
                           const bool* twoSided, double margin, gsl_BatchContact& contact);

/// Segments that a batch reads: the first and second ends.
struct gsl_BatchSegments {
  gsl_BatchPoints ends[2]; ///< the arrays of the two ends
};

/// Calls gsl_InPlaneSegSegMinDirectionalDist for segment A[k] and segment B[k], one pair after the
/// other, with the distance and the contacts of the pairs before. A stride of 0 sweeps one segment
/// against many.
///
/// Result     true when a call returned true.
/// Outputs    `contact` must be apart from the inputs. Its members are what the calls write. A call
///            that returns false may have written them, and `pair` is its number. Without a contact
///            they stay. At a tie the earlier pair stays.
/// Arguments  `direction`, `margin`, degenerate input and NaN are as in the single call. Both flags
///            of twoSided are read. A negative margin can raise the distance, as in the single
///            call.
/// Speed      pairs that pass aside, that face the wrong way or that cannot be closer are rejected
///            in vector registers. Every other pair takes the time of the single call.
[[nodiscard]] GSL_API bool gsl_SweepSegments(std::size_t count, const gsl_Vector& direction,
                                             const gsl_BatchSegments& a, const gsl_BatchSegments& b,
                                             const bool* twoSided, double margin,
                                             gsl_BatchContact& contact);

#endif
