#ifndef GSL_SWEEP_MESH_READ_ASSIMP_H
#define GSL_SWEEP_MESH_READ_ASSIMP_H

#include "Mesh.h"

#include <cstdint>
#include <string>

namespace gsl_sweep {

/// Reads 3MF, glTF and other formats that Assimp knows, in a child process: its importers were not
/// written for damaged files, and what happens to one of them must not happen to the caller.
///
/// Precision  single, as Assimp keeps it; node transforms are applied in double.
/// Order      nodes depth first, their meshes and faces as the file has them.
/// Units      not applied: 3MF, glTF, AMF, Collada, FBX and X3D give the numbers of the file. Of
///            other formats Assimp turns or scales some, so they come with a warning.
/// Errors     MeshError, also when the child crashes or runs out of memory or time.
/// `fileSize`, in bytes, sets both limits.
Mesh ReadThroughAssimp(const std::string& path, std::uint64_t fileSize);

/// The same without a child process; a damaged file may end the program.
Mesh ImportWithAssimp(const std::string& path);

/// `extension` as in "3mf", in lower case.
bool AssimpKnowsExtension(const std::string& extension);

} // namespace gsl_sweep

#endif
