#ifndef GSL_MESH_WRITE_FORMATS_H
#define GSL_MESH_WRITE_FORMATS_H

#include "Mesh.h"
#include "OutputFile.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// What the mesh writers share. No other code uses it.
namespace gsl_sweep {

/// Collects the bytes of a mesh file and passes them on in blocks.
class MeshOutput {
public:
  /// Messages call the file `name`.
  MeshOutput(const std::string& name, OutputFile& file) : m_name(name), m_file(file) {}

  void Text(std::string_view text) { Append(text.data(), text.size()); }

  /// Writes the shortest decimal that reads back as the same double; also "nan" and "inf".
  void Decimal(double value);
  void Decimal(std::uint64_t value);

  /// Write little-endian bytes.
  void Byte(std::uint8_t value);
  void Bits32(std::uint32_t value);
  void Float(double value); ///< rounded to single precision
  void Double(double value);

  /// Passes on the bytes that are left.
  void Flush();

  /// Throws OutputError: the name of the file, then the message.
  [[noreturn]] void Fail(const std::string& message) const;

private:
  void Append(const void* data, std::size_t size);

  const std::string& m_name;
  OutputFile& m_file;
  std::string m_bytes;
};

/// The vertices of a mesh, and the vertex of each corner. Corners share a vertex when all their
/// bits are the same, so that a reader reads the same bits that were written.
struct SharedVertices {
  std::vector<std::uint32_t> corner;   ///< the first corner of each vertex
  std::vector<std::uint32_t> ofCorner; ///< the vertex of each corner
};

/// Fails for more than 1431655765 triangles, whose corners 32 bits can count, or 2147483647
/// vertices: some readers have signed indices of 32 bits.
SharedVertices ShareVertices(const Mesh& mesh, const MeshOutput& output);

/// Writes three decimals and the end of the line.
void WriteVertexLine(const gsl_arithmetic::Coord3& vertex, MeshOutput& output);

void WriteStl(const Mesh& mesh, MeshOutput& output);
void WritePly(const Mesh& mesh, MeshOutput& output);
void WriteObj(const Mesh& mesh, MeshOutput& output);
void WriteOff(const Mesh& mesh, MeshOutput& output);

} // namespace gsl_sweep

#endif
