#ifndef GSL_SWEEP_MESH_READ_CHILD_H
#define GSL_SWEEP_MESH_READ_CHILD_H

#include "Mesh.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace gsl_sweep {

using MeshReader = Mesh (*)(const std::string& path);

/// What a reader in a child process may use up.
struct ReadLimits {
  std::chrono::milliseconds time; ///< on the clock, until the mesh has arrived
  std::uint64_t memory;           ///< bytes beyond what the parent has mapped; 0: no limit
};

/// Generous limits for a file of that many bytes: a minute and ten seconds for each megabyte; four
/// gigabytes and 500 times the file, but not more than the machine has.
ReadLimits ReadLimitsFor(std::uint64_t fileSize);

/// Runs a reader that was not written for damaged files in a child process, so that a crash, a
/// runaway allocation, an endless loop or chatter on the standard streams stays there. The child
/// ends when its parent does.
///
/// Errors     MeshError: the reader's own, or that it did not survive the file or reached a limit.
Mesh ReadInChildProcess(const std::string& path, MeshReader read, const ReadLimits& limits);

} // namespace gsl_sweep

#endif
