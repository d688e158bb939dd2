#ifndef GSL_TOOLS_POSE_H
#define GSL_TOOLS_POSE_H

#include "Mesh.h"
#include "gsl_Matrix.h"
#include "gsl_Sweep.h"
#include "support/InputText.h"

#include <string>
#include <string_view>

/// The place of a body, as a matrix in a text file.
namespace gsl_tools {

/// Reads 12 or 16 finite numbers, row by row, with white space or single commas between them. '#'
/// begins a comment that ends with the line. The last of four rows must be 0 0 0 1. Messages call
/// the text `name`.
///
/// Errors     InputError, with the line.
gsl_Matrix ParsePose(std::string_view text, const std::string& name);

/// Reads a file, or standard input for "-", as ParsePose does. Throws InputError also for a file
/// that cannot be read or that is longer than 65536 bytes.
gsl_Matrix ReadPose(const std::string& file);

/// Returns one line when the matrix changes lengths or angles (an entry of its rotation block,
/// transposed and multiplied by itself, differs from the identity's by more than 1e-6), or mirrors,
/// or both; else an empty text.
std::string PoseWarning(const gsl_Matrix& pose, const std::string& name);

/// Returns the body where the matrix puts it. Throws std::overflow_error when that moves a triangle
/// beyond the range of double; messages call the body `name`.
gsl_sweep::Body PosedBody(const gsl_sweep::Body& body, const gsl_Matrix& pose,
                          const std::string& name);

/// Puts every corner where gsl_Matrix::Transform puts it; the corners keep their order.
void PoseMesh(gsl_mesh::Mesh& mesh, const gsl_Matrix& pose);

} // namespace gsl_tools

#endif
