#ifndef OMI_GETTIMECOUNTER_H
#define OMI_GETTIMECOUNTER_H

#include "mem_Export.h"

/// Returns the seconds of a monotonic clock with an arbitrary origin.
GSL_HOST_API double omi_gettimecounter();

#endif
