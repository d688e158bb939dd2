#ifndef GSL_TOOLS_NEAR_NAME_H
#define GSL_TOOLS_NEAR_NAME_H

#include <string>
#include <string_view>
#include <vector>

namespace gsl_tools {

/// Returns the only name that a mistyped word can mean; empty when no name or several names fit.
///
/// A word with at least three letters after its dashes means a name that begins with the word;
/// otherwise it means a name at most two typing errors away. A typing error is an extra, missing or
/// wrong letter, or two neighbours exchanged.
std::string NearName(std::string_view word, const std::vector<std::string>& names);

} // namespace gsl_tools

#endif
