#ifndef REFERENCE_MATRIX_FAMILIES_H
#define REFERENCE_MATRIX_FAMILIES_H

#include "RandomNumbers.h"
#include "TextbookLu.h"

#include <cmath>
#include <limits>

/// Square matrices that stress an elimination in different ways.
enum class MatrixFamily {
  Random,
  Graded,
  NearlySingular,
  Hilbert,
  Vandermonde,
  Permutation,
  Denormal,
  SmallIntegers,
  RankOne,
  NotFinite,
};

constexpr MatrixFamily kMatrixFamilies[] = {
    MatrixFamily::Random,   MatrixFamily::Graded,        MatrixFamily::NearlySingular,
    MatrixFamily::Hilbert,  MatrixFamily::Vandermonde,   MatrixFamily::Permutation,
    MatrixFamily::Denormal, MatrixFamily::SmallIntegers, MatrixFamily::RankOne,
    MatrixFamily::NotFinite};

namespace matrix_families {

template <class Entry>
SquareMatrix Fill(int n, Entry entry) {
  SquareMatrix m(n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j)
      m.At(i, j) = entry(i, j);
  }
  return m;
}

inline SquareMatrix NearlySingular(int n, RandomNumbers& random) {
  SquareMatrix m = Fill(n, [&](int, int) { return random.In(-1.0, 1.0); });
  for (int j = 0; j < n && n > 1; ++j) {
    m.At(n - 1, j) = m.At(0, j) * (1.0 + 1e-15 * random.In(-1.0, 1.0));
  }
  return m;
}

inline SquareMatrix Permutation(int n, RandomNumbers& random) {
  std::vector<int> order;
  for (int i = 0; i < n; ++i) {
    order.insert(order.begin() + random.Below(i + 1), i);
  }
  return Fill(n, [&](int i, int j) { return order[static_cast<std::size_t>(i)] == j ? 1.0 : 0.0; });
}

inline SquareMatrix NotFinite(int n, RandomNumbers& random) {
  const double infinity = std::numeric_limits<double>::infinity();
  return Fill(n, [&](int, int) {
    if (random.Chance(0.5 / n)) return random.Chance(0.5) ? infinity : -infinity;
    if (random.Chance(0.3 / n)) return std::numeric_limits<double>::quiet_NaN();
    return random.In(-1.0, 1.0);
  });
}

} // namespace matrix_families

inline SquareMatrix MakeMatrix(MatrixFamily family, int n, RandomNumbers& random) {
  using matrix_families::Fill;
  switch (family) {
  case MatrixFamily::Graded:
    return Fill(n, [&](int i, int j) {
      return random.In(-1.0, 1.0) * std::pow(10.0, -12.0 * (i + j) / (2.0 * n));
    });
  case MatrixFamily::NearlySingular:
    return matrix_families::NearlySingular(n, random);
  case MatrixFamily::Hilbert:
    return Fill(n, [](int i, int j) { return 1.0 / (i + j + 1.0); });
  case MatrixFamily::Vandermonde:
    return Fill(n, [&](int i, int j) { return std::pow(-1.0 + 2.0 * (i + 0.5) / n, j); });
  case MatrixFamily::Permutation:
    return matrix_families::Permutation(n, random);
  case MatrixFamily::Denormal: // 1e-10 so that no row is a zero row
    return Fill(n, [&](int i, int j) {
      return i == j ? 1e-10 : random.In(-1.0, 1.0) * (random.Chance(0.7) ? 1e-310 : 1e-12);
    });
  case MatrixFamily::SmallIntegers: // many equal figures of merit
    return Fill(n, [&](int, int) { return static_cast<double>(random.Below(5) - 2); });
  case MatrixFamily::RankOne:
    return Fill(n, [](int i, int j) { return (1.0 + i % 3) * (j % 2 == 0 ? 1.0 : -2.0); });
  case MatrixFamily::NotFinite:
    return matrix_families::NotFinite(n, random);
  case MatrixFamily::Random:
    break;
  }
  return Fill(n, [&](int, int) { return random.In(-1.0, 1.0); });
}

#endif
