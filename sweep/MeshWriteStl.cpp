#include "MeshWriteStl.h"

#include "OneLine.h"
#include "OutputFile.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

using gsl_arithmetic::Coord3;

namespace gsl_sweep {

namespace {

constexpr std::size_t headerSize = 80;
constexpr std::size_t recordSize = 50;
constexpr std::size_t recordsPerBlock = 1024;

// A header that began with 'solid' would be taken for a text by some readers.
constexpr char headerText[] = "binary STL, coordinates in the units of the source file";
static_assert(sizeof headerText <= headerSize, "the rest is filled with zeros");

void Append32(std::string& bytes, std::uint32_t value) {
  for (int k = 0; k < 4; ++k)
    bytes.push_back(static_cast<char>(value >> (8 * k) & 0xffU));
}

void AppendFloat(std::string& bytes, double value) {
  const float narrow = static_cast<float>(value);
  std::uint32_t bits = 0;
  std::memcpy(&bits, &narrow, sizeof bits);
  Append32(bytes, bits);
}

void AppendCoord(std::string& bytes, const Coord3& c) {
  AppendFloat(bytes, c.x);
  AppendFloat(bytes, c.y);
  AppendFloat(bytes, c.z);
}

/// False when a finite value would become infinite.
bool Fits(double value) {
  constexpr double largest = std::numeric_limits<float>::max();
  return !std::isfinite(value) || std::fabs(value) <= largest;
}

Coord3 Rounded(const Coord3& c) {
  return {static_cast<double>(static_cast<float>(c.x)),
          static_cast<double>(static_cast<float>(c.y)),
          static_cast<double>(static_cast<float>(c.z))};
}

/// Unit normal, or zero. Products of single precision numbers do not overflow in double.
Coord3 NormalOf(const std::array<Coord3, 3>& t) {
  const Coord3 normal = gsl_arithmetic::Cross(gsl_arithmetic::Subtract(t[1], t[0]),
                                              gsl_arithmetic::Subtract(t[2], t[0]));
  const double length = gsl_arithmetic::Length(normal);
  if (!std::isfinite(length) || !(length > 0.0)) return {0.0, 0.0, 0.0};
  return gsl_arithmetic::Divide(normal, length);
}

void AppendRecord(std::string& bytes, const Coord3* corners) {
  const std::array<Coord3, 3> t{Rounded(corners[0]), Rounded(corners[1]), Rounded(corners[2])};
  AppendCoord(bytes, NormalOf(t));
  for (const Coord3& corner : t)
    AppendCoord(bytes, corner);
  bytes.append(2, '\0');
}

void CheckWritable(const std::string& path, const Mesh& mesh) {
  if (mesh.TriangleCount() > std::numeric_limits<std::uint32_t>::max()) {
    throw OutputError(OneLine(path) + ": too many triangles for an STL file");
  }
  for (const Coord3& c : mesh.corners) {
    if (Fits(c.x) && Fits(c.y) && Fits(c.z)) continue;
    throw OutputError(OneLine(path) +
                      ": a coordinate is too large for the single precision of STL");
  }
}

} // namespace

void WriteStl(const std::string& path, const Mesh& mesh, bool force) {
  CheckWritable(path, mesh);
  OutputFile file(path, force);
  std::string bytes(headerText);
  bytes.resize(headerSize, '\0');
  Append32(bytes, static_cast<std::uint32_t>(mesh.TriangleCount()));
  for (std::size_t k = 0; k < mesh.TriangleCount(); ++k) {
    AppendRecord(bytes, &mesh.corners[3 * k]);
    if (bytes.size() >= recordsPerBlock * recordSize) {
      file.Write(bytes.data(), bytes.size());
      bytes.clear();
    }
  }
  file.Write(bytes.data(), bytes.size());
  file.Commit();
}

} // namespace gsl_sweep
