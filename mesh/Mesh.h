#ifndef GSL_MESH_H
#define GSL_MESH_H

#include "Printable.h"
#include "gsl_Arithmetic.h"

#include <cmath>
#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace gsl_mesh {

/// How a file writes its coordinates.
enum class Precision : unsigned char {
  Unknown, ///< as decimals, or as whole numbers
  Single,  ///< in single precision
  Double   ///< in double precision
};

/// Triangles of one body, in the order of the file.
/// Units      the numbers of the file; they are not guessed, scaled, welded or reordered.
/// Order      triangle k has corners[3k], corners[3k+1], corners[3k+2]; a face with more corners
///            becomes consecutive triangles.
/// NaN        triangles with a NaN or infinite corner stay in the list.
struct Mesh {
  std::string file;                            ///< path as it was given
  std::vector<gsl_arithmetic::Coord3> corners; ///< three per triangle
  std::vector<std::string> warnings;           ///< one line each: what was left out, and where
  Precision precision = Precision::Unknown;    ///< as the file says

  std::size_t TriangleCount() const { return corners.size() / 3; }
};

/// Receives the part of a file that is read, from 0 to 1; the part never falls.
using MeshProgress = std::function<void(double)>;

inline bool IsFinite(const gsl_arithmetic::Coord3& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

/// A mesh file cannot be read or holds no usable mesh. what() is one line that names the file,
/// without a newline at its end.
class MeshError : public std::runtime_error {
public:
  explicit MeshError(const std::string& message) : std::runtime_error(Printable(message)) {}
};

} // namespace gsl_mesh

#endif
