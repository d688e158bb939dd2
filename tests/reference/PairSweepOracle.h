#ifndef REFERENCE_PAIR_SWEEP_ORACLE_H
#define REFERENCE_PAIR_SWEEP_ORACLE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

/// Computes the travels at which two triangles touch, as a linear program in exact fractions.
///
/// A point of the moving triangle, moved by s, is a point of the fixed triangle. These are five
/// equations in six weights and s. The oracle visits every vertex of the feasible set, so it needs
/// no faces, edges or shadows. Coordinates are integers of magnitude up to 2^10.
namespace oracle {

__extension__ using Wide = __int128;

struct Fraction {
  Wide numerator = 0;
  Wide denominator = 1; ///< positive

  long double Value() const {
    return static_cast<long double>(numerator) / static_cast<long double>(denominator);
  }
  int Sign() const { return (numerator > 0) - (numerator < 0); }
};

inline Wide GreatestCommonDivisor(Wide a, Wide b) {
  if (a < 0) a = -a;
  if (b < 0) b = -b;
  while (b != 0) {
    a %= b;
    std::swap(a, b);
  }
  return a;
}

inline Fraction MakeFraction(Wide n, Wide d) {
  if (d < 0) {
    n = -n;
    d = -d;
  }
  const Wide g = GreatestCommonDivisor(n, d);
  return g == 0 ? Fraction{0, 1} : Fraction{n / g, d / g};
}

inline Fraction operator+(const Fraction& a, const Fraction& b) {
  return MakeFraction(a.numerator * b.denominator + b.numerator * a.denominator,
                      a.denominator * b.denominator);
}
inline Fraction operator*(const Fraction& a, const Fraction& b) {
  return MakeFraction(a.numerator * b.numerator, a.denominator * b.denominator);
}
inline Fraction operator/(const Fraction& a, const Fraction& b) {
  return MakeFraction(a.numerator * b.denominator, a.denominator * b.numerator);
}
inline Fraction operator-(const Fraction& a) {
  return {-a.numerator, a.denominator};
}
inline bool operator<(const Fraction& a, const Fraction& b) {
  return (a + -b).Sign() < 0;
}

using IntPoint = std::array<std::int64_t, 3>;
using IntTriangle = std::array<IntPoint, 3>;

struct Interval {
  Fraction low, high; ///< multiples of the direction vector
};

/// Solves the rows, whose last entry is the right side. Returns nothing unless there is exactly one
/// solution.
inline std::optional<std::array<Fraction, 5>>
SolveColumns(std::array<std::array<Fraction, 6>, 5> rows, std::size_t unknowns) {
  // Each unknown takes another row as its pivot.
  for (std::size_t c = 0; c < unknowns; ++c) {
    std::size_t pivot = c;
    while (pivot < 5 && rows[pivot][c].Sign() == 0)
      ++pivot;
    if (pivot == 5) return std::nullopt;
    std::swap(rows[c], rows[pivot]);
    for (std::size_t r = 0; r < 5; ++r) {
      if (r == c || rows[r][c].Sign() == 0) continue;
      const Fraction factor = rows[r][c] / rows[c][c];
      for (std::size_t k = 0; k < 6; ++k)
        rows[r][k] = rows[r][k] + -(factor * rows[c][k]);
    }
  }
  for (std::size_t r = unknowns; r < 5; ++r) {
    if (rows[r][5].Sign() != 0) return std::nullopt;
  }
  std::array<Fraction, 5> x;
  for (std::size_t c = 0; c < unknowns; ++c)
    x[c] = rows[c][5] / rows[c][c];
  return x;
}

/// Returns s at the point of the feasible set where only the weights in `used` (bits) may be
/// positive.
inline std::optional<Fraction> VertexOf(unsigned used, const IntPoint& d, const IntTriangle& moving,
                                        const IntTriangle& fixed) {
  std::array<std::array<Fraction, 6>, 5> rows{};
  std::size_t unknowns = 0;
  for (std::size_t k = 0; k < 3; ++k)
    rows[k][0] = {d[k], 1};
  ++unknowns;
  for (std::size_t w = 0; w < 6; ++w) {
    if ((used >> w & 1u) == 0) continue;
    const bool ofMoving = w < 3;
    const IntPoint& p = ofMoving ? moving[w] : fixed[w - 3];
    for (std::size_t k = 0; k < 3; ++k)
      rows[k][unknowns] = {ofMoving ? p[k] : -p[k], 1};
    rows[ofMoving ? 3 : 4][unknowns] = {1, 1};
    ++unknowns;
  }
  rows[3][5] = rows[4][5] = {1, 1};
  const auto x = SolveColumns(rows, unknowns);
  if (!x) return std::nullopt;
  for (std::size_t c = 1; c < unknowns; ++c) {
    if ((*x)[c].Sign() < 0) return std::nullopt;
  }
  return (*x)[0];
}

inline std::optional<Interval> SweepPair(const IntPoint& d, const IntTriangle& moving,
                                         const IntTriangle& fixed) {
  std::optional<Interval> result;
  for (unsigned used = 1; used < 64; ++used) {
    int count = 0;
    for (unsigned bits = used; bits != 0; bits >>= 1)
      count += static_cast<int>(bits & 1u);
    if (count < 2 || count > 4) continue;
    const auto s = VertexOf(used, d, moving, fixed);
    if (!s) continue;
    if (!result) result = Interval{*s, *s};
    if (*s < result->low) result->low = *s;
    if (result->high < *s) result->high = *s;
  }
  return result;
}

} // namespace oracle

#endif
