#ifndef GSL_SWEEP_JOBS_H
#define GSL_SWEEP_JOBS_H

#include "gsl_Sweep.h"

namespace gsl_sweep {

/// Runs job(0) to job(count - 1) on threads as `run` says, and returns when all have returned.
/// Fewer threads run where the system provides no more.
///
/// Errors     the exception of the first job in order that throws, after all others have run.
void RunJobs(const Run& run, std::size_t count, const std::function<void(std::size_t)>& job);

} // namespace gsl_sweep

#endif
