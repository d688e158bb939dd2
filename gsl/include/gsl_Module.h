#ifndef GSL_MODULE_H
#define GSL_MODULE_H

#include "gsl_Export.h"

/// Start and stop the library inside a host. Both count their calls: with N starts only the first
/// start and the N-th stop have an effect.
///
/// Threads  the counters are plain: make both calls from the thread that starts and stops the
/// process.

/// The first call raises the host's `count` by 1, starts the host libraries in the order of their
/// dependence, enters the type table of module 778, creates the settings with their defaults and
/// registers the persistent classes. Throws std::bad_alloc and what the host throws. After an
/// exception the libraries that were started are stopped, `count` is as it was, and a later call
/// starts again. Some classes may be registered, or registered in part, until a start succeeds.
GSL_API void gsl_initialize(int& count);

/// The last call lowers `count` by 1, deletes the settings (a later start begins with the defaults)
/// and stops the host libraries in reverse. The type table and the registered classes stay. After a
/// stop without a start, the next start does nothing.
GSL_API void gsl_finalize(int& count);

#endif
