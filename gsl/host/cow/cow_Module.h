#ifndef COW_MODULE_H
#define COW_MODULE_H

#include "mem_Export.h"

/// Start and stop of the host's containers and strings. `count` is the host's own counter of
/// started modules, which this library leaves as it is. Calls nest.
GSL_HOST_API void cow_initialize(int& count);
GSL_HOST_API void cow_finalize(int& count);
[[nodiscard]] GSL_HOST_API bool cow_isInitialized();

#endif
