#ifndef GSL_PYTHON_TOLERANCE_MUTEX_H
#define GSL_PYTHON_TOLERANCE_MUTEX_H

#include <shared_mutex>

namespace gsl_python {

/// Held, without the lock of the interpreter, while the tolerances are read, and alone while they
/// are written.
std::shared_mutex& ToleranceMutex();

} // namespace gsl_python

#endif
