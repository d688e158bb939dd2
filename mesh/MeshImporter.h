#ifndef GSL_MESH_IMPORTER_H
#define GSL_MESH_IMPORTER_H

#include "Mesh.h"

#include <string>

namespace gsl_sweep {

using MeshReader = Mesh (*)(const std::string& path);

/// The main function of an import program, whose caller is ImportMesh: keeps the process within its
/// limits, reads the mesh and sends it, or the error. Returns the exit status.
int RunMeshImporter(int argc, const char* const* argv, MeshReader read);

} // namespace gsl_sweep

#endif
