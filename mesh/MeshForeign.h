#ifndef GSL_MESH_FOREIGN_H
#define GSL_MESH_FOREIGN_H

#include <string>
#include <string_view>

namespace gsl_sweep {

/// What a file is that people take for a mesh file, and what to do about it: "is a STEP file, not a
/// mesh; ...". Empty for every other file.
///
/// STEP       begins as such a file does, or its name ends in .step, .stp or .p21. Building models
///            in the same notation (IFC) are not meant, for Assimp reads them.
/// IGES       begins as such a file does, or its name ends in .igs or .iges.
/// gzip       begins as such a file does, or its name ends in .gz.
/// UTF-16     begins with its byte order mark, or has a zero in every other byte of its beginning.
///
/// Only for files whose contents are not those of a mesh. Files with an extension that means none
/// of the formats above may be compressed or UTF-16, because Assimp reads some that are.
std::string ForeignFile(std::string_view bytes, const std::string& name);

} // namespace gsl_sweep

#endif
