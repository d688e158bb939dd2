#ifndef GSL_TOOLS_MESH_REPORT_H
#define GSL_TOOLS_MESH_REPORT_H

#include "MeshFacts.h"
#include "gsl_Sweep.h"

#include <optional>
#include <string>
#include <vector>

/// What gsl-mesh says of mesh files, for people and for programs.
namespace gsl_tools {

/// How many crossings are named.
constexpr std::size_t kNamedCrossings = 100;

/// What was found in one file.
struct MeshReport {
  std::string file;  ///< as it was given; "-" is standard input
  std::string error; ///< why it cannot be read, in one line; then nothing else is set
  std::vector<std::string> warnings;
  gsl_mesh::MeshFacts facts;
  std::size_t crossingCount = 0;
  std::vector<gsl_sweep::Crossing> crossings; ///< the first of them
  std::string fault; ///< why it is not a solid, in one line; empty for a solid

  bool IsReadable() const { return error.empty(); }
};

/// Returns what is wrong with a mesh, one line for each kind of fault; nothing for a sound mesh: a
/// closed, consistently oriented surface that faces outwards, whose triangles all have area and do
/// not cross each other. Requires a mesh that could be read.
std::vector<std::string> FindingsOf(const MeshReport& report);

/// Returns a guess at the unit, where the size of the box is unlikely for a part in millimetres;
/// else an empty text. This is not a fault of the mesh.
std::string UnitGuess(const gsl_mesh::MeshFacts& facts);

/// Returns several lines, each ended by a newline. Requires a mesh that could be read.
std::string MeshReportAsText(const MeshReport& report);

/// Returns one strict JSON document, ended by a newline; docs/gsl-mesh.md and
/// docs/gsl-mesh.schema.json describe it. Numbers read back as the same doubles; a measure beyond
/// the range of double is null.
std::string MeshReportsAsJson(const std::vector<MeshReport>& reports,
                              const std::string& toolVersion);

} // namespace gsl_tools

#endif
