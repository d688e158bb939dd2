#ifndef GSL_UTIL_H
#define GSL_UTIL_H

#include "gsl_Export.h"
#include "omi_Singleton.h"

/// The process-wide settings: every tolerance of the library, and display settings for host
/// modules.
///
/// omi_Singleton<gsl_Util>::Instance() returns them. Operations read the fields at the moment they
/// run, so a changed tolerance holds for every later call. The object is eleven doubles in this
/// order.
///
/// Threads  fields are plain: a caller that writes a field makes sure that no operation of the
///          library runs meanwhile. Reading is safe from any thread once Instance() was called.
class GSL_API gsl_Util {
public:
  /// The tolerance of lengths and distances, in model units. At 0 no length is too short, so that
  /// divisions by a length of 0 result in NaN.
  double linearTolerance;
  /// The tolerance of the equality of points only. It is compared with a squared distance.
  double zeroTolerance;
  /// The tolerance of cosines, and of dot and cross products relative to the magnitudes.
  double cosineTolerance;
  /// A tolerance for host modules. No operation of this library reads it.
  double coarseTolerance;
  /// The field keeps the layout. It is never set and never read.
  double reservedSetting;
  /// A display setting for host modules, in degrees. Like the next four, no operation of this
  /// library reads it, and each is half of the one before.
  double displayAngleCoarse;
  double displayAngleMedium; ///< another display setting
  double displayFactor;      ///< another display setting
  double displayAngleFine;   ///< another display setting
  double displayScale;       ///< another display setting
  /// The value of omi_gettimecounter() when the object was made.
  double startTime;

  /// The fields have their defaults; `reservedSetting` keeps the value that the storage held.
  gsl_Util();

  /// `displayFactor` becomes 15.0 for true and 11.25, the default, for false.
  void SetOldDisplayFactor(bool old);
};

extern template class GSL_API omi_Singleton<gsl_Util>;

#endif
