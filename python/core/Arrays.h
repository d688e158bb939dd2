#ifndef GSL_PYTHON_ARRAYS_H
#define GSL_PYTHON_ARRAYS_H

#include "gsl_Arithmetic.h"
#include "gsl_Batch.h"

#include <cstddef>
#include <vector>

#include <pybind11/numpy.h>

/// Arrays of numbers between NumPy and the libraries. The module's Python part has checked shapes
/// and types.
namespace gsl_python {

using gsl_arithmetic::Coord3;
/// An array whose numbers are one after the other.
using Reals = pybind11::array_t<double, pybind11::array::c_style>;

/// The numbers of a row of an array, or of its only row.
class Rows {
public:
  Rows(const Reals& array, std::size_t width)
      : m_numbers(array.data()),
        m_step(static_cast<std::size_t>(array.size()) == width ? 0 : width) {}

  const double* operator[](std::size_t k) const { return m_numbers + k * m_step; }

  /// Returns the rows from k on, which are points.
  gsl_BatchPoints PointsFrom(std::size_t k) const {
    return {(*this)[k], static_cast<std::ptrdiff_t>(m_step)};
  }

private:
  const double* m_numbers;
  std::size_t m_step; ///< 0 when all rows are the same
};

inline Coord3 CoordOf(const double* numbers) {
  return {numbers[0], numbers[1], numbers[2]};
}

inline void Write(const Coord3& from, double* to) {
  to[0] = from.x;
  to[1] = from.y;
  to[2] = from.z;
}

/// Returns an array of `count` numbers, or of `count` rows of `width` numbers where there is a
/// width.
template <class Number = double>
pybind11::array_t<Number> MakeArray(std::size_t count, std::size_t width = 0) {
  std::vector<pybind11::ssize_t> shape{static_cast<pybind11::ssize_t>(count)};
  if (width > 0) shape.push_back(static_cast<pybind11::ssize_t>(width));
  return pybind11::array_t<Number>(shape);
}

} // namespace gsl_python

#endif
