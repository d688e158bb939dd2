#ifndef GSL_KERNEL_TRIANGLE_DISTANCE_BOUNDS_H
#define GSL_KERNEL_TRIANGLE_DISTANCE_BOUNDS_H

/// The bounds within which the region of the point of a triangle that is nearest to p is certain.
/// The kernel of one triangle and the lanes of many share them.
namespace gsl_kernel {

// The errors below count unit roundoffs h = 2^-53. E^2 is twice the sum of the squares of both
// edges from a, so no edge is longer than E. R^2 is the sum of E^2 and of the squares of the
// coordinates of p and of a, times 4. So R is at least the length of every vector and at least the
// size of every coordinate.

/// Error of a weight of the triangle test, divided by R^2 E^2: at most 2^9 h.
// A weight is a sum of four products of two dot products of at most R E and E^2, or E^2 and R E.
// Each has 2 (3 + 2) + 1 h, and the three sums have 3 h more: 4 * 14 h. The weight of the steps has
// two vectors with 1 h each, two cross products and a dot product: 12 h. It also has the error of
// the foot, 8 h R for its arithmetic and 8 h R E^2 / |n| for the direction of the normal n. Two
// vectors lead from the foot, and |n| multiplies both: 2 * (8 + 8) h. The sum is below 2^7 h.
constexpr double kWeightRounding = 0x1p-44;

/// The least square of a height of the triangle, divided by R^2.
// A distance of the steps is within 32 h R of its value, so its square is within 64 h R^2 = 2^-47
// R^2. Where the nearest point is a vertex, the other distances lead to points that are at least a
// height away from it. Where the nearest point is kEdgeMargin within an edge, the other edges are
// at least kEdgeMargin times a height away. The triangle is convex: the squares of two such
// distances differ by at least the square of that way, kEdgeMargin^2 kLeastHeightSquare R^2 = 2^-42
// R^2.
constexpr double kLeastHeightSquare = 0x1p-28;

/// The least part of an edge between the nearest point and an end.
constexpr double kEdgeMargin = 0x1p-7;

/// The least square of a height of the triangle, divided by the square of the linear tolerance.
// A foot up to a tolerance beyond an end counts. The square of its distance is less than the square
// of the distance of the end, by at most the square of the tolerance. The way above, kEdgeMargin
// times a height, is at least two tolerances long.
constexpr double kLeastToleranceSquares = 4.0 / (kEdgeMargin * kEdgeMargin);

/// Error of a product that locates the foot along an edge, divided by E R: at most 16 h for the
/// product here, and at most 16 h for the position that the steps compute.
constexpr double kProductRounding = 0x1p-46;

/// The largest tolerance of cosines for which a triangle of that height is certain to have a
/// normal.
constexpr double kLargestDecidedCosine = 0x1p-16;

/// The least square of a doubled area and the largest R^2 that are decided. In between, no product
/// of four lengths loses its digits or overflows, here and in the steps.
constexpr double kLeastDecidedArea = 1e-200;
constexpr double kLargestDecidedReach = 1e100;

} // namespace gsl_kernel

#endif
