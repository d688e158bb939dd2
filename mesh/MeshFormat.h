#ifndef GSL_MESH_FORMAT_H
#define GSL_MESH_FORMAT_H

#include <string>
#include <string_view>

/// The formats of mesh files and their names.
namespace gsl_sweep {

enum class MeshFormat {
  Stl,
  Obj,
  Ply,
  Off,
  Assimp, ///< read by the import program; never written
  Unknown
};

/// The format that is read and written here and has this name, which is also its extension: "stl",
/// "ply", "obj" or "off", in any case. Unknown for any other name.
MeshFormat MeshFormatNamed(std::string_view name);

/// "stl", "ply", "obj" or "off"; empty for a format that is not read here.
std::string_view NameOf(MeshFormat format);

/// The names in a sentence, each after `prefix`: with "." it is ".stl, .ply, .obj or .off".
std::string MeshFormatNames(std::string_view prefix);

/// The part of a file name after its last dot, in lower case; empty without a dot.
std::string ExtensionOf(const std::string& path);

} // namespace gsl_sweep

#endif
