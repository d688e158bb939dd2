#ifndef GSL_MESH_READ_ASSIMP_H
#define GSL_MESH_READ_ASSIMP_H

#include "Mesh.h"

#include <string>

namespace gsl_sweep {

/// Reads 3MF, glTF and other formats that Assimp knows. For the import program alone: a damaged
/// file may end the process.
///
/// Precision  single, as Assimp keeps it; node transforms are applied in double.
/// Order      nodes depth first, their meshes and faces as the file has them.
/// Units      not applied: 3MF, glTF, AMF, Collada, FBX and X3D give the numbers of the file. Of
///            other formats Assimp turns or scales some, so they come with a warning.
/// Errors     MeshError, also for a format that Assimp does not know.
Mesh ImportWithAssimp(const std::string& path);

} // namespace gsl_sweep

#endif
