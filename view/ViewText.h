#ifndef GSL_VIEW_VIEW_TEXT_H
#define GSL_VIEW_VIEW_TEXT_H

#include "gsl_Arithmetic.h"

#include <string>

/// Texts in pictures, with a decimal point in every locale.
namespace gsl_view {

/// Returns the number with six significant digits, as on a drawing.
std::string ShortNumber(double value);

/// Returns a positive number with two significant digits, such as "250".
std::string RoughNumber(double value);

/// Returns the shortest decimal number that reads back as the same double.
std::string FullNumber(double value);

/// Returns a text such as "(1, 2, 3)", of short numbers.
std::string ShortVector(const gsl_arithmetic::Coord3& v);

/// Returns the text as UTF-8 that can be drawn: bytes that are not UTF-8 become U+FFFD, and control
/// characters become '?'.
std::string DrawableText(const std::string& text);

/// Returns where the next character of a UTF-8 text begins after the one at `at`, or its end.
std::size_t NextCharacter(const std::string& text, std::size_t at);

} // namespace gsl_view

#endif
