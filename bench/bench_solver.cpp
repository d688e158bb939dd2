// Measures how one system is factored and solved. The peers are Eigen's PartialPivLU, compiled like
// the library and for this processor, OpenBLAS's dgesv on one thread, and the column-by-column form
// of the textbook. Each gets a fresh copy of the matrix.
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

struct Problem {
  int n;
  std::vector<double> a;
  std::vector<double> b;

  explicit Problem(const benchmark::State& state) : n(static_cast<int>(state.range(0))) {
    RandomNumbers random(20240229);
    const std::size_t size = static_cast<std::size_t>(n);
    a.resize(size * size);
    b.resize(size);
    std::generate(a.begin(), a.end(), [&] { return random.In(-1.0, 1.0); });
    std::generate(b.begin(), b.end(), [&] { return random.In(-1.0, 1.0); });
  }
};

void Ours(benchmark::State& state) {
  const Problem problem(state);
  std::vector<double> b = problem.b;
  std::vector<double> x = problem.b;
  SquareMatrix a(problem.n);
  gsl_LinearEqnLUDSolver solver;
  for (auto _ : state) {
    std::copy(problem.a.begin(), problem.a.end(), &a.At(0, 0));
    solver.SetMatrix(a.Rows(), static_cast<unsigned int>(problem.n));
    if (!solver.Solve(b.data(), x.data())) state.SkipWithError("singular");
    benchmark::DoNotOptimize(x.data());
    benchmark::ClobberMemory();
  }
}

/// Runs the steps of the class with kernels that the class would not choose.
void OursWith(benchmark::State& state, const gsl_WideKernels* kernels) {
  const Problem problem(state);
  std::vector<double> x = problem.b;
  std::vector<std::int32_t> pivots(problem.b.size());
  SquareMatrix a(problem.n);
  for (auto _ : state) {
    std::copy(problem.a.begin(), problem.a.end(), &a.At(0, 0));
    x = problem.b;
    gsl_wide::LuSystem system = {a.Rows(), problem.n, pivots.data(), 1};
    if (gsl_LUDecompose(system, *kernels) != gsl_wide::LuResult::Decomposed)
      state.SkipWithError("singular");
    gsl_wide::PermuteRightSide(system, x.data());
    gsl_wide::SubstituteForward(system, x.data());
    gsl_wide::SubstituteBackward(system, x.data());
    benchmark::DoNotOptimize(x.data());
    benchmark::ClobberMemory();
  }
}

void Textbook(benchmark::State& state) {
  const Problem problem(state);
  std::vector<double> x = problem.b;
  SquareMatrix a(problem.n);
  for (auto _ : state) {
    std::copy(problem.a.begin(), problem.a.end(), &a.At(0, 0));
    TextbookLu textbook(a.Rows(), problem.n);
    if (!textbook.Decompose()) state.SkipWithError("singular");
    x = problem.b;
    textbook.Substitute(x.data());
    benchmark::DoNotOptimize(x.data());
    benchmark::ClobberMemory();
  }
}

void WithEigen(benchmark::State& state) {
  const Problem problem(state);
  const Eigen::MatrixXd a =
      Eigen::Map<const Eigen::MatrixXd>(problem.a.data(), problem.n, problem.n);
  const Eigen::VectorXd b = Eigen::Map<const Eigen::VectorXd>(problem.b.data(), problem.n);
  Eigen::VectorXd x(problem.n);
  for (auto _ : state) {
    const Eigen::PartialPivLU<Eigen::MatrixXd> lu(a);
    x = lu.solve(b);
    benchmark::DoNotOptimize(x.data());
    benchmark::ClobberMemory();
  }
}

void WithEigenNative(benchmark::State& state) {
  const Problem problem(state);
  EigenNative eigen(problem.n, problem.a.data(), problem.b.data());
  for (auto _ : state) {
    benchmark::DoNotOptimize(eigen.FactorAndSolve());
    benchmark::ClobberMemory();
  }
}

#if defined(BENCH_OPENBLAS)
void WithOpenBlas(benchmark::State& state) {
  openblas_set_num_threads(1);
  const Problem problem(state);
  std::vector<double> a = problem.a;
  std::vector<double> x = problem.b;
  std::vector<int> pivots(x.size());
  const int one = 1;
  for (auto _ : state) {
    std::copy(problem.a.begin(), problem.a.end(), a.begin());
    std::copy(problem.b.begin(), problem.b.end(), x.begin());
    int info = 0;
    dgesv_(&problem.n, &one, a.data(), &problem.n, pivots.data(), x.data(), &problem.n, &info);
    if (info != 0) state.SkipWithError("singular");
    benchmark::DoNotOptimize(x.data());
    benchmark::ClobberMemory();
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
    Register("FactorAndSolve/ours", Ours, 2048);
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
