#ifndef OMU_MODULE_H
#define OMU_MODULE_H

#include "mem_Export.h"

/// Start and stop of the host's object model. `count` is the host's own counter of started modules,
/// which this library leaves as it is. Calls nest.
GSL_HOST_API void omu_initialize(int& count);
GSL_HOST_API void omu_finalize(int& count);
[[nodiscard]] GSL_HOST_API bool omu_isInitialized();

#endif
