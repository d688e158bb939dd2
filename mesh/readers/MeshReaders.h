#ifndef GSL_MESH_READERS_H
#define GSL_MESH_READERS_H

#include "MeshSource.h"

#include <string_view>

/// One function for each format that has a reader here; MeshRead.cpp chooses between them.
///
/// Errors     MeshError, with the line where a text format has one.
namespace gsl_mesh {

Mesh ReadStl(const MeshSource& source);
Mesh ReadObj(const MeshSource& source);
Mesh ReadPly(const MeshSource& source);
Mesh ReadOff(const MeshSource& source);

/// Returns true when the file has exactly the size of a binary STL with its count of triangles.
bool HasSizeOfBinaryStl(std::string_view bytes);

/// True when the first word is an OFF keyword such as OFF, COFF or STNOFF.
bool BeginsWithOffKeyword(std::string_view bytes);

} // namespace gsl_mesh

#endif
