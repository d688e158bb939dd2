#ifndef GSL_MESH_IMPORTER_H
#define GSL_MESH_IMPORTER_H

#include "Mesh.h"

#include <string>

namespace gsl_mesh {

using MeshReader = Mesh (*)(const std::string& path);

/// The main function of an import program, which ImportMesh starts. It sets the limits of the
/// process, reads the mesh, and sends the mesh or the error. Returns the exit status.
int RunMeshImporter(int argc, const char* const* argv, MeshReader read);

} // namespace gsl_mesh

#endif
