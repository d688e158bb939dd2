#ifndef GSL_MESH_IMPORT_H
#define GSL_MESH_IMPORT_H

#include "Mesh.h"

#include <chrono>
#include <cstdint>
#include <string>

/// Mesh files that a program of its own reads, because the importers that it uses were not written
/// for damaged files: a crash, a runaway allocation, an endless loop and chatter on the standard
/// streams stay there.
namespace gsl_sweep {

/// What the import program may use up.
struct ImportLimits {
  std::chrono::milliseconds time; ///< on the clock, until the mesh has arrived
  std::uint64_t memory;           ///< bytes beyond what the program has mapped at its start; 0: all
};

/// Generous limits for a file of that many bytes: a minute and ten seconds for each megabyte; four
/// gigabytes and 500 times the file, but not more than the machine has.
ImportLimits ImportLimitsFor(std::uint64_t fileSize);

/// The path of the import program, gsl-mesh-import: what the environment variable GSL_MESH_IMPORT
/// says, else beside the running program, else in the folder for such programs of the prefix that
/// the running program is installed in. Where it is in none of them, the last of these paths.
std::string MeshImportProgram();

/// Reads a mesh with an import program, which ends when this process does. Safe in a process of
/// many threads: the program is started without a copy of the process.
///
/// Errors     MeshError: the program's own, or that it is missing, does not run, crashed or reached
///            a limit.
Mesh ImportMesh(const std::string& program, const std::string& path, const ImportLimits& limits);

} // namespace gsl_sweep

#endif
