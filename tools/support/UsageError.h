#ifndef GSL_TOOLS_USAGE_ERROR_H
#define GSL_TOOLS_USAGE_ERROR_H

#include <stdexcept>

namespace gsl_tools {

/// A command line is wrong. what() is one line: what is wrong, then what was expected.
class UsageError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

} // namespace gsl_tools

#endif
