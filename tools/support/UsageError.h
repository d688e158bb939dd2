#ifndef GSL_TOOLS_USAGE_ERROR_H
#define GSL_TOOLS_USAGE_ERROR_H

#include "Printable.h"

#include <stdexcept>
#include <string>

namespace gsl_tools {

/// A command line is wrong. what() is one line: what is wrong, then what was expected.
class UsageError : public std::runtime_error {
public:
  explicit UsageError(const std::string& message)
      : std::runtime_error(gsl_mesh::Printable(message)) {}
};

} // namespace gsl_tools

#endif
