#include "writers/SharedVertices.h"

#include <cstring>
#include <limits>

using gsl_arithmetic::Coord3;

namespace gsl_mesh {

namespace {

constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t kMostVertices = std::numeric_limits<std::int32_t>::max();

std::uint64_t BitsOf(double value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

std::size_t HashOf(const Coord3& c) {
  std::uint64_t hash = 0;
  for (const double value : {c.x, c.y, c.z}) {
    hash = (hash ^ BitsOf(value)) * 0x9e3779b97f4a7c15U;
    hash ^= hash >> 32;
  }
  return static_cast<std::size_t>(hash);
}

bool SameBits(const Coord3& a, const Coord3& b) {
  return BitsOf(a.x) == BitsOf(b.x) && BitsOf(a.y) == BitsOf(b.y) && BitsOf(a.z) == BitsOf(b.z);
}

std::size_t TableSize(std::size_t corners) {
  std::size_t size = 16;
  while (size < 2 * corners)
    size *= 2;
  return size;
}

} // namespace

SharedVertices ShareVertices(const Mesh& mesh, const MeshOutput& output) {
  const std::size_t count = mesh.corners.size();
  if (count > kNone) output.Fail("too many triangles for this format");
  SharedVertices shared;
  shared.ofCorner.resize(count);
  // Open addressing: a slot holds a vertex; a new vertex takes the first free slot from its hash
  // on.
  std::vector<std::uint32_t> slots(TableSize(count), kNone);
  const std::size_t mask = slots.size() - 1;
  for (std::size_t k = 0; k < count; ++k) {
    const Coord3& corner = mesh.corners[k];
    std::size_t slot = HashOf(corner) & mask;
    while (slots[slot] != kNone && !SameBits(mesh.corners[shared.corner[slots[slot]]], corner))
      slot = (slot + 1) & mask;
    if (slots[slot] == kNone) {
      slots[slot] = static_cast<std::uint32_t>(shared.corner.size());
      shared.corner.push_back(static_cast<std::uint32_t>(k));
    }
    shared.ofCorner[k] = slots[slot];
  }
  if (shared.corner.size() > kMostVertices) output.Fail("too many vertices for this format");
  return shared;
}

} // namespace gsl_mesh
