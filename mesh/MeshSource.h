#ifndef GSL_MESH_SOURCE_H
#define GSL_MESH_SOURCE_H

#include "Mesh.h"

#include <cstddef>
#include <string>
#include <string_view>

/// A mesh file in memory, and the messages of its reader.
namespace gsl_mesh {

/// A whole file in memory, and the name that messages use.
struct MeshSource {
  std::string_view bytes;
  std::string file;
  const MeshProgress* progress = nullptr; ///< receives the part that a reader has done
};

/// How many bytes a reader may pass before it reports its progress again.
constexpr std::size_t kProgressStep = std::size_t{1} << 18;

/// Reports that a reader has come to `position` in the bytes of the source.
void ReportPosition(const MeshSource& source, const char* position);

/// Throws MeshError: the file, then the message. The second form adds the line of `position`.
[[noreturn]] void FailRead(const MeshSource& source, const std::string& message);
[[noreturn]] void FailReadAt(const MeshSource& source, const char* position,
                             const std::string& message);

[[noreturn]] void FailUnknownFormat(const MeshSource& source);

/// Adds a warning to the mesh: the file, then the message.
void Warn(Mesh& mesh, const MeshSource& source, const std::string& message);

/// Returns `text` in quotes for a message: shortened, with '?' for control characters.
std::string Quoted(std::string_view text);

/// Returns the number, from 1, of the line that holds `position`; LF, CRLF and CR each end a line.
std::size_t LineNumberAt(std::string_view bytes, const char* position);

/// Returns `bytes` without the mark that some editors put before UTF-8 text.
std::string_view WithoutByteOrderMark(std::string_view bytes);

} // namespace gsl_mesh

#endif
