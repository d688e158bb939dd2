#ifndef GSL_MESH_OUTPUT_H
#define GSL_MESH_OUTPUT_H

#include "OutputFile.h"
#include "gsl_Arithmetic.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace gsl_mesh {

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

/// Writes three decimals and the end of the line.
void WriteVertexLine(const gsl_arithmetic::Coord3& vertex, MeshOutput& output);

} // namespace gsl_mesh

#endif
