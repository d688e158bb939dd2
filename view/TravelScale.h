#ifndef GSL_VIEW_TRAVEL_SCALE_H
#define GSL_VIEW_TRAVEL_SCALE_H

#include "Colour.h"

#include <cstddef>
#include <vector>

namespace gsl_view {

/// The colours of travels, from the least to the greatest: from dark blue through green to yellow.
/// They are lighter in even steps, so that they are read without colour vision too.
constexpr Colour kTravelColours[] = {
    {0.004, 0.200, 0.431}, {0.012, 0.294, 0.451}, {0.020, 0.384, 0.494},
    {0.004, 0.478, 0.537}, {0.035, 0.576, 0.561}, {0.035, 0.678, 0.533},
    {0.337, 0.773, 0.439}, {0.655, 0.831, 0.392}, {0.925, 0.878, 0.408}};

/// No travel is as dark as the start or as light as a free direction.
constexpr Colour kStartColour{0.06, 0.06, 0.06}, kStartDots{0.80, 0.80, 0.80};
constexpr Colour kFreeColour{1.0, 1.0, 1.0}, kFreeStripes{0.62, 0.62, 0.62};

/// The travels from the least to the greatest, as a scale of even steps: linear, or logarithmic
/// where the greatest travel is more than eight times the middle one, so that few long travels do
/// not hide the differences between the others. Travels below 1e-4 of the greatest, such as the
/// rounding of seated parts, count as the least of the others.
struct TravelScale {
  double low = 0.0, high = 0.0; ///< at least 0, finite, in this order
  bool isLogarithmic = false;   ///< then low is positive
  bool isCut = false;           ///< there are travels below `low`, which count as `low`

  /// Returns the scale of some travels, which are positive and finite; an empty list has the scale
  /// of zeros. A scale has at most four powers of ten.
  static TravelScale Of(std::vector<double> travels);

  /// Returns the part of the scale from 0 to 1; a half for a scale of one travel.
  double PartOf(double travel) const;
  Colour At(double travel) const { return ColourAt(PartOf(travel)); }
  /// Returns the colour of a part of the scale from 0 to 1.
  static Colour ColourAt(double part);
  /// Returns round travels within the scale, at most thirteen; none for a scale of one travel and
  /// where their numbers cannot be told apart.
  std::vector<double> Ticks() const;
};

} // namespace gsl_view

#endif
