#ifndef GSL_TOOLS_INPUT_TEXT_H
#define GSL_TOOLS_INPUT_TEXT_H

#include "FileDescriptor.h"
#include "Printable.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace gsl_tools {

/// A text file cannot be read or says something wrong. what() is one line that names the file,
/// without a newline at its end.
class InputError : public std::runtime_error {
public:
  explicit InputError(const std::string& message)
      : std::runtime_error(gsl_mesh::Printable(message)) {}
};

/// Returns the name of an input in messages: "standard input" for "-".
std::string NameOfInput(const std::string& file);

/// A text that arrives from a file, a pipe or standard input.
class InputText {
public:
  /// Opens a file; "-" is standard input, which stays open. Throws InputError when the file cannot
  /// be opened.
  explicit InputText(const std::string& file);

  /// Waits until there is some text and returns it; returns an empty text at the end. The text
  /// lives until the next call. Throws InputError.
  std::string_view Next();

  const std::string& Name() const { return m_name; }

  /// Returns the number of bytes of a regular file, and 0 for anything else.
  std::size_t Size() const;

private:
  std::string m_name;
  gsl_mesh::FileDescriptor m_opened; ///< of no file for standard input
  int m_descriptor;
  std::string m_buffer;
};

} // namespace gsl_tools

#endif
