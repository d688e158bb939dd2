#ifndef GSL_SWEEP_RANGE_SCALE_H
#define GSL_SWEEP_RANGE_SCALE_H

#include "ExactRatio.h"

#include "gsl_Arithmetic.h"

#include <cmath>
#include <stdexcept>

namespace gsl_sweep {

using gsl_arithmetic::Coord3;
using gsl_exact::ExactRatio;
using gsl_exact::ScaledLength;

/// Brings coordinates into the range in which the pair kernel is exact, by a power of two. The
/// largest coordinate becomes less than 1, and coordinates that are then below 2^-288 are rounded
/// to 2^-339.
class RangeScale {
public:
  /// Requires a finite `largest` that is at least 0.
  explicit RangeScale(double largest) {
    std::frexp(largest, &m_exponent);
    // A double cannot hold 2^1074, so there are two factors. The first product is exact, or so
    // small that the second is rounded to zero. So the order does not matter.
    m_half = std::ldexp(1.0, -m_exponent / 2);
    m_rest = std::ldexp(1.0, -m_exponent - -m_exponent / 2);
  }

  int Exponent() const { return m_exponent; }

  double Down(double c) const { return Snapped(c * m_half * m_rest); }
  Coord3 Down(const Coord3& p) const { return {Down(p.x), Down(p.y), Down(p.z)}; }
  ScaledLength DownLength(double length) const { return {length, -m_exponent}; }

  /// Errors     std::overflow_error beyond the range of double.
  double UpTravel(double travel) const {
    return Up(travel, "the travel is too large for a double");
  }
  Coord3 UpPoint(const Coord3& p) const {
    constexpr const char* kText = "a coordinate of the contact is too large for a double";
    return {Up(p.x, kText), Up(p.y, kText), Up(p.z, kText)};
  }

private:
  double Up(double c, const char* text) const {
    const double result = std::ldexp(c, m_exponent);
    if (!std::isfinite(result)) throw std::overflow_error(text);
    return result;
  }

  static double Snapped(double c) {
    constexpr double kRound = 0x1.8p-287; // one unit in its last place is 2^-339
    return std::fabs(c) < 0x1p-288 ? (c + kRound) - kRound : c;
  }

  int m_exponent = 0;
  double m_half, m_rest;
};

} // namespace gsl_sweep

#endif
