#ifndef OMNI_MODULE_H
#define OMNI_MODULE_H

#include "mem_Export.h"

/// Start and stop of the host's host utilities. `count` is the host's own counter of started
/// modules, which this library leaves as it is. Calls nest.
GSL_HOST_API void omni_initialize(int& count);
GSL_HOST_API void omni_finalize(int& count);
[[nodiscard]] GSL_HOST_API bool omni_isInitialized();

#endif
