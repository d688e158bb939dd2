#ifndef GSL_MESH_WRITE_FORMATS_H
#define GSL_MESH_WRITE_FORMATS_H

#include "Mesh.h"
#include "OutputFile.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// What the mesh writers share. Not for use outside them.
namespace gsl_sweep {

/// Collects the bytes of a mesh file and passes them on in blocks.
class MeshOutput {
public:
  /// `name` is the file in messages.
  MeshOutput(const std::string& name, OutputFile& file) : m_name(name), m_file(file) {}

  void Text(std::string_view text) { Append(text.data(), text.size()); }

  /// The shortest decimal that reads back as the same double; also "nan" and "inf".
  void Decimal(double value);
  void Decimal(std::uint64_t value);

  /// Little-endian bytes.
  void Byte(std::uint8_t value);
  void Bits32(std::uint32_t value);
  void Float(double value); ///< rounded to single precision
  void Double(double value);

  /// Passes on what is left.
  void Flush();

  /// Throws OutputError: the file, then the message.
  [[noreturn]] void Fail(const std::string& message) const;

private:
  void Append(const void* data, std::size_t size);

  const std::string& m_name;
  OutputFile& m_file;
  std::string m_bytes;
};

/// The distinct corners of a mesh, and which of them each corner is. Corners are the same when all
/// their bits are, so that reading gives back what was written.
struct SharedVertices {
  std::vector<std::uint32_t> corner;   ///< of each vertex, the corner that uses it first
  std::vector<std::uint32_t> ofCorner; ///< of each corner, its vertex
};

/// Fails for more than 1431655765 triangles or 2147483647 vertices, the most that indices of 32
/// bits can tell apart in every reader.
SharedVertices ShareVertices(const Mesh& mesh, const MeshOutput& output);

/// Three decimals and the end of the line.
void WriteVertexLine(const gsl_arithmetic::Coord3& vertex, MeshOutput& output);

void WriteStl(const Mesh& mesh, MeshOutput& output);
void WritePly(const Mesh& mesh, MeshOutput& output);
void WriteObj(const Mesh& mesh, MeshOutput& output);
void WriteOff(const Mesh& mesh, MeshOutput& output);

} // namespace gsl_sweep

#endif
