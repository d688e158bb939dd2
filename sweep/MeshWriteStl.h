#ifndef GSL_SWEEP_MESH_WRITE_STL_H
#define GSL_SWEEP_MESH_WRITE_STL_H

#include "Mesh.h"

#include <string>

namespace gsl_sweep {

/// Writes a binary STL file by an OutputFile: whole or not at all, an existing one kept unless
/// `force`.
///
/// Precision  coordinates rounded to single, normals computed from the rounded corners; the normal
///            of a triangle without area or with a NaN or infinite corner is zero.
/// NaN        triangles with such corners are written too, so that indices stay.
/// Errors     OutputError; also when a finite coordinate does not fit into single precision, or
///            there are more triangles than the format can count (4294967295).
void WriteStl(const std::string& path, const Mesh& mesh, bool force);

} // namespace gsl_sweep

#endif
