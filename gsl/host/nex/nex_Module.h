#ifndef NEX_MODULE_H
#define NEX_MODULE_H

#include "mem_Export.h"

/// Start and stop of the host's persistence and exceptions. `count` is the host's own counter of
/// started modules, which this library leaves as it is. Calls nest.
GSL_HOST_API void nex_initialize(int& count);
GSL_HOST_API void nex_finalize(int& count);
[[nodiscard]] GSL_HOST_API bool nex_isInitialized();

#endif
