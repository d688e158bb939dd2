#include "gsl_Matrix.h"
#include "gsl_Plane.h"
#include "gsl_Point.h"
#include "gsl_Vector.h"
#include "gsl_utils.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

/// Measures operations without an equal in another library, one per iteration, on changing inputs.
/// bench_values.cpp measures the others beside a peer.

namespace {

constexpr std::size_t kInputs = 1024;

double Uniform() {
  static std::uint64_t state = 42;
  state = state * 6364136223846793005ull + 1442695040888963407ull;
  return static_cast<double>(state >> 11) * 0x1p-52 - 1.0;
}

struct Inputs {
  std::vector<gsl_Vector> vectors;
  std::vector<gsl_Point> points;
  std::vector<double> numbers;

  Inputs() {
    for (std::size_t i = 0; i < kInputs; ++i) {
      const double x = Uniform(), y = Uniform(), z = Uniform();
      vectors.emplace_back(x, y, z);
      points.emplace_back(10.0 * z, 10.0 * x, 10.0 * y);
      numbers.push_back(x);
    }
  }
};

const Inputs& In() {
  static const Inputs inputs;
  return inputs;
}

/// Times operation(i, next). The index i runs over the inputs again and again.
template <class Operation>
void Run(benchmark::State& state, const Operation& operation) {
  In();
  std::size_t i = 0;
  for (auto _ : state) {
    const std::size_t next = (i + 1) % kInputs;
    auto result = operation(i, next);
    benchmark::DoNotOptimize(result);
    i = next;
  }
}

const gsl_Vector& V(std::size_t i) {
  return In().vectors[i];
}

const gsl_Point& P(std::size_t i) {
  return In().points[i];
}

gsl_Matrix Turn() {
  gsl_Matrix m;
  m.AxisRotation(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(1.0, 1.0, 0.5), 0.7);
  return m;
}

// ---- comparison

void RealArrEqual16(benchmark::State& state) {
  Run(state, [](std::size_t i, std::size_t) {
    const double* const a = In().numbers.data() + i % (kInputs - 16);
    return gsl_RealArrEqual(16, a, a, 1e-6);
  });
}
BENCHMARK(RealArrEqual16);

void RoundFloat(benchmark::State& state) {
  Run(state, [](std::size_t i, std::size_t) { return gsl_RoundFloat(In().numbers[i], 6); });
}
BENCHMARK(RoundFloat);

void Truncate(benchmark::State& state) {
  Run(state, [](std::size_t i, std::size_t) { return gsl_Truncate(In().numbers[i], 3); });
}
BENCHMARK(Truncate);

// ---- vector

void VectorAdd(benchmark::State& state) {
  Run(state, [](std::size_t i, std::size_t j) { return V(i) + V(j); });
}
BENCHMARK(VectorAdd);

void VectorEqual(benchmark::State& state) {
  Run(state, [](std::size_t i, std::size_t j) { return V(i) == V(j); });
}
BENCHMARK(VectorEqual);

void VectorIsOn(benchmark::State& state) {
  Run(state, [](std::size_t i, std::size_t j) { return V(i).IsOn(V(j)); });
}
BENCHMARK(VectorIsOn);

void VectorIsParallel(benchmark::State& state) {
  Run(state, [](std::size_t i, std::size_t j) { return V(i).IsParallel(V(j), 1e-5); });
}
BENCHMARK(VectorIsParallel);

void VectorNormalOfThreePoints(benchmark::State& state) {
  Run(state, [](std::size_t i, std::size_t j) { return gsl_Vector(P(i), P(j), P(0)); });
}
BENCHMARK(VectorNormalOfThreePoints);

void VectorBestAlignedOrthogonalUnit(benchmark::State& state) {
  Run(state, [](std::size_t i, std::size_t) { return V(i).BestAlignedOrthogonalUnit(); });
}
BENCHMARK(VectorBestAlignedOrthogonalUnit);

// ---- point

void PointConstruct(benchmark::State& state) {
  Run(state, [](std::size_t i, std::size_t) { return gsl_Point(In().numbers[i], 1.0, 2.0); });
}
BENCHMARK(PointConstruct);

void PointCopy(benchmark::State& state) {
  Run(state, [](std::size_t i, std::size_t) { return gsl_Point(P(i)); });
}
BENCHMARK(PointCopy);

void PointDistanceToTriangle(benchmark::State& state) {
  Run(state, [](std::size_t i, std::size_t) { return P(i).GetDistance(P(0), P(1), P(2)); });
}
BENCHMARK(PointDistanceToTriangle);

void PointProjectOnTriangle(benchmark::State& state) {
  gsl_Point foot;
  double weights[3];
  Run(state,
      [&](std::size_t i, std::size_t) { return P(i).ProjectOn(P(0), P(1), P(2), foot, weights); });
}
BENCHMARK(PointProjectOnTriangle);

void PointRayIntersectPlane(benchmark::State& state) {
  const gsl_Plane plane(P(0), V(1));
  gsl_Point out;
  Run(state, [&](std::size_t i, std::size_t) { return P(i).RayIntersect(V(i), plane, out); });
}
BENCHMARK(PointRayIntersectPlane);

// ---- transform

void MatrixTransformVector(benchmark::State& state) {
  const gsl_Matrix m = Turn();
  Run(state, [&](std::size_t i, std::size_t) {
    gsl_Vector v(V(i));
    m.Transform(v);
    return v;
  });
}
BENCHMARK(MatrixTransformVector);

void MatrixEqual(benchmark::State& state) {
  const gsl_Matrix a = Turn(), b = Turn();
  Run(state, [&](std::size_t, std::size_t) { return a == b; });
}
BENCHMARK(MatrixEqual);

void MatrixIsIdentityKnown(benchmark::State& state) {
  const gsl_Matrix m;
  Run(state, [&](std::size_t, std::size_t) { return m.IsIdentity(); });
}
BENCHMARK(MatrixIsIdentityKnown);

void MatrixIsIdentityComputed(benchmark::State& state) {
  gsl_Matrix m;
  Run(state, [&](std::size_t, std::size_t) {
    m.isIdentity = -1;
    return m.IsIdentity();
  });
}
BENCHMARK(MatrixIsIdentityComputed);

void MatrixGetAxisRotation(benchmark::State& state) {
  const gsl_Matrix m = Turn();
  gsl_Point p;
  gsl_Vector axis;
  double angle = 0.0;
  Run(state, [&](std::size_t, std::size_t) {
    m.GetAxisRotation(p, axis, angle);
    return angle;
  });
}
BENCHMARK(MatrixGetAxisRotation);

// ---- settings

void SettingsInstance(benchmark::State& state) {
  for (auto _ : state) {
    double tolerance = omi_Singleton<gsl_Util>::Instance().linearTolerance;
    benchmark::DoNotOptimize(tolerance);
  }
}
BENCHMARK(SettingsInstance);

} // namespace
