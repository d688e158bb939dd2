#ifndef MEM_MODULES_H
#define MEM_MODULES_H

#include "mem_Export.h"

/// Start and stop of the host's libraries, a pair of functions for each prefix. `count` is the
/// host's own counter of started modules; these functions leave it as it is. Calls nest: a library
/// runs until it was stopped as often as it was started. They need the process's one starting
/// thread.

/// Memory.
GSL_HOST_API void mem_initialize(int& count);
GSL_HOST_API void mem_finalize(int& count);

/// Type tables.
GSL_HOST_API void typ_initialize(int& count);
GSL_HOST_API void typ_finalize(int& count);

/// Pretty printing.
GSL_HOST_API void pnt_initialize(int& count);
GSL_HOST_API void pnt_finalize(int& count);

/// Host utilities.
GSL_HOST_API void omni_initialize(int& count);
GSL_HOST_API void omni_finalize(int& count);

/// Messages.
GSL_HOST_API void atr_initialize(int& count);
GSL_HOST_API void atr_finalize(int& count);

/// Containers and strings.
GSL_HOST_API void cow_initialize(int& count);
GSL_HOST_API void cow_finalize(int& count);

/// Persistence (`cls_`) and exceptions.
GSL_HOST_API void nex_initialize(int& count);
GSL_HOST_API void nex_finalize(int& count);

/// 3-D display primitives.
GSL_HOST_API void g3d_initialize(int& count);
GSL_HOST_API void g3d_finalize(int& count);

/// Object model.
GSL_HOST_API void omu_initialize(int& count);
GSL_HOST_API void omu_finalize(int& count);

/// Returns whether the library of that prefix runs, and false for an unknown prefix.
[[nodiscard]] GSL_HOST_API bool mem_IsInitialized(const char* prefix);

#endif
