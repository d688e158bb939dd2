#include "writers/MeshOutput.h"

#include <charconv>
#include <cstring>

namespace gsl_mesh {

namespace {

constexpr std::size_t kBlockSize = 1 << 16;

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
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  Bits32(static_cast<std::uint32_t>(bits));
  Bits32(static_cast<std::uint32_t>(bits >> 32));
}

void MeshOutput::Append(const void* data, std::size_t size) {
  m_bytes.append(static_cast<const char*>(data), size);
  if (m_bytes.size() >= kBlockSize) Flush();
}

void MeshOutput::Flush() {
  m_file.Write(m_bytes.data(), m_bytes.size());
  m_bytes.clear();
}

void MeshOutput::Fail(const std::string& message) const {
  throw OutputError(m_name + ": " + message);
}

void WriteVertexLine(const gsl_arithmetic::Coord3& vertex, MeshOutput& output) {
  output.Decimal(vertex.x);
  output.Text(" ");
  output.Decimal(vertex.y);
  output.Text(" ");
  output.Decimal(vertex.z);
  output.Text("\n");
}

} // namespace gsl_mesh
