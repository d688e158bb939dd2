#ifndef REFERENCE_TEXTBOOK_LU_H
#define REFERENCE_TEXTBOOK_LU_H

#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

/// Crout's method with implicit pivoting, as in the textbook, column after column. It is slow, and
/// the solver must agree with it bit for bit.
class TextbookLu {
public:
  TextbookLu(double** matrix, int size)
      : a(matrix), n(size), pivots(static_cast<std::size_t>(size)),
        scale(static_cast<std::size_t>(size)) {}

  std::vector<int> const& Pivots() const { return pivots; }
  int Parity() const { return parity; }

  bool Decompose() {
    for (int i = 0; i < n; ++i) {
      double big = 0.0;
      for (int j = 0; j < n; ++j) {
        if (std::fabs(a[i][j]) > big) big = std::fabs(a[i][j]);
      }
      if (1e-16 > big) return false;
      scale[Index(i)] = 1.0 / big;
    }
    for (int j = 0; j < n; ++j) {
      for (int i = 0; i < j; ++i)
        SubtractProducts(i, j, i);
      const int p = ReduceAndChoosePivot(j);
      if (p != j) {
        for (int k = 0; k < n; ++k)
          std::swap(a[p][k], a[j][k]);
        parity = -parity;
        scale[Index(p)] = scale[Index(j)];
      }
      pivots[Index(j)] = p;
      if (1e-16 > std::fabs(a[j][j])) a[j][j] = 1e-16;
      for (int i = j + 1; i < n; ++i)
        a[i][j] /= a[j][j];
    }
    return true;
  }

  void Substitute(double* x) const {
    for (int i = 0; i < n; ++i) {
      const int p = pivots[Index(i)];
      double sum = x[p];
      x[p] = x[i];
      for (int j = 0; j < i; ++j)
        sum -= a[i][j] * x[j];
      x[i] = sum;
    }
    for (int i = n - 1; i >= 0; --i) {
      double sum = x[i];
      for (int j = i + 1; j < n; ++j)
        sum -= a[i][j] * x[j];
      x[i] = sum / a[i][i];
    }
  }

private:
  double** a;
  int n;
  std::vector<int> pivots;
  std::vector<double> scale;
  int parity = 1;

  static std::size_t Index(int i) { return static_cast<std::size_t>(i); }

  void SubtractProducts(int i, int j, int terms) {
    double sum = a[i][j];
    for (int k = 0; k < terms; ++k)
      sum -= a[i][k] * a[k][j];
    a[i][j] = sum;
  }

  int ReduceAndChoosePivot(int j) {
    double best = 0.0;
    int p = j;
    for (int i = j; i < n; ++i) {
      SubtractProducts(i, j, j);
      const double merit = scale[Index(i)] * std::fabs(a[i][j]);
      if (merit >= best) {
        best = merit;
        p = i;
      }
    }
    return p;
  }
};

/// A square matrix that owns its rows, as a caller has it.
class SquareMatrix {
public:
  explicit SquareMatrix(int size) : n(size), data(Count(size) * Count(size)), rows(Count(size)) {
    Link();
  }
  SquareMatrix(const SquareMatrix& other) : n(other.n), data(other.data), rows(other.rows.size()) {
    Link();
  }
  SquareMatrix& operator=(const SquareMatrix&) = delete;

  int Size() const { return n; }
  double** Rows() { return rows.data(); }
  double& At(int i, int j) { return data[Count(i) * Count(n) + Count(j)]; }
  double At(int i, int j) const { return data[Count(i) * Count(n) + Count(j)]; }
  const std::vector<double>& Data() const { return data; }

private:
  int n;
  std::vector<double> data;
  std::vector<double*> rows;

  static std::size_t Count(int i) { return static_cast<std::size_t>(i); }
  void Link() {
    for (int i = 0; i < n; ++i)
      rows[Count(i)] = data.data() + Count(i) * Count(n);
  }
};

#endif
