#ifndef G3D_MODULE_H
#define G3D_MODULE_H

#include "mem_Export.h"

/// Start and stop of the host's 3-D display. `count` is the host's own counter of started modules,
/// which this library leaves as it is. Calls nest.
GSL_HOST_API void g3d_initialize(int& count);
GSL_HOST_API void g3d_finalize(int& count);
[[nodiscard]] GSL_HOST_API bool g3d_isInitialized();

#endif
