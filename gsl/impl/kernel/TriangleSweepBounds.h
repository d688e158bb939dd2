#ifndef GSL_KERNEL_TRIANGLE_SWEEP_BOUNDS_H
#define GSL_KERNEL_TRIANGLE_SWEEP_BOUNDS_H

/// The bounds within which the steps of a sweep of triangles are certain. The kernel of one pair
/// and the lanes of many share them.
namespace gsl_kernel {

/// A length whose square has all its digits.
constexpr double kLeastUnitLength = 1e-120;

/// The square of the sine of an angle between two edges that certainly do not count as parallel.
// The unit components of parallel edges differ by at most kLineParallelTolerance, so that the sine
// is below 2e-5 and its square below 4e-10. A square of 2^-20 is a thousand times larger.
constexpr double kCrossingSineSquare = 0x1p-20;

/// The distance from an edge at which a crossing certainly misses the edge, divided by the reach R.
// With h = 2^-53, the positions have errors of at most 32 h R / sine^2, in the steps and here:
// 2^-28 R.
constexpr double kCrossingMargin = 0x1p-27;

/// The square of the sine below which two edges certainly count as parallel.
// For unit vectors u and v, |u - v|^2 or |u + v|^2 is 2 - 2 |u . v|, which is close to the square
// of the sine where that is small. A difference of 0.9 kLineParallelTolerance has a square of
// 8.1e-11, far more than the errors of 2^-50 here and in the unit components.
constexpr double kParallelSineSquare = 7e-11;

/// Error of |w . (u x v)|, divided by the reach R, for the way w between two edges of the unit
/// vectors u and v. It covers the arithmetic here, and that of the steps times the sine.
// The product has two products of two products: 4 h for the cross product and 4 h for the rest,
// times |w|, which is at most R. The direction of the normal of the steps has 4 h divided by the
// sine. 2^-46 is 128 h.
constexpr double kSkewRounding = 0x1p-46;

/// The part by which two distances from a plane differ at least, so that the distances along the
/// direction certainly do not round to the same number.
// A distance along it is a quotient, two products and a quotient of the other: 4 h each. 2^-48 is
// 32 h.
constexpr double kDistanceRounding = 0x1p-48;

/// A scaled weight of the triangle test divided by a square and multiplied by it again: the part by
/// which it certainly stays above or below a bound.
// Both operations have 1 h.
constexpr double kWeightSlack = 0x1p-40;

/// Sizes between which no weight or square of it overflows or loses its digits.
constexpr double kLeastDecidedWeight = 1e-150;
constexpr double kLeastDecidedSquare = 1e-140;
constexpr double kLargestDecidedSquare = 1e140;

// Below, A and the shadow S of B are triangles whose boxes have a gap of G on some axis. D is the
// sum of the sizes of the box of both, so that no way within it is longer. C is the sum of the
// largest coordinates and of the longest way to the shadow. The shortest of the six edges is l.
// |n| is the doubled area of a triangle, and L is its longest edge. h is 2^-53.
//
// No corner of S is farther from the plane of A than
//   e = 2^-51 L^2 / |n| D + 2^-46 C:
// the normal of A has 4 h L^2 / |n|, the way along the direction has 8 h C, and the sum 2 h C.
//
// No edges cross. Edges that do not count as parallel have a sine of at least s = 0.99e-5. Both are
// within e of the plane, so their common normal differs from the normal of the plane by at most
// 4 e / (l s). Their lines are at most 2 e + 4 e D / (l s) <= 2^19 e D / l apart, which is at most
// G / 4 where
//   G l |n| >= 2^21 D (2^-51 L^2 D + 2^-46 C |n|).
// A position on the first line has an error of 32 h D / s^2 <= 2^-14 D, which is at most G / 4
// where G >= 2^-12 D. A crossing that counts is within the linear tolerance of both edges along
// them. So the edges are at most G / 2 and two tolerances apart, which is less than G where G is
// more than four tolerances.
//
// No corner is inside. S tilts by at most 4 e L / |n|, with L and |n| of S. This moves the corners
// of A by at most G / 4 where |n| >= 2^-17 L^2, because e <= G l / (2^21 D). The weights w of a
// point add up to 1, and each moves the point by at most the size of the triangle, which is at most
// D. A point that is still G / 2 beyond the triangle after it moved to its plane has a weight of at
// most -G / (4 D), because two weights can be negative. Its scaled weight is w |n|^2, with an error
// of kApartWeight D^2 L^2.

/// The least gap, divided by D.
constexpr double kApartGap = 0x1p-10;
/// The least product of the gap, l and |n|, divided by D^2 L^2.
constexpr double kApartTurn = 0x1p-30;
/// The least product of the gap and l, divided by D C.
constexpr double kApartFromOrigin = 0x1p-25;
/// The least doubled area, divided by the square of the longest edge.
constexpr double kApartArea = 0x1p-17;
/// Error of a scaled weight, divided by D^2 L^2: 16 h for two ways, two cross products and a dot
/// product.
constexpr double kApartWeight = 0x1p-46;
/// The largest size and the least edge that are decided. In between, no product of six of them
/// loses its digits, and a product that overflows decides nothing.
constexpr double kLargestApart = 1e50;
constexpr double kLeastApart = 1e-30;

} // namespace gsl_kernel

#endif
