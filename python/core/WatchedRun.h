#ifndef GSL_PYTHON_WATCHED_RUN_H
#define GSL_PYTHON_WATCHED_RUN_H

#include "gsl_Sweep.h"

#include <functional>

#include <pybind11/pybind11.h>

/// Work of the libraries without the lock of the interpreter, which Ctrl-C can still cancel.
namespace gsl_python {

/// Work that takes its threads, its progress and its wish to cancel from a Run.
using Work = std::function<void(const gsl_sweep::Run&)>;

/// Runs short work on the calling thread alone. Signals are handled when the work reports progress.
///
/// Errors     what the work throws; the exception of a signal's handler, after the work has ended.
void RunHere(const Work& work);

/// Runs work of any length on a thread of its own. The calling thread waits, and every twentieth of
/// a second it handles signals and calls `progress`, unless that is None, with the part done.
/// `progress` cancels the work when it returns False, and receives 1.0 at the end of the work.
///
/// Errors     what the work throws; what a signal's handler or `progress` raises, after the work
///            has ended.
void RunWatched(const Work& work, unsigned threads, const pybind11::object& progress);

} // namespace gsl_python

#endif
