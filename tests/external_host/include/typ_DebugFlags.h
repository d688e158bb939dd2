#ifndef TYP_DEBUG_FLAGS_H
#define TYP_DEBUG_FLAGS_H

#include "xh_Export.h"

class XH_API typ_DebugFlags {
public:
  static int GetDebugFlags(int flag);
  static void xh_Raise(int flag, int level);
};

#endif
