// Solves systems of any doubles, and labels any graphs. The solver returns the bits of the
// textbook's method; the labels are those of the plainest search.

#include "FuzzInput.h"
#include "TextbookLu.h"
#include "gsl_DepthFirstSearch.h"
#include "gsl_LinearEqnLUDSolver.h"

#include <memory>
#include <vector>

namespace {

constexpr std::uint8_t kMostUnknowns = 40;
constexpr std::uint8_t kMostNodes = 90;

void Solve(FuzzInput& in) {
  const int n = in.Below(kMostUnknowns + 1);
  SquareMatrix own(n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j)
      own.At(i, j) = in.Left() > 0 ? in.Number() : (i == j ? 1.0 : 0.0);
  }
  SquareMatrix other(own);
  std::vector<double> b(static_cast<std::size_t>(n)), x(b.size(), 12345.0);
  for (double& number : b)
    number = in.Number();
  const std::vector<double> before = b;
  gsl_LinearEqnLUDSolver solver;
  solver.SetMatrix(own.Rows(), static_cast<unsigned int>(n));
  const bool solved = solver.Solve(b.data(), x.data());
  for (std::size_t k = 0; k < b.size(); ++k)
    Require(SameNumber(b[k], before[k]));
  if (n == 0) return;
  TextbookLu textbook(other.Rows(), n);
  Require(textbook.Decompose() == solved);
  for (int i = 0; i < n && solved; ++i) {
    for (int j = 0; j < n; ++j)
      Require(SameNumber(own.At(i, j), other.At(i, j)));
    Require(solver.Pivots()[i] == textbook.Pivots()[static_cast<std::size_t>(i)]);
  }
  if (solved) Require(solver.Parity() == textbook.Parity());
  std::vector<double> expected = before;
  if (solved) textbook.Substitute(expected.data());
  for (std::size_t k = 0; k < x.size(); ++k)
    Require(solved ? SameNumber(x[k], expected[k]) : x[k] == 12345.0);
}

/// Marks what a node reaches.
void Visit(const bool* adjacency, int n, int node, int label, std::vector<int>& labels) {
  std::vector<int> open = {node};
  while (!open.empty()) {
    const int at = open.back();
    open.pop_back();
    if (labels[static_cast<std::size_t>(at)] != -1) continue;
    labels[static_cast<std::size_t>(at)] = label;
    for (int next = 0; next < n; ++next) {
      if (adjacency[at * n + next]) open.push_back(next);
    }
  }
}

void Label(FuzzInput& in) {
  const int n = in.Below(kMostNodes + 1);
  const auto size = static_cast<std::size_t>(n);
  const std::unique_ptr<bool[]> adjacency(new bool[size * size + 1]());
  // Each byte is eight pairs. Hosts have edges in both directions; one is allowed.
  const bool isBothWays = in.Below(2) == 0;
  for (std::size_t k = 0; k < size * size; k += 8) {
    const std::uint8_t bits = in.Byte();
    for (std::size_t bit = 0; bit < 8 && k + bit < size * size; ++bit)
      adjacency[k + bit] = (bits >> bit & 1u) != 0;
  }
  for (std::size_t i = 0; i < size && isBothWays; ++i) {
    for (std::size_t j = 0; j < i; ++j)
      adjacency[i * size + j] = adjacency[j * size + i];
  }
  std::vector<int> labels(size, 7);
  int components = -5;
  gsl_DepthFirstSearch(adjacency.get(), n, labels.data(), components);
  std::vector<int> expected(size, -1);
  int count = 0;
  for (int node = 0; node < n; ++node) {
    if (expected[static_cast<std::size_t>(node)] != -1) continue;
    Visit(adjacency.get(), n, node, count++, expected);
  }
  Require(components == count);
  Require(labels == expected);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  FuzzInput in(bytes, count);
  if (in.Below(2) == 0) {
    Solve(in);
  } else {
    Label(in);
  }
  return 0;
}
