#ifndef GSL_MESH_READ_ASSIMP_H
#define GSL_MESH_READ_ASSIMP_H

#include "Mesh.h"

#include <string>

namespace gsl_mesh {

/// Reads 3MF, glTF and other formats that Assimp knows. Only the import program calls it, because a
/// damaged file may end the process.
/// Precision  single, as in Assimp; node transforms are applied in double.
/// Order      nodes depth first, their meshes and faces in the order of the file.
/// Units      not applied: 3MF, glTF, AMF, Collada, FBX and X3D keep the numbers of the file.
///            Assimp rotates or scales some other formats, so all other formats add a warning.
/// Errors     MeshError, also for a format that Assimp does not know.
Mesh ImportWithAssimp(const std::string& path);

} // namespace gsl_mesh

#endif
