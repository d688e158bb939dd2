#ifndef ATR_MODULE_H
#define ATR_MODULE_H

#include "mem_Export.h"

/// Start and stop of the host's messages. `count` is the host's own counter of started modules,
/// which this library leaves as it is. Calls nest.
GSL_HOST_API void atr_initialize(int& count);
GSL_HOST_API void atr_finalize(int& count);
[[nodiscard]] GSL_HOST_API bool atr_isInitialized();

#endif
