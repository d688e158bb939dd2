#ifndef GSL_MESH_SOURCE_H
#define GSL_MESH_SOURCE_H

#include "Mesh.h"

#include <cstddef>
#include <string>
#include <string_view>

/// A mesh file in memory and what a reader says about it.
namespace gsl_sweep {

/// A whole file in memory, with the name that messages use.
struct MeshSource {
  std::string_view bytes;
  std::string file;
};

/// Throws MeshError: file, then the message; the second form puts the line of `position` between.
[[noreturn]] void FailRead(const MeshSource& source, const std::string& message);
[[noreturn]] void FailReadAt(const MeshSource& source, const char* position,
                             const std::string& message);

[[noreturn]] void FailUnknownFormat(const MeshSource& source);

/// Adds a warning to the mesh: file, then the message.
void Warn(Mesh& mesh, const MeshSource& source, const std::string& message);

/// `text` in quotes, made fit for a message: shortened, control characters as '?'.
std::string Quoted(std::string_view text);

/// Number, from 1, of the line that holds `position`; LF, CRLF and CR each end a line.
std::size_t LineNumberAt(std::string_view bytes, const char* position);

/// `bytes` without the mark that some editors put before UTF-8 text.
std::string_view WithoutByteOrderMark(std::string_view bytes);

} // namespace gsl_sweep

#endif
