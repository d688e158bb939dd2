#ifndef GSL_TOOLS_VECTOR_TEXT_H
#define GSL_TOOLS_VECTOR_TEXT_H

#include "gsl_Arithmetic.h"

#include <optional>
#include <string>
#include <string_view>

/// Numbers and vectors as a person types them. Always with a decimal point, whatever the locale.
namespace gsl_sweep {

/// A finite decimal number, correctly rounded; spaces around it and a leading '+' are allowed.
std::optional<double> ParseNumber(std::string_view text);

/// Three numbers with a comma or spaces between two of them, as in "0,0,-1.5" or "0 0 -1.5".
std::optional<gsl_arithmetic::Coord3> ParseVector(std::string_view text);

/// A vector that is not zero, or an axis with or without a sign: x +x -x y +y -y z +z -z, in either
/// case.
std::optional<gsl_arithmetic::Coord3> ParseDirection(std::string_view text);

/// The shortest decimal number that reads back as the same double.
std::string NumberText(double value);

/// "(1, 2, 3)".
std::string VectorText(const gsl_arithmetic::Coord3& v);

} // namespace gsl_sweep

#endif
