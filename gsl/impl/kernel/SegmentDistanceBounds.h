#ifndef GSL_KERNEL_SEGMENT_DISTANCE_BOUNDS_H
#define GSL_KERNEL_SEGMENT_DISTANCE_BOUNDS_H

/// The bounds within which the place of the shortest connection of two segments is certain. The
/// kernel of one pair and the lanes of many share them.
namespace gsl_kernel {

// Below, h is 2^-53, u and v are the edges, n is u x v, and r leads from the start of b to the
// start of a. R^2 is the sum of the squares of both starts and both edges, times 4: R is at least
// the length of every vector and the size of every coordinate.

/// The least square of the sine of the angle between the segments.
constexpr double kLeastSineSquare = 0x1p-18;

/// The least square of a length of a segment, divided by R^2.
constexpr double kLeastLengthSquare = 0x1p-28;

/// The least square of a length of a segment, divided by the square of the linear tolerance.
constexpr double kLeastLengthInTolerances = 0x1p24;

/// The least linear tolerance, divided by R. Both the steps and the products find the distance of
/// the two lines within 64 h R / sine, which is 2^-38 R.
constexpr double kLeastToleranceRatio = 0x1p-32;

/// The distance from an end, in parts of a segment, at which a position is certain.
// The products find a position within 32 h R / (l sine^2) of the crossing, for a segment of length
// l: this is 32 h 2^14 2^18 = 2^-16. The steps are within twice that, and allow a tolerance more:
// 2^-12.
constexpr double kPositionMargin = 0x1p-9;

/// The distance from an end, in parts of a segment, at which the position of a foot is certain.
// It is the same margin for a foot, which needs no sine.
constexpr double kFootMargin = kPositionMargin;

/// The difference of two squares of distances, divided by R^2, above which their order is certain.
// A distance of the steps is within 32 h R, so its square is within 64 h R^2. The squares here have
// 16 h of the sum of at most eight products. A foot beyond an end, within the tolerance, is nearer
// than the end by at most the square of the tolerance, which is added.
constexpr double kSquareMargin = 0x1p-42;

} // namespace gsl_kernel

#endif
