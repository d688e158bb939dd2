#ifndef GSL_MESH_READ_H
#define GSL_MESH_READ_H

#include "Mesh.h"
#include "MeshFormat.h"

#include <string>
#include <string_view>

namespace gsl_mesh {

/// Reads a mesh file of any known format.
/// Format     by content where the content is unambiguous (PLY, OFF, STL, binary glTF), else by the
///            extension, in upper or lower case.
/// Precision  STL, OBJ, PLY and OFF keep the numbers of the file, correctly rounded to double.
///            Assimp reads all other formats in single precision; node transforms are applied in
///            double, nodes depth first, meshes and faces in the order of the file.
/// Polygons   see PolygonTriangulator; faces of fewer than three corners are left out, with a
///            warning.
/// Progress   is reported, unless it is empty, every few hundred kilobytes; of formats that Assimp
///            reads only while the file is loaded.
/// Errors     MeshError when the file cannot be read, is damaged, or holds no triangle, and when
///            memory runs out.
Mesh ReadMesh(const std::string& path, const MeshProgress& progress = {});

/// Reads a mesh from an open file descriptor, such as standard input, to its end. Messages call the
/// mesh `name`. The descriptor stays open.
/// Format     `format`; for MeshFormat::Unknown the contents decide, where they are unambiguous.
/// Progress   as for ReadMesh, but not before the stream has ended.
/// Errors     MeshError as for ReadMesh; also when the format is unknown, when the contents are
///            unambiguously of another format than `format`, and for formats that Assimp reads,
///            whose files may refer to other files.
Mesh ReadMeshFromStream(int descriptor, const std::string& name, MeshFormat format,
                        const MeshProgress& progress = {});

/// Reads a mesh that is already in memory; messages call it `name`. Requires a format other than
/// MeshFormat::Assimp, whose files may refer to other files. Throws MeshError and std::bad_alloc.
Mesh ReadMeshFromMemory(std::string_view bytes, const std::string& name, MeshFormat format);

/// Returns the format that ReadMesh would choose for these contents and this name.
MeshFormat DetectMeshFormat(std::string_view bytes, const std::string& name);

} // namespace gsl_mesh

#endif
