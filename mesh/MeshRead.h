#ifndef GSL_MESH_READ_H
#define GSL_MESH_READ_H

#include "Mesh.h"
#include "MeshFormat.h"

#include <string>
#include <string_view>

namespace gsl_sweep {

/// Reads a mesh file of any known format.
///
/// Format     by content where that is unambiguous (PLY, OFF, STL, binary glTF), else by the
///            extension, in any case.
/// Precision  STL, OBJ, PLY and OFF keep the file's numbers, correctly rounded to double. All
///            other formats are read by Assimp in single precision; node transforms are applied in
///            double, nodes depth first, meshes and faces in the order of the file.
/// Polygons   see PolygonTriangulator; faces of fewer than three corners are left out, with a
///            warning.
/// Errors     MeshError when the file is unreadable, damaged, or holds no triangle.
Mesh ReadMesh(const std::string& path);

/// Reads a mesh from an open file descriptor, such as that of standard input, to its end; `name` is
/// what messages call it. The descriptor stays open.
///
/// Format     `format`, or for MeshFormat::Unknown that of the contents where they are unambiguous.
/// Errors     MeshError as for ReadMesh; also when the format is unknown, when the contents are
///            unambiguously of another format than `format`, and for what Assimp reads, whose
///            files may refer to others.
Mesh ReadMeshFromStream(int descriptor, const std::string& name, MeshFormat format);

/// Reads a mesh that is already in memory; messages call it `name`. Not for
/// MeshFormat::Assimp, whose files may refer to others.
Mesh ReadMeshFromMemory(std::string_view bytes, const std::string& name, MeshFormat format);

/// The format that ReadMesh would take for these contents and this name.
MeshFormat DetectMeshFormat(std::string_view bytes, const std::string& name);

} // namespace gsl_sweep

#endif
