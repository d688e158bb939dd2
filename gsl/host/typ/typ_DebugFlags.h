#ifndef TYP_DEBUG_FLAGS_H
#define TYP_DEBUG_FLAGS_H

#include "mem_Export.h"

/// Integer debug levels by flag number. A level is 0 until it is set. Every call is safe from any
/// thread.
class GSL_HOST_API typ_DebugFlags {
public:
  /// Returns the level of a flag.
  static int GetDebugFlags(int flag);
  /// Changes the level of a flag.
  static void SetDebugFlags(int flag, int level);
};

#endif
