#ifndef PNT_DEBUG_PRINT_H
#define PNT_DEBUG_PRINT_H

#include "aio_ostream.h"

/// Returns the stream for debug output, which is standard error unless it was redirected.
GSL_HOST_API aio_ostream& pnt_debugPrint();

/// Sends debug output to `out`, which must outlive its use. Null restores standard error. The call
/// is not synchronised with concurrent debug output.
GSL_HOST_API void pnt_redirectDebugPrint(aio_ostream* out);

#endif
