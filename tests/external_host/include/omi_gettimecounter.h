#ifndef OMI_GETTIMECOUNTER_H
#define OMI_GETTIMECOUNTER_H

#include "xh_Export.h"

/// Returns the ticks of a monotonic clock, in milliseconds.
XH_API double omi_gettimecounter();

#endif
