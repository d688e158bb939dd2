#ifndef GSL_MESH_PRINTABLE_H
#define GSL_MESH_PRINTABLE_H

#include <algorithm>
#include <string>

namespace gsl_sweep {

/// `text` with control characters as '?': a file name or a word of a file must not break a message
/// in two or reach the terminal as a command. Twice does what once does.
///
/// Text keeps its bytes until it is printed: what a person reads passes here once, in the errors
/// that carry it and in the functions that print.
inline std::string Printable(std::string text) {
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == '\x7f'; };
  std::replace_if(text.begin(), text.end(), isControl, '?');
  return text;
}

} // namespace gsl_sweep

#endif
