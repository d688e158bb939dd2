#ifndef GSL_MESH_WRITERS_H
#define GSL_MESH_WRITERS_H

#include "Mesh.h"
#include "writers/MeshOutput.h"

/// One function for each format that has a writer; MeshWrite.cpp chooses between them.
namespace gsl_mesh {

void WriteStl(const Mesh& mesh, MeshOutput& output);
void WritePly(const Mesh& mesh, MeshOutput& output);
void WriteObj(const Mesh& mesh, MeshOutput& output);
void WriteOff(const Mesh& mesh, MeshOutput& output);

} // namespace gsl_mesh

#endif
