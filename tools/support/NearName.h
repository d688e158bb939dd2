#ifndef GSL_TOOLS_NEAR_NAME_H
#define GSL_TOOLS_NEAR_NAME_H

#include <string>
#include <string_view>
#include <vector>

namespace gsl_tools {

/// The one name that a mistyped word can only mean; empty when there is none or more than one.
///
/// A word means a name that begins with it, if it has at least three letters after its dashes; else
/// a name at most two typing errors away. A typing error is a letter too many, too few or wrong, or
/// two neighbours exchanged.
std::string NearName(std::string_view word, const std::vector<std::string>& names);

} // namespace gsl_tools

#endif
