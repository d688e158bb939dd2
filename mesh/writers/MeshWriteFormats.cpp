#include "writers/MeshWriteFormats.h"

#include "OneLine.h"

#include <charconv>
#include <cstring>
#include <limits>

using gsl_arithmetic::Coord3;

namespace gsl_sweep {

namespace {

constexpr std::size_t blockSize = 1 << 16;
constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t mostVertices = std::numeric_limits<std::int32_t>::max();

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

void MeshOutput::Decimal(double value) {
  char text[32];
  const auto result = std::to_chars(text, text + sizeof text, value);
  Append(text, static_cast<std::size_t>(result.ptr - text));
}

void MeshOutput::Decimal(std::uint64_t value) {
  char text[32];
  const auto result = std::to_chars(text, text + sizeof text, value);
  Append(text, static_cast<std::size_t>(result.ptr - text));
}

void MeshOutput::Byte(std::uint8_t value) {
  Append(&value, 1);
}

void MeshOutput::Bits32(std::uint32_t value) {
  for (int k = 0; k < 4; ++k)
    Byte(static_cast<std::uint8_t>(value >> (8 * k)));
}

void MeshOutput::Float(double value) {
  const float narrow = static_cast<float>(value);
  std::uint32_t bits = 0;
  std::memcpy(&bits, &narrow, sizeof bits);
  Bits32(bits);
}

void MeshOutput::Double(double value) {
  const std::uint64_t bits = BitsOf(value);
  Bits32(static_cast<std::uint32_t>(bits));
  Bits32(static_cast<std::uint32_t>(bits >> 32));
}

void MeshOutput::Append(const void* data, std::size_t size) {
  m_bytes.append(static_cast<const char*>(data), size);
  if (m_bytes.size() >= blockSize) Flush();
}

void MeshOutput::Flush() {
  m_file.Write(m_bytes.data(), m_bytes.size());
  m_bytes.clear();
}

void MeshOutput::Fail(const std::string& message) const {
  throw OutputError(OneLine(m_name) + ": " + message);
}

SharedVertices ShareVertices(const Mesh& mesh, const MeshOutput& output) {
  const std::size_t count = mesh.corners.size();
  if (count > none) output.Fail("too many triangles for this format");
  SharedVertices shared;
  shared.ofCorner.resize(count);
  // Open addressing: a slot holds a vertex, and the first free slot from its hash on is its own.
  std::vector<std::uint32_t> slots(TableSize(count), none);
  const std::size_t mask = slots.size() - 1;
  for (std::size_t k = 0; k < count; ++k) {
    const Coord3& corner = mesh.corners[k];
    std::size_t slot = HashOf(corner) & mask;
    while (slots[slot] != none && !SameBits(mesh.corners[shared.corner[slots[slot]]], corner))
      slot = (slot + 1) & mask;
    if (slots[slot] == none) {
      slots[slot] = static_cast<std::uint32_t>(shared.corner.size());
      shared.corner.push_back(static_cast<std::uint32_t>(k));
    }
    shared.ofCorner[k] = slots[slot];
  }
  if (shared.corner.size() > mostVertices) output.Fail("too many vertices for this format");
  return shared;
}

void WriteVertexLine(const Coord3& vertex, MeshOutput& output) {
  output.Decimal(vertex.x);
  output.Text(" ");
  output.Decimal(vertex.y);
  output.Text(" ");
  output.Decimal(vertex.z);
  output.Text("\n");
}

} // namespace gsl_sweep
