// Measures how one system is factored and solved. The peers are Eigen's PartialPivLU, compiled like
// the library and for this processor, OpenBLAS's dgesv on one thread, and the column-by-column form
// of the textbook. Each gets a fresh copy of the matrix and of the right side, of a system that it
// did not see before up to 16 unknowns.
//
// OpenBLAS chooses its kernel by the processor, and OPENBLAS_CORETYPE in the environment selects
// another kernel. GSL_BENCH_WIDTH=avx2 (or baseline) selects narrower vectors for our solver. The
// work is then called FactorAndSolve_avx2.

#include "EigenNative.h"
#include "RandomNumbers.h"
#include "TextbookLu.h"
#include "gsl_LinearEqnLUDSolver.h"
#include "wide/LuSubstitution.h"
#include "wide/gsl_LUDecomposition.h"

#include <Eigen/LU>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#if defined(BENCH_OPENBLAS)
extern "C" {
void dgesv_(const int* n, const int* nrhs, double* a, const int* lda, int* pivots, double* b,
            const int* ldb, int* info);
void openblas_set_num_threads(int threads);
}
#endif

namespace {

/// Small systems are many, because the choice of their pivots is what a branch predictor learns by
/// heart. Large systems fill the caches alone.
constexpr int kSmallSystems = 4096;
/// So few it learns.
constexpr int kLearnedSystems = 256;

/// Random systems of one size, which take turns.
class Problems {
public:
  const int n;

  explicit Problems(const benchmark::State& state, int smallSystems = kSmallSystems)
      : n(static_cast<int>(state.range(0))), m_systems(n <= 16 ? smallSystems : 1),
        m_elements(static_cast<std::size_t>(n) * static_cast<std::size_t>(n)) {
    RandomNumbers random(20240229);
    const std::size_t systems = static_cast<std::size_t>(m_systems);
    m_a.resize(systems * m_elements);
    m_b.resize(systems * static_cast<std::size_t>(n));
    std::generate(m_a.begin(), m_a.end(), [&] { return random.In(-1.0, 1.0); });
    std::generate(m_b.begin(), m_b.end(), [&] { return random.In(-1.0, 1.0); });
  }
  /// Goes on to the next system, and to the first after the last.
  void Next() { m_at = m_at + 1 == m_systems ? 0 : m_at + 1; }
  const double* Matrix() const { return m_a.data() + static_cast<std::size_t>(m_at) * m_elements; }
  const double* RightSide() const { return m_b.data() + static_cast<std::ptrdiff_t>(m_at) * n; }
  void CopyMatrix(double* to) const { std::copy(Matrix(), Matrix() + m_elements, to); }
  void CopyRightSide(double* to) const { std::copy(RightSide(), RightSide() + n, to); }

private:
  int m_systems;
  std::size_t m_elements;
  int m_at = 0;
  std::vector<double> m_a, m_b;
};

std::vector<double> Unknowns(const Problems& problems) {
  return std::vector<double>(static_cast<std::size_t>(problems.n));
}

void Ours(benchmark::State& state, int smallSystems) {
  Problems problems(state, smallSystems);
  std::vector<double> b = Unknowns(problems), x = b;
  SquareMatrix a(problems.n);
  gsl_LinearEqnLUDSolver solver;
  for (auto _ : state) {
    problems.CopyMatrix(&a.At(0, 0));
    problems.CopyRightSide(b.data());
    solver.SetMatrix(a.Rows(), static_cast<unsigned int>(problems.n));
    if (!solver.Solve(b.data(), x.data())) state.SkipWithError("singular");
    benchmark::DoNotOptimize(x.data());
    benchmark::ClobberMemory();
    problems.Next();
  }
}

/// Runs the steps of the class with kernels that the class would not choose.
void OursWith(benchmark::State& state, const gsl_WideKernels* kernels) {
  Problems problems(state);
  std::vector<double> b = Unknowns(problems), x = b;
  std::vector<std::int32_t> pivots(b.size());
  SquareMatrix a(problems.n);
  for (auto _ : state) {
    problems.CopyMatrix(&a.At(0, 0));
    problems.CopyRightSide(b.data());
    gsl_wide::LuSystem system = {a.Rows(), problems.n, pivots.data(), 1};
    if (problems.n <= gsl_wide::kLargestSmall) {
      gsl_LUSolveSmall(system, *kernels, b.data(), x.data());
    } else {
      x = b;
      gsl_LUDecompose(system, *kernels);
      gsl_wide::PermuteRightSide(system, x.data());
      gsl_wide::SubstituteForward(system, x.data());
      gsl_wide::SubstituteBackward(system, x.data());
    }
    benchmark::DoNotOptimize(x.data());
    benchmark::ClobberMemory();
    problems.Next();
  }
}

void Textbook(benchmark::State& state) {
  Problems problems(state);
  std::vector<double> x = Unknowns(problems);
  SquareMatrix a(problems.n);
  for (auto _ : state) {
    problems.CopyMatrix(&a.At(0, 0));
    TextbookLu textbook(a.Rows(), problems.n);
    if (!textbook.Decompose()) state.SkipWithError("singular");
    problems.CopyRightSide(x.data());
    textbook.Substitute(x.data());
    benchmark::DoNotOptimize(x.data());
    benchmark::ClobberMemory();
    problems.Next();
  }
}

void WithEigen(benchmark::State& state) {
  Problems problems(state);
  Eigen::MatrixXd a(problems.n, problems.n);
  Eigen::VectorXd b(problems.n), x(problems.n);
  for (auto _ : state) {
    problems.CopyMatrix(a.data());
    problems.CopyRightSide(b.data());
    const Eigen::PartialPivLU<Eigen::MatrixXd> lu(a);
    x = lu.solve(b);
    benchmark::DoNotOptimize(x.data());
    benchmark::ClobberMemory();
    problems.Next();
  }
}

void WithEigenNative(benchmark::State& state) {
  Problems problems(state);
  EigenNative eigen(problems.n);
  for (auto _ : state) {
    problems.CopyMatrix(eigen.Matrix());
    problems.CopyRightSide(eigen.RightSide());
    benchmark::DoNotOptimize(eigen.FactorAndSolve());
    benchmark::ClobberMemory();
    problems.Next();
  }
}

#if defined(BENCH_OPENBLAS)
void WithOpenBlas(benchmark::State& state) {
  openblas_set_num_threads(1);
  Problems problems(state);
  std::vector<double> a(Unknowns(problems).size() * Unknowns(problems).size());
  std::vector<double> x = Unknowns(problems);
  std::vector<int> pivots(x.size());
  const int one = 1;
  for (auto _ : state) {
    problems.CopyMatrix(a.data());
    problems.CopyRightSide(x.data());
    int info = 0;
    dgesv_(&problems.n, &one, a.data(), &problems.n, pivots.data(), x.data(), &problems.n, &info);
    if (info != 0) state.SkipWithError("singular");
    benchmark::DoNotOptimize(x.data());
    benchmark::ClobberMemory();
    problems.Next();
  }
}
#endif

template <class Run>
void Register(const std::string& name, Run run, int largest) {
  for (const int n : {3, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048}) {
    if (n > largest) continue;
    benchmark::RegisterBenchmark(name.c_str(), run)
        ->Arg(n)
        ->MinTime(n > 512 ? 0.3 : 0.05)
        ->Repetitions(9)
        ->ReportAggregatesOnly();
  }
}

void RegisterPeers(const std::string& work) {
  Register(work + "/Eigen", WithEigen, 2048);
  Register(work + "/Eigen_native", WithEigenNative, 2048);
#if defined(BENCH_OPENBLAS)
  Register(work + "/OpenBLAS", WithOpenBlas, 2048);
#endif
  Register(work + "/textbook", Textbook, 512);
}

bool RegisterAll() {
  const char* const width = std::getenv("GSL_BENCH_WIDTH");
  if (width == nullptr) {
    Register(
        "FactorAndSolve/ours", [](benchmark::State& s) { Ours(s, kSmallSystems); }, 2048);
    Register(
        "FactorAndSolve/learned", [](benchmark::State& s) { Ours(s, kLearnedSystems); }, 16);
    RegisterPeers("FactorAndSolve");
    return true;
  }
  const gsl_WideKernels* const kernels = gsl_FindWideKernels(
      std::string(width) == "avx2" ? gsl_VectorWidth::Avx2 : gsl_VectorWidth::Baseline);
  if (kernels == nullptr) {
    std::fprintf(stderr, "GSL_BENCH_WIDTH: this processor does not have %s\n", width);
    return false;
  }
  const std::string work = std::string("FactorAndSolve_") + width;
  Register(
      work + "/ours", [kernels](benchmark::State& state) { OursWith(state, kernels); }, 2048);
  RegisterPeers(work);
  return true;
}

const bool kRegistered = RegisterAll();

} // namespace
