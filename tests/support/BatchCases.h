#ifndef TESTS_BATCH_CASES_H
#define TESTS_BATCH_CASES_H

#include "FourPoints.h"
#include "gsl_BatchRun.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

/// Inputs and outputs of batches, and every instruction set that this processor runs.
namespace batch_cases {

using gsl_arithmetic::Coord3;

inline std::vector<const gsl_WideKernels*> AllKernels() {
  std::vector<const gsl_WideKernels*> all;
  for (const gsl_VectorWidth width :
       {gsl_VectorWidth::Baseline, gsl_VectorWidth::Avx2, gsl_VectorWidth::Avx512}) {
    if (const gsl_WideKernels* const kernels = gsl_FindWideKernels(width)) all.push_back(kernels);
  }
  return all;
}

/// Points at any stride. The memory ends with the last coordinate, so that a sanitizer notices a
/// load beyond it.
class PointArray {
public:
  PointArray(std::size_t count, std::ptrdiff_t stride)
      : m_stride(stride), m_numbers(SizeOf(count, stride), numbers::kNaN),
        m_first(stride < 0 && count > 0 ? static_cast<std::size_t>(-stride) * (count - 1) : 0) {}

  /// With a stride of 0 the last point set is every point.
  void Set(std::size_t k, const Coord3& c) {
    double* const at = m_numbers.data() + m_first + static_cast<std::ptrdiff_t>(k) * m_stride;
    at[0] = c.x;
    at[1] = c.y;
    at[2] = c.z;
  }
  gsl_wide::PointsIn In() const { return {m_numbers.data() + m_first, m_stride}; }
  Coord3 operator[](std::size_t k) const { return gsl_batch::PointOf(In(), k); }

private:
  static std::size_t SizeOf(std::size_t count, std::ptrdiff_t stride) {
    if (count == 0) return 3;
    return static_cast<std::size_t>(stride < 0 ? -stride : stride) * (count - 1) + 3;
  }

  std::ptrdiff_t m_stride;
  std::vector<double> m_numbers;
  std::size_t m_first;
};

/// A count of inputs, one tolerance, and four arrays of points: mostly packed.
class Inputs {
public:
  std::vector<PointArray> arrays;
  std::size_t count;
  double linearTolerance = 0.0, cosineTolerance = 0.0;

  Inputs(FourPoints& points, RandomNumbers& random)
      : count(static_cast<std::size_t>(random.Below(70))) {
    const std::ptrdiff_t strides[] = {3, 3, 3, 3, 3, 0, 5, -4, 12, -3};
    for (int i = 0; i < 4; ++i)
      arrays.emplace_back(count, strides[random.Below(10)]);
    for (std::size_t k = 0; k < count; ++k) {
      points.Draw();
      for (std::size_t i = 0; i < 4; ++i)
        arrays[i].Set(k, points.p[i]);
    }
    if (count == 0) points.Draw();
    linearTolerance = points.linearTolerance;
    cosineTolerance = points.cosineTolerance;
  }
};

/// Outputs with a guard after them, away from the alignment of registers.
template <class Number>
class Output {
public:
  Output(std::size_t size, Number before) : m_values(size + 2, before), m_before(before) {}

  Number* Data() { return m_values.data() + 1; }

  bool GuardsHold() const {
    return std::memcmp(&m_values.front(), &m_before, sizeof(Number)) == 0 &&
           std::memcmp(&m_values.back(), &m_before, sizeof(Number)) == 0;
  }

  friend bool Same(const Output& a, const Output& b) {
    return a.GuardsHold() && b.GuardsHold() &&
           std::equal(a.m_values.begin(), a.m_values.end(), b.m_values.begin(), b.m_values.end(),
                      [](Number x, Number y) {
                        return numbers::SameBits(static_cast<double>(x), static_cast<double>(y));
                      });
  }

private:
  std::vector<Number> m_values;
  Number m_before;
};

using Reals = Output<double>;
using Parts = Output<unsigned char>;

/// The value of parts that nobody wrote.
constexpr unsigned char kUnwritten = 99;

/// Inputs of a whole test, and how many of them the lanes left to the scalar kernel.
struct Tally {
  long inputs = 0;
  long left = 0;
};

} // namespace batch_cases

#endif
