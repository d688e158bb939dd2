#ifndef GSL_MESH_READERS_H
#define GSL_MESH_READERS_H

#include "MeshSource.h"

#include <cstddef>
#include <functional>
#include <string_view>

/// One function for each format that has a reader here; MeshRead.cpp chooses between them.
///
/// Errors     MeshError, with the line where a text format has one.
namespace gsl_mesh {

Mesh ReadStl(const MeshSource& source);
Mesh ReadObj(const MeshSource& source);
Mesh ReadPly(const MeshSource& source);
Mesh ReadOff(const MeshSource& source);

/// How many bytes a binary STL file has before its first triangle.
constexpr std::size_t kBinaryStlPrefix = 84;

/// Returns true when a file has exactly the size of a binary STL with its count of triangles.
/// `prefix` holds at least the first kBinaryStlPrefix bytes of a file that has as many.
bool HasSizeOfBinaryStl(std::string_view prefix, std::size_t size);

/// Reads a binary STL file of which HasSizeOfBinaryStl is true. next(n) returns the next n bytes
/// after `prefix`, which are not used after the next call.
Mesh ReadBinaryStl(std::string_view prefix, const std::function<const char*(std::size_t)>& next);

/// True when the first word is an OFF keyword such as OFF, COFF or STNOFF.
bool BeginsWithOffKeyword(std::string_view bytes);

} // namespace gsl_mesh

#endif
