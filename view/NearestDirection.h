#ifndef GSL_VIEW_NEAREST_DIRECTION_H
#define GSL_VIEW_NEAREST_DIRECTION_H

#include "gsl_Arithmetic.h"

#include <cstddef>
#include <vector>

namespace gsl_view {

/// Finds the nearest of many directions. The directions may be spread in any way.
class NearestDirection {
public:
  /// Requires at least one direction. All are finite and of length one, up to rounding.
  explicit NearestDirection(std::vector<gsl_arithmetic::Coord3> directions);

  /// Returns the number of the direction that is nearest to a unit vector; of equally near
  /// directions, the lowest. `guess` is the number of a direction, which never changes the result:
  /// a near one makes the search faster.
  std::size_t Find(const gsl_arithmetic::Coord3& v, std::size_t guess = 0) const;

private:
  struct Best {
    double square; ///< of the distance
    std::size_t number;
  };

  void Sort(std::size_t begin, std::size_t end, int axis);
  void Search(const gsl_arithmetic::Coord3& v, std::size_t begin, std::size_t end, int axis,
              Best& best) const;
  void Try(const gsl_arithmetic::Coord3& v, std::size_t number, Best& best) const;

  std::vector<gsl_arithmetic::Coord3> m_directions;
  /// A tree of the numbers: the middle of a range divides it along an axis, and the next axis
  /// divides both halves.
  std::vector<std::size_t> m_numbers;
};

} // namespace gsl_view

#endif
