// Measures vectors, points and transforms beside Eigen, glm and Bullet, which have the same
// operations on their own types, and beside bare numbers that keep their length as our vectors do.

#include "EigenResults.h"
#include "FreshData.h"
#include "SmallPeers.h"
#include "gsl_Matrix.h"
#include "gsl_Point.h"
#include "gsl_Vector.h"

#include <Eigen/Geometry>
#include <benchmark/benchmark.h>

#include <cmath>

namespace {

using namespace fresh_data;

Eigen::Isometry3d SomeIsometry() {
  const gsl_Matrix m = SomeTransform();
  Eigen::Isometry3d isometry;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c)
      isometry(r, c) = m.m[r][c];
  }
  return isometry;
}

/// What a host would write by itself: components with their length.
struct Bare {
  double x, y, z, magnitude;
  Bare(double x0, double y0, double z0)
      : x(x0), y(y0), z(z0), magnitude(std::sqrt(x0 * x0 + y0 * y0 + z0 * z0)) {}
};

} // namespace

template <>
struct agreement::NumbersOf<Bare> {
  static void Append(std::vector<double>& out, const Bare& v) {
    out.insert(out.end(), {v.x, v.y, v.z, v.magnitude});
  }
};

namespace {

using V = gsl_Vector;
using E = Eigen::Vector3d;

/// The length is beside the components, as ours is.
Eigen::Vector4d WithLength(const E& v) {
  return {v.x(), v.y(), v.z(), v.norm()};
}

void RegisterSums() {
  AddRow("VectorAdd/ours", [](benchmark::State& s) {
    OnPairs(s, Triples<V>(), [](const V& a, const V& b) { return a + b; });
  });
  AddRow("VectorAdd/bare", [](benchmark::State& s) {
    OnPairs(s, Triples<Bare>(),
            [](const Bare& a, const Bare& b) { return Bare(a.x + b.x, a.y + b.y, a.z + b.z); });
  });
  AddRow("VectorAdd/Eigen", [](benchmark::State& s) {
    OnPairs(s, Triples<E>(), [](const E& a, const E& b) { return WithLength(a + b); });
  });
  AddRow("VectorScale/ours", [](benchmark::State& s) {
    OnPairs(s, Triples<V>(), [](V a, const V& b) {
      a.Scale(b.x);
      return a;
    });
  });
  AddRow("VectorScale/bare", [](benchmark::State& s) {
    OnPairs(s, Triples<Bare>(), [](Bare a, const Bare& b) {
      a.x *= b.x;
      a.y *= b.x;
      a.z *= b.x;
      a.magnitude *= std::fabs(b.x);
      return a;
    });
  });
}

void RegisterProducts() {
  AddRow("VectorDot/ours", [](benchmark::State& s) {
    OnPairs(s, Triples<V>(), [](const V& a, const V& b) { return a.DotProduct(b); });
  });
  AddRow("VectorDot/bare", [](benchmark::State& s) {
    OnPairs(s, Triples<Bare>(),
            [](const Bare& a, const Bare& b) { return a.x * b.x + a.y * b.y + a.z * b.z; });
  });
  AddRow("VectorDot/Eigen", [](benchmark::State& s) {
    OnPairs(s, Triples<E>(), [](const E& a, const E& b) { return a.dot(b); });
  });
  AddRow("VectorCrossAndLength/ours", [](benchmark::State& s) {
    OnPairs(s, Triples<V>(), [](const V& a, const V& b) { return a.CrossProduct(b); });
  });
  AddRow("VectorCrossAndLength/bare", [](benchmark::State& s) {
    OnPairs(s, Triples<Bare>(), [](const Bare& a, const Bare& b) {
      return Bare(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
    });
  });
  AddRow("VectorCrossAndLength/Eigen", [](benchmark::State& s) {
    OnPairs(s, Triples<E>(), [](const E& a, const E& b) { return WithLength(a.cross(b)); });
  });
  AddRow("VectorNormalize/ours", [](benchmark::State& s) {
    OnPairs(s, Triples<V>(), [](V a, const V&) {
      a.Normalize();
      return a;
    });
  });
  AddRow("VectorNormalize/Eigen", [](benchmark::State& s) {
    OnPairs(s, Triples<E>(), [](E a, const E&) {
      a.normalize();
      return a;
    });
  });
}

void RegisterPoints() {
  using P = gsl_Point;
  AddRow("PointDistance/ours", [](benchmark::State& s) {
    OnPairs(s, Triples<P>(), [](const P& a, const P& b) { return a.GetDistance(b); });
  });
  AddRow("PointDistance/Eigen", [](benchmark::State& s) {
    OnPairs(s, Triples<E>(), [](const E& a, const E& b) { return (a - b).norm(); });
  });
  AddRow("TransformPoint/ours", [](benchmark::State& s) {
    const gsl_Matrix m = SomeTransform();
    OnEach(s, Triples<P>(), [&](P a) {
      m.Transform(a);
      return a.x + a.y + a.z;
    });
  });
  AddRow("TransformPoint/Eigen", [](benchmark::State& s) {
    const Eigen::Isometry3d m = SomeIsometry();
    OnEach(s, Triples<E>(), [&](const E& a) {
      const E moved = m * a;
      return moved.x() + moved.y() + moved.z();
    });
  });
}

/// Measures products with a transform, one after the other.
template <class Matrix, class Multiply>
void OnProducts(benchmark::State& state, Matrix product, Multiply multiply) {
  for (int k = 0; k < 3; ++k)
    multiply(product);
  if (!agreement::IsAgreed(state, product)) return;
  for (auto _ : state) {
    multiply(product);
    benchmark::DoNotOptimize(product);
  }
}

void RegisterTransforms() {
  AddRow("TransformConcatenate/ours", [](benchmark::State& s) {
    OnProducts(s, gsl_Matrix(),
               [m = SomeTransform()](gsl_Matrix& product) { product.Concatenate(m); });
  });
  AddRow("TransformConcatenate/Eigen", [](benchmark::State& s) {
    const Eigen::Matrix4d identity = Eigen::Matrix4d::Identity();
    const Eigen::Matrix4d m = SomeIsometry().matrix();
    OnProducts(s, identity, [m](Eigen::Matrix4d& product) { product = m * product; });
  });
  AddRow("TransformInverse/ours", [](benchmark::State& s) {
    gsl_Matrix m = SomeTransform();
    if (!agreement::IsAgreed(s, m.InverseRigidTransform())) return;
    for (auto _ : s) {
      benchmark::DoNotOptimize(m);
      benchmark::DoNotOptimize(m.InverseRigidTransform());
    }
  });
  AddRow("TransformInverse/Eigen", [](benchmark::State& s) {
    Eigen::Isometry3d m = SomeIsometry();
    if (!agreement::IsAgreed(s, Eigen::Isometry3d(m.inverse(Eigen::Isometry)))) return;
    for (auto _ : s) {
      benchmark::DoNotOptimize(m);
      benchmark::DoNotOptimize(Eigen::Isometry3d(m.inverse(Eigen::Isometry)));
    }
  });
}

const bool registered = [] {
  RegisterSums();
  RegisterProducts();
  RegisterPoints();
  RegisterTransforms();
  RegisterValuesOfGlm();
  RegisterValuesOfBullet();
  return true;
}();

} // namespace
