#ifndef GSL_PYTHON_SHARED_BODY_H
#define GSL_PYTHON_SHARED_BODY_H

#include "gsl_Sweep.h"

#include <atomic>
#include <memory>
#include <utility>

namespace gsl_python {

/// A body that any number of Python objects and threads share.
struct SharedBody {
  explicit SharedBody(gsl_sweep::Body made) : body(std::move(made)) {}

  const gsl_sweep::Body body;
  std::atomic<bool> isPrepared{false}; ///< a pair has prepared it
};

using BodyPointer = std::shared_ptr<SharedBody>;

} // namespace gsl_python

#endif
