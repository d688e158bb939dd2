#ifndef GSL_MESH_FOREIGN_H
#define GSL_MESH_FOREIGN_H

#include <string>
#include <string_view>

namespace gsl_mesh {

/// Says what a file is that is often taken for a mesh file, and what to do about it: "is a STEP
/// file, not a mesh; ...". Returns an empty text for every other file.
/// STEP       the contents begin as STEP files do, or the name ends in .step, .stp or .p21.
///            Building models in the same notation (IFC) do not count: Assimp reads them.
/// IGES       the contents begin as IGES files do, or the name ends in .igs or .iges.
/// gzip       the contents begin as gzip files do, or the name ends in .gz.
/// UTF-16     the contents begin with its byte order mark, or every other byte of their beginning
///            is zero.
///
/// Requires contents that are not a mesh. Files with another known extension may be compressed or
/// UTF-16, because Assimp reads some of them.
std::string ForeignFile(std::string_view bytes, const std::string& name);

} // namespace gsl_mesh

#endif
