#ifndef GSL_MESH_READERS_H
#define GSL_MESH_READERS_H

#include "MeshSource.h"

#include <string_view>

/// One function for each format that has a reader here; MeshRead.cpp chooses between them.
///
/// Errors     MeshError, with the line where a text format has one.
namespace gsl_sweep {

Mesh ReadStl(const MeshSource& source);
Mesh ReadObj(const MeshSource& source);
Mesh ReadPly(const MeshSource& source);
Mesh ReadOff(const MeshSource& source);

/// True for a file that is a binary STL by its size or, when the size is wrong, by its bytes.
bool IsBinaryStl(std::string_view bytes);

/// True when the first word is an OFF keyword such as OFF, COFF or STNOFF.
bool BeginsWithOffKeyword(std::string_view bytes);

} // namespace gsl_sweep

#endif
