// Vectors, transforms, boxes and nearest points in Bullet, with its types of double precision. Its
// distance of two segments is left out: it clamps one side only, and so misses the least distance
// of some pairs.

#include "SmallPeers.h"

#if defined(BENCH_BULLET)

#include "FreshData.h"

#include <BulletCollision/Gimpact/btClipPolygon.h>
#include <BulletCollision/Gimpact/btGeometryOperations.h>
#include <BulletCollision/NarrowPhaseCollision/btVoronoiSimplexSolver.h>
#include <LinearMath/btAabbUtil2.h>
#include <LinearMath/btTransform.h>
#include <LinearMath/btVector3.h>

#include <limits>
#include <type_traits>

static_assert(std::is_same_v<btScalar, double>, "the other libraries compute in double precision");

namespace {

struct Box {
  btVector3 min, max;
};

} // namespace

namespace agreement {

/// Only rows that keep a length have one in the fourth number.
template <>
struct NumbersOf<btVector3> {
  static void Append(std::vector<double>& out, const btVector3& v) {
    out.insert(out.end(), {v.x(), v.y(), v.z()});
  }
};

template <>
struct NumbersOf<btVector4> {
  static void Append(std::vector<double>& out, const btVector4& v) {
    out.insert(out.end(), {v.x(), v.y(), v.z(), v.w()});
  }
};

template <>
struct NumbersOf<btTransform> {
  static void Append(std::vector<double>& out, const btTransform& m) {
    for (int r = 0; r < 3; ++r) {
      NumbersOf<btVector3>::Append(out, m.getBasis()[r]);
      out.push_back(m.getOrigin()[r]);
    }
  }
};

template <>
struct NumbersOf<Box> {
  static void Append(std::vector<double>& out, const Box& box) {
    NumbersOf<btVector3>::Append(out, box.min);
    NumbersOf<btVector3>::Append(out, box.max);
  }
};

} // namespace agreement

namespace {

using namespace fresh_data;
using V = btVector3;

V BulletOf(const gsl_Point& p) {
  return {p.x, p.y, p.z};
}

V BulletOf(const gsl_Vector& v) {
  return {v.x, v.y, v.z};
}

btTransform BulletTransform() {
  const gsl_Matrix ours = SomeTransform();
  btTransform m;
  for (int r = 0; r < 3; ++r) {
    m.getBasis()[r].setValue(ours.m[r][0], ours.m[r][1], ours.m[r][2]);
    m.getOrigin()[r] = ours.m[r][3];
  }
  return m;
}

/// The length is beside the components, as ours is.
btVector4 WithLength(const V& v) {
  return {v.x(), v.y(), v.z(), v.length()};
}

void RegisterVectors() {
  AddRow("VectorAdd/Bullet", [](benchmark::State& s) {
    OnPairs(s, Triples<V>(), [](const V& a, const V& b) { return WithLength(a + b); });
  });
  AddRow("VectorScale/Bullet", [](benchmark::State& s) {
    const auto any = [](Numbers& n) { return WithLength(BulletOf(n.Point(10.0))); };
    OnPairs(s, Corpus<btVector4>(20240229, any), [](const btVector4& a, const btVector4& b) {
      const V scaled = a * b.x();
      return btVector4(scaled.x(), scaled.y(), scaled.z(), a.w() * btFabs(b.x()));
    });
  });
  AddRow("VectorDot/Bullet", [](benchmark::State& s) {
    OnPairs(s, Triples<V>(), [](const V& a, const V& b) { return a.dot(b); });
  });
  AddRow("VectorCrossAndLength/Bullet", [](benchmark::State& s) {
    OnPairs(s, Triples<V>(), [](const V& a, const V& b) { return WithLength(a.cross(b)); });
  });
  AddRow("VectorNormalize/Bullet", [](benchmark::State& s) {
    OnPairs(s, Triples<V>(), [](const V& a, const V&) { return a.normalized(); });
  });
  AddRow("PointDistance/Bullet", [](benchmark::State& s) {
    OnPairs(s, Triples<V>(), [](const V& a, const V& b) { return a.distance(b); });
  });
}

void RegisterTransforms() {
  AddRow("TransformPoint/Bullet", [](benchmark::State& s) {
    const btTransform m = BulletTransform();
    OnEach(s, Triples<V>(), [&](const V& a) {
      const V moved = m * a;
      return moved.x() + moved.y() + moved.z();
    });
  });
  AddRow("TransformConcatenate/Bullet", [](benchmark::State& s) {
    const btTransform m = BulletTransform();
    btTransform product = btTransform::getIdentity();
    for (int k = 0; k < 3; ++k)
      product = m * product;
    if (!agreement::IsAgreed(s, product)) return;
    for (auto _ : s) {
      product = m * product;
      benchmark::DoNotOptimize(product);
    }
  });
  AddRow("TransformInverse/Bullet", [](benchmark::State& s) {
    btTransform m = BulletTransform();
    if (!agreement::IsAgreed(s, m.inverse())) return;
    for (auto _ : s) {
      benchmark::DoNotOptimize(m);
      benchmark::DoNotOptimize(m.inverse());
    }
  });
}

/// Bullet's plane: a unit normal, and its product with every point of the plane.
btVector4 BulletPlane() {
  const V n = BulletOf(PlaneNormal());
  btVector4 plane(n.x(), n.y(), n.z(), n.dot(BulletOf(PlanePoint())));
  benchmark::DoNotOptimize(plane);
  return plane;
}

void RegisterPlanes() {
  AddRow("PointPlaneDistance/Bullet", [](benchmark::State& s) {
    const btVector4 plane = BulletPlane();
    OnEach(s, Corpus<V>(9, [](Numbers& n) { return BulletOf(n.Point(5.0)); }),
           [&](const V& p) { return btFabs(bt_distance_point_plane(plane, p)); });
  });
  struct In {
    V on, direction;
  };
  const auto any = [](Numbers& n) {
    const LineInput line = AnyLineInput(n);
    return In{BulletOf(line.on), BulletOf(line.direction)};
  };
  AddRow("LinePlaneIntersection/Bullet", [any](benchmark::State& s) {
    const btVector4 plane = BulletPlane();
    V out;
    double t = 0.0;
    constexpr double kFar = std::numeric_limits<double>::infinity();
    OnEach(s, Corpus<In>(1, any), [&](const In& in) {
      const int side = bt_line_plane_collision(plane, in.direction, in.on, out, t, -kFar, kFar);
      benchmark::DoNotOptimize(out);
      return side != 0 ? out.x() : 0.0;
    });
  });
}

void RegisterNearest() {
  const auto convert = [](const gsl_Point& p) { return BulletOf(p); };
  AddRow("PointSegmentDistance/Bullet", [convert](benchmark::State& s) {
    OnEach(s, PeerCorpus<V, 3>(2, convert), [](const std::array<V, 3>& p) {
      V closest;
      bt_closest_point_on_segment(closest, p[0], p[1], p[2]);
      benchmark::DoNotOptimize(closest);
      return p[0].distance(closest);
    });
  });
  AddRow("PointTriangleDistance/Bullet", [convert](benchmark::State& s) {
    btVoronoiSimplexSolver solver;
    btSubSimplexClosestResult result;
    OnEach(s, PeerCorpus<V, 4>(1, convert), [&](const std::array<V, 4>& p) {
      solver.closestPtPointTriangle(p[0], p[1], p[2], p[3], result);
      return p[0].distance(result.m_closestPointOnSimplex);
    });
  });
}

std::vector<Box> Boxes() {
  std::vector<Box> boxes;
  for (const Points<2>& corners : BoxCorners()) {
    Box box = {BulletOf(corners[0]), BulletOf(corners[0])};
    box.min.setMin(BulletOf(corners[1]));
    box.max.setMax(BulletOf(corners[1]));
    boxes.push_back(box);
  }
  return boxes;
}

Box Around(const std::vector<V>& points) {
  Box box = {points.front(), points.front()};
  for (const V& p : points) {
    box.min.setMin(p);
    box.max.setMax(p);
  }
  return box;
}

} // namespace

void RegisterValuesOfBullet() {
  RegisterVectors();
  RegisterTransforms();
}

void RegisterLinesOfBullet() {
  RegisterPlanes();
  struct In {
    V p, on, direction;
  };
  const auto any = [](Numbers& n) {
    const PointAndLineInput in = AnyPointAndLineInput(n);
    return In{BulletOf(in.p), BulletOf(in.line.on), BulletOf(in.line.direction)};
  };
  AddRow("PointLineDistance/Bullet", [any](benchmark::State& s) {
    OnEach(s, Corpus<In>(8, any), [](const In& in) {
      return (in.p - in.on).cross(in.direction).length() / in.direction.length();
    });
  });
}

void RegisterQueriesOfBullet() {
  RegisterNearest();
  AddRow("RotationAboutAxis/Bullet", [](benchmark::State& s) {
    OnEach(s, Corpus<Turn>(6, AnyTurn), [](const Turn& turn) {
      const V p = BulletOf(turn.p);
      btTransform m(btQuaternion(BulletOf(turn.axis), turn.angle));
      m.setOrigin(p - m.getBasis() * p);
      return m;
    });
  });
}

void RegisterBoxesOfBullet() {
  AddRow("BoxAddPoints/Bullet", [](benchmark::State& s) {
    const std::vector<V> points = Triples<V>();
    if (!agreement::IsAgreed(s, Around(points))) return;
    for (auto _ : s)
      benchmark::DoNotOptimize(Around(points));
  });
  AddRow("BoxIntersect/Bullet", [](benchmark::State& s) {
    OnPairs(s, Boxes(), [](const Box& a, const Box& b) {
      return TestAabbAgainstAabb2(a.min, a.max, b.min, b.max);
    });
  });
  AddRow("BoxTransform/Bullet", [](benchmark::State& s) {
    const btTransform m = BulletTransform();
    OnEach(s, Boxes(), [&](const Box& source) {
      Box box;
      btTransformAabb(source.min, source.max, 0.0, m, box.min, box.max);
      return box;
    });
  });
}

#else

void RegisterValuesOfBullet() {}
void RegisterLinesOfBullet() {}
void RegisterQueriesOfBullet() {}
void RegisterBoxesOfBullet() {}

#endif
