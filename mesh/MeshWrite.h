#ifndef GSL_MESH_WRITE_H
#define GSL_MESH_WRITE_H

#include "Mesh.h"
#include "MeshFormat.h"

#include <string>

namespace gsl_mesh {

/// Returns the format that WriteMesh chooses for a file name, by its extension in upper or lower
/// case. Returns Unknown when no writer has that extension.
MeshFormat MeshFormatToWrite(const std::string& path);

/// Writes a mesh file in the format of its extension through an OutputFile: the file appears whole
/// or not at all, and an existing file is kept unless `force` is set.
///
/// Formats    binary STL; binary little-endian PLY; OBJ and OFF as text.
/// Precision  STL rounds coordinates to single precision and computes normals from the rounded
///            corners; the normal of a triangle without area or with a NaN or infinite corner is
///            zero. PLY keeps every double; OBJ and OFF have the shortest decimal that reads back
///            as the same double.
/// Order      triangle k of the file is triangle k of the mesh. In PLY, OBJ and OFF corners with
///            the same bits share a vertex; vertices are in the order of their first use.
/// NaN        triangles with NaN corners are written too, so that indices do not change.
/// Errors     OutputError; also for a name of another format, when a finite coordinate does not fit
///            into the single precision of STL, and when there are more triangles or vertices than
///            the format can count (STL 4294967295 triangles, the others 1431655765 triangles and
///            2147483647 vertices).
void WriteMesh(const std::string& path, const Mesh& mesh, bool force);

} // namespace gsl_mesh

#endif
