#ifndef GSL_MESH_PRINTABLE_H
#define GSL_MESH_PRINTABLE_H

#include <algorithm>
#include <string>

namespace gsl_mesh {

/// Returns `text` with '?' for each control character. A file name or a word of a file must not
/// break a message in two or reach the terminal as a command. A second call changes nothing. A text
/// keeps its bytes until it is printed. The errors that carry a text for people, and the functions
/// that print one, call this function once.
inline std::string Printable(std::string text) {
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == '\x7f'; };
  std::replace_if(text.begin(), text.end(), isControl, '?');
  return text;
}

} // namespace gsl_mesh

#endif
