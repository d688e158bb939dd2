#ifndef PNT_DEBUG_PRINT_H
#define PNT_DEBUG_PRINT_H

#include "aio_ostream.h"

/// Returns the debug console, whose text is kept.
XH_API aio_ostream& pnt_debugPrint();

#endif
