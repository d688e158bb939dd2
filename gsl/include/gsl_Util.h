#ifndef GSL_UTIL_H
#define GSL_UTIL_H

#include "gsl_Export.h"
#include "omi_Singleton.h"

/// The process-wide settings: every tolerance of the library, and display settings for host
/// modules.
///
/// Reached through omi_Singleton<gsl_Util>::Instance(). Operations read the fields at the moment
/// they run, so a changed tolerance holds for every later call. Eleven doubles in this order.
///
/// Threads  fields are plain: whoever writes one makes sure that no operation of the library runs
///          meanwhile. Reading is safe from any thread once Instance() was called.
class GSL_API gsl_Util {
public:
  /// Lengths and distances, in model units. At 0 nothing counts as too short, so that divisions by
  /// a length of 0 result in NaN.
  double linearTolerance;
  /// Point equality only, compared with a squared distance.
  double zeroTolerance;
  /// Cosines, and dot and cross products relative to the magnitudes.
  double cosineTolerance;
  /// For host modules; no operation of this library reads it.
  double coarseTolerance;
  /// Keeps the layout; never set, never read.
  double reservedSetting;
  /// Display settings for host modules, degrees; a halving series. Not read here.
  double displayAngleCoarse;
  double displayAngleMedium;
  double displayFactor;
  double displayAngleFine;
  double displayScale;
  /// omi_gettimecounter() when the object was made.
  double startTime;

  /// The defaults; `reservedSetting` is left as the storage held it.
  gsl_Util();

  /// `displayFactor` becomes 15.0 for true and 11.25, the default, for false.
  void SetOldDisplayFactor(bool old);
};

extern template class GSL_API omi_Singleton<gsl_Util>;

#endif
