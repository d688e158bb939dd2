#ifndef MEM_MODULE_H
#define MEM_MODULE_H

#include "mem_Export.h"

/// Start and stop of the host's memory. `count` is the host's own counter of started modules,
/// which this library leaves as it is. Calls nest.
GSL_HOST_API void mem_initialize(int& count);
GSL_HOST_API void mem_finalize(int& count);
[[nodiscard]] GSL_HOST_API bool mem_isInitialized();

#endif
