#include "writers/MeshWriters.h"

#include <array>
#include <cmath>
#include <limits>

using gsl_arithmetic::Coord3;

namespace gsl_mesh {

namespace {

constexpr std::size_t kHeaderSize = 80;

// Some readers take a file whose header begins with 'solid' for a text.
constexpr std::string_view kHeaderText = "binary STL, coordinates in the units of the source file";
static_assert(kHeaderText.size() <= kHeaderSize, "the rest is filled with zeros");

/// False when single precision would make a finite value infinite.
bool Fits(double value) {
  constexpr double kLargest = std::numeric_limits<float>::max();
  return !std::isfinite(value) || std::fabs(value) <= kLargest;
}

void CheckWritable(const Mesh& mesh, const MeshOutput& output) {
  if (mesh.TriangleCount() > std::numeric_limits<std::uint32_t>::max()) {
    output.Fail("too many triangles for an STL file");
  }
  for (const Coord3& c : mesh.corners) {
    if (Fits(c.x) && Fits(c.y) && Fits(c.z)) continue;
    output.Fail("a coordinate is too large for the single precision of STL");
  }
}

Coord3 Rounded(const Coord3& c) {
  return {static_cast<double>(static_cast<float>(c.x)),
          static_cast<double>(static_cast<float>(c.y)),
          static_cast<double>(static_cast<float>(c.z))};
}

/// Returns the unit normal, or zero. Products of single precision numbers do not overflow in
/// double.
Coord3 NormalOf(const std::array<Coord3, 3>& t) {
  const Coord3 normal = gsl_arithmetic::Cross(gsl_arithmetic::Subtract(t[1], t[0]),
                                              gsl_arithmetic::Subtract(t[2], t[0]));
  const double length = gsl_arithmetic::Length(normal);
  if (!std::isfinite(length) || !(length > 0.0)) return {0.0, 0.0, 0.0};
  return gsl_arithmetic::Divide(normal, length);
}

void WriteCoord(const Coord3& c, MeshOutput& output) {
  output.Float(c.x);
  output.Float(c.y);
  output.Float(c.z);
}

void WriteFacet(const Coord3* corners, MeshOutput& output) {
  const std::array<Coord3, 3> t{Rounded(corners[0]), Rounded(corners[1]), Rounded(corners[2])};
  WriteCoord(NormalOf(t), output);
  for (const Coord3& corner : t)
    WriteCoord(corner, output);
  output.Byte(0);
  output.Byte(0);
}

} // namespace

void WriteStl(const Mesh& mesh, MeshOutput& output) {
  CheckWritable(mesh, output);
  output.Text(kHeaderText);
  output.Text(std::string(kHeaderSize - kHeaderText.size(), '\0'));
  output.Bits32(static_cast<std::uint32_t>(mesh.TriangleCount()));
  for (std::size_t k = 0; k < mesh.TriangleCount(); ++k)
    WriteFacet(&mesh.corners[3 * k], output);
}

} // namespace gsl_mesh
