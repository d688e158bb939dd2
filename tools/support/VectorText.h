#ifndef GSL_TOOLS_VECTOR_TEXT_H
#define GSL_TOOLS_VECTOR_TEXT_H

#include "gsl_Arithmetic.h"

#include <optional>
#include <string>
#include <string_view>

/// Numbers and vectors as a person types them, with a decimal point in every locale.
namespace gsl_tools {

/// Reads a finite decimal number, correctly rounded; spaces around it and a leading '+' are
/// allowed.
std::optional<double> ParseNumber(std::string_view text);

/// Reads three numbers with commas or spaces between them, as in "0,0,-1.5" or "0 0 -1.5".
std::optional<gsl_arithmetic::Coord3> ParseVector(std::string_view text);

/// Reads a vector that is not zero, or an axis with or without a sign: x +x -x y +y -y z +z -z, in
/// upper or lower case.
std::optional<gsl_arithmetic::Coord3> ParseDirection(std::string_view text);

/// What ParseDirection reads, for a message after "must".
constexpr const char* kDirectionForms = "be X,Y,Z or an axis such as z or -z";

/// Returns the shortest decimal number that reads back as the same double.
std::string NumberText(double value);

/// Returns a text such as "(1, 2, 3)".
std::string VectorText(const gsl_arithmetic::Coord3& v);

} // namespace gsl_tools

#endif
