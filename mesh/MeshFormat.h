#ifndef GSL_MESH_FORMAT_H
#define GSL_MESH_FORMAT_H

#include <string>
#include <string_view>

/// The formats of mesh files and their names.
namespace gsl_mesh {

enum class MeshFormat {
  Stl,
  Obj,
  Ply,
  Off,
  Assimp, ///< read by the import program; never written
  Unknown
};

/// Returns the format with this name, which is also its extension: "stl", "ply", "obj" or "off", in
/// upper or lower case. Returns Unknown for any other name.
MeshFormat MeshFormatNamed(std::string_view name);

/// Returns "stl", "ply", "obj" or "off"; empty for a format that has no reader of ours.
std::string_view NameOf(MeshFormat format);

/// Returns the names for a sentence, each after `prefix`: ".stl, .ply, .obj or .off" with ".".
std::string MeshFormatNames(std::string_view prefix);

/// Returns the part of a file name after its last dot, in lower case; empty without a dot.
std::string ExtensionOf(const std::string& path);

} // namespace gsl_mesh

#endif
