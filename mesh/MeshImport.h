#ifndef GSL_MESH_IMPORT_H
#define GSL_MESH_IMPORT_H

#include "Mesh.h"

#include <chrono>
#include <cstdint>
#include <string>

/// A separate program reads these mesh files, because the importers that it uses were not written
/// for damaged files. A crash, an allocation without end, an endless loop and output on the
/// standard streams stay inside that program.
namespace gsl_mesh {

/// What the import program may use.
struct ImportLimits {
  std::chrono::milliseconds time; ///< wall-clock time until the mesh has arrived
  std::uint64_t memory;           ///< bytes beyond what the program maps at its start; 0: no limit
};

/// Returns generous limits for a file of that many bytes: a minute plus ten seconds for each
/// megabyte; four gigabytes plus 500 times the file, but not more than the machine has.
ImportLimits ImportLimitsFor(std::uint64_t fileSize);

/// Returns the path of the import program, gsl-mesh-import: the environment variable
/// GSL_MESH_IMPORT, else a file beside the running program, else the path in the libexec folder of
/// the prefix of the running program. That last path is returned whether or not the file exists.
std::string MeshImportProgram();

/// Reads a mesh with an import program, which ends when this process ends. This is safe in a
/// process of many threads: the program is started without a copy of the process.
/// Errors     MeshError: the error of the program; or the program is missing, does not run, crashed
///            or reached a limit.
Mesh ImportMesh(const std::string& program, const std::string& path, const ImportLimits& limits);

} // namespace gsl_mesh

#endif
