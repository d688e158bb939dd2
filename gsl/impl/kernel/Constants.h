#ifndef GSL_KERNEL_CONSTANTS_H
#define GSL_KERNEL_CONSTANTS_H

/// The tolerances that are deliberately independent of the settings, and other constants of the
/// formulas.
namespace gsl_kernel {

/// Largest difference between the entries of equal matrices.
// tolerance-is-fixed: the settings do not change it.
constexpr double kMatrixEqualTolerance = 0.001;
/// Distance from the exact identity that still counts as the identity.
constexpr double kIdentityTolerance = 1e-5;
/// Unit components of parallel directions, when two lines are intersected.
// tolerance-is-fixed: the settings do not change it.
constexpr double kLineParallelTolerance = 1e-5;
/// Bounds of equal intervals.
// tolerance-is-fixed: the settings do not change it.
constexpr double kIntervalTolerance = 1e-8;
/// Cosine of the middle angle below which a rotation is in gimbal lock: 2 to the power -19.
constexpr double kGimbalLockCosine = 1.9073486328125e-6;
/// Segments are not connected over a distance beyond this.
constexpr double kSegmentDistanceCap = 1e10;

/// Half a last place of 1: the largest relative error of one rounding.
constexpr double kUnitRoundoff = 0x1p-53;

constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;

} // namespace gsl_kernel

#endif
