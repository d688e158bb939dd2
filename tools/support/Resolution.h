#ifndef GSL_TOOLS_RESOLUTION_H
#define GSL_TOOLS_RESOLUTION_H

#include "Mesh.h"
#include "gsl_Matrix.h"
#include "gsl_Sweep.h"

#include <optional>
#include <string>
#include <vector>

/// How fine the coordinates of the input are, and travels that are finer.
namespace gsl_tools {

/// Returns the distance between neighbouring numbers in the binade of `magnitude`, of single or of
/// double precision. Requires a finite magnitude of at least 0.
double SpacingAt(double magnitude, bool isSingle);

/// The resolution of a body that is asked: the spacing of numbers at its largest coordinate.
///
/// Precision  as the file says. A file of decimals has single precision when each coordinate is
///            exact in single precision or has at most nine digits; otherwise it has double
///            precision. Triangles with a NaN or infinite corner do not count.
/// Pose       a pose that stretches (by the longest of its first three columns) stretches the
///            spacing too. The resolution is at least the spacing of doubles at the coordinates
///            after pose and offset.
/// Growing    changes nothing.
class Resolution {
public:
  /// Reads the mesh, which is there as long as this object, not before it is needed. `isGrown` says
  /// that the body, before the pose, does not have the corners of the mesh.
  Resolution(const gsl_mesh::Mesh& mesh, const gsl_sweep::Body& placed,
             const std::optional<gsl_Matrix>& pose, const gsl_arithmetic::Coord3& offset,
             bool isGrown = false);

  /// Returns true when the travel is at most the resolution.
  bool Reaches(double travel);

  /// Returns the distance.
  double Get();

  const std::string& File() const { return m_mesh->file; }
  /// Returns by how much the pose stretches lengths, at most.
  double Stretch() const { return m_stretch; }

private:
  const gsl_mesh::Mesh* m_mesh;
  double m_stretch; ///< by the pose
  double m_least;   ///< the spacing of doubles after pose and offset
  double m_most;    ///< what the resolution cannot exceed
  std::optional<double> m_distance;
};

/// Returns one line that names the travel and the resolution when the answer has a contact after a
/// travel of at most the resolution of one of the bodies; else an empty text. Rounding alone can
/// make such a travel.
std::string ResolutionWarning(const gsl_sweep::Answer& answer, Resolution& moving,
                              Resolution& fixed);

/// Returns one line when the allowance, after the pose of the moving body, is at most the
/// resolution of one of the bodies; else an empty text. It may then be less than the rounding that
/// it is to make up for.
std::string AllowanceWarning(double allowance, Resolution& moving, std::vector<Resolution>& fixed);

} // namespace gsl_tools

#endif
