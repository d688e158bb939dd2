#ifndef TYP_MODULE_H
#define TYP_MODULE_H

#include "mem_Export.h"

/// Start and stop of the host's type tables. `count` is the host's own counter of started modules,
/// which this library leaves as it is. Calls nest.
GSL_HOST_API void typ_initialize(int& count);
GSL_HOST_API void typ_finalize(int& count);
[[nodiscard]] GSL_HOST_API bool typ_isInitialized();

#endif
