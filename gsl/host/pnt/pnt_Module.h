#ifndef PNT_MODULE_H
#define PNT_MODULE_H

#include "mem_Export.h"

/// Start and stop of the host's pretty printing. `count` is the host's own counter of started
/// modules, which this library leaves as it is. Calls nest.
GSL_HOST_API void pnt_initialize(int& count);
GSL_HOST_API void pnt_finalize(int& count);
[[nodiscard]] GSL_HOST_API bool pnt_isInitialized();

#endif
