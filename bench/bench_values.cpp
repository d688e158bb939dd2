// Measures vectors, points and transforms beside Eigen, which has the same operations on its own
// types, and beside bare numbers that keep their length as our vectors do.

#include "RandomNumbers.h"
#include "gsl_Matrix.h"
#include "gsl_Point.h"
#include "gsl_Vector.h"

#include <Eigen/Geometry>
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <vector>

namespace {

// A branch predictor learns a few hundred inputs by heart, and cannot learn so many.
constexpr std::size_t kCount = 4096;

std::vector<double> SomeNumbers() {
  RandomNumbers random(20240229);
  std::vector<double> numbers(3 * kCount);
  for (double& number : numbers)
    number = random.In(-10.0, 10.0);
  return numbers;
}

template <class T>
struct Corpus {
  std::vector<T> values = std::vector<T>(kCount);

  Corpus() {
    const std::vector<double> numbers = SomeNumbers();
    for (std::size_t i = 0; i < kCount; ++i)
      values[i] = T(numbers[3 * i], numbers[3 * i + 1], numbers[3 * i + 2]);
  }
  const T& At(std::size_t i) const { return values[i % kCount]; }
};

/// Runs `work` on each value and its successor in turn.
template <class T, class Work>
void OnPairs(benchmark::State& state, Work work) {
  const Corpus<T> corpus;
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(work(corpus.At(i), corpus.At(i + 1)));
    ++i;
  }
}

gsl_Matrix SomeTransform() {
  gsl_Matrix m;
  m.AxisRotation(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(1.0, -1.0, 2.0), 0.7);
  return m;
}

Eigen::Isometry3d SomeIsometry() {
  const Eigen::Vector3d p(1.0, 2.0, 3.0);
  return Eigen::Translation3d(p) *
         Eigen::AngleAxisd(0.7, Eigen::Vector3d(1.0, -1.0, 2.0).normalized()) *
         Eigen::Translation3d(-p);
}

template <class Work>
void Register(const char* name, Work work) {
  benchmark::RegisterBenchmark(name, work);
}

/// What a host would write by itself: components with their length.
struct Bare {
  double x, y, z, length;
  Bare() = default;
  Bare(double x0, double y0, double z0)
      : x(x0), y(y0), z(z0), length(std::sqrt(x0 * x0 + y0 * y0 + z0 * z0)) {}
};

void RegisterSums() {
  using V = gsl_Vector;
  Register("VectorAdd/ours", [](benchmark::State& s) {
    OnPairs<V>(s, [](const V& a, const V& b) { return a + b; });
  });
  Register("VectorAdd/bare", [](benchmark::State& s) {
    OnPairs<Bare>(
        s, [](const Bare& a, const Bare& b) { return Bare(a.x + b.x, a.y + b.y, a.z + b.z); });
  });
  Register("VectorScale/ours", [](benchmark::State& s) {
    OnPairs<V>(s, [](V a, const V& b) {
      a.Scale(b.x);
      return a;
    });
  });
  Register("VectorScale/bare", [](benchmark::State& s) {
    OnPairs<Bare>(s, [](Bare a, const Bare& b) {
      a.x *= b.x;
      a.y *= b.x;
      a.z *= b.x;
      a.length *= std::fabs(b.x);
      return a;
    });
  });
  Register("VectorCrossAndLength/bare", [](benchmark::State& s) {
    OnPairs<Bare>(s, [](const Bare& a, const Bare& b) {
      return Bare(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
    });
  });
}

void RegisterVectors() {
  using V = gsl_Vector;
  using E = Eigen::Vector3d;
  Register("VectorDot/ours", [](benchmark::State& s) {
    OnPairs<V>(s, [](const V& a, const V& b) { return a.DotProduct(b); });
  });
  Register("VectorDot/Eigen", [](benchmark::State& s) {
    OnPairs<E>(s, [](const E& a, const E& b) { return a.dot(b); });
  });
  Register("VectorCrossAndLength/ours", [](benchmark::State& s) {
    OnPairs<V>(s, [](const V& a, const V& b) { return a.CrossProduct(b); });
  });
  Register("VectorCrossAndLength/Eigen", [](benchmark::State& s) {
    OnPairs<E>(s, [](const E& a, const E& b) {
      const E c = a.cross(b);
      return Eigen::Vector4d(c.x(), c.y(), c.z(), c.norm());
    });
  });
  Register("VectorNormalize/ours", [](benchmark::State& s) {
    OnPairs<V>(s, [](V a, const V&) {
      a.Normalize();
      return a;
    });
  });
  Register("VectorNormalize/Eigen", [](benchmark::State& s) {
    OnPairs<E>(s, [](E a, const E&) {
      a.normalize();
      return a;
    });
  });
}

void RegisterPoints() {
  using P = gsl_Point;
  using E = Eigen::Vector3d;
  Register("PointDistance/ours", [](benchmark::State& s) {
    OnPairs<P>(s, [](const P& a, const P& b) { return a.GetDistance(b); });
  });
  Register("PointDistance/Eigen", [](benchmark::State& s) {
    OnPairs<E>(s, [](const E& a, const E& b) { return (a - b).norm(); });
  });
}

void RegisterTransforms() {
  using P = gsl_Point;
  using E = Eigen::Vector3d;
  Register("TransformPoint/ours", [](benchmark::State& s) {
    const gsl_Matrix m = SomeTransform();
    OnPairs<P>(s, [&](P a, const P&) {
      m.Transform(a);
      return a.x + a.y + a.z;
    });
  });
  Register("TransformPoint/Eigen", [](benchmark::State& s) {
    const Eigen::Isometry3d m = SomeIsometry();
    OnPairs<E>(s, [&](const E& a, const E&) {
      const E moved = m * a;
      return moved.x() + moved.y() + moved.z();
    });
  });
  Register("TransformConcatenate/ours", [](benchmark::State& s) {
    gsl_Matrix product;
    const gsl_Matrix m = SomeTransform();
    for (auto _ : s) {
      product.Concatenate(m);
      benchmark::DoNotOptimize(product);
    }
  });
  Register("TransformConcatenate/Eigen", [](benchmark::State& s) {
    Eigen::Matrix4d product = Eigen::Matrix4d::Identity();
    const Eigen::Matrix4d m = SomeIsometry().matrix();
    for (auto _ : s) {
      product = m * product;
      benchmark::DoNotOptimize(product);
    }
  });
  Register("TransformInverse/ours", [](benchmark::State& s) {
    gsl_Matrix m = SomeTransform();
    for (auto _ : s) {
      benchmark::DoNotOptimize(m);
      benchmark::DoNotOptimize(m.InverseRigidTransform());
    }
  });
  Register("TransformInverse/Eigen", [](benchmark::State& s) {
    Eigen::Isometry3d m = SomeIsometry();
    for (auto _ : s) {
      benchmark::DoNotOptimize(m);
      benchmark::DoNotOptimize(Eigen::Isometry3d(m.inverse(Eigen::Isometry)));
    }
  });
}

const bool registered = [] {
  RegisterSums();
  RegisterVectors();
  RegisterPoints();
  RegisterTransforms();
  return true;
}();

} // namespace
