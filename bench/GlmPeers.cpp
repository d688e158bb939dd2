// Vectors, transforms, boxes and the nearest point of a segment in glm, with its types of double
// precision.

#include "SmallPeers.h"

#if defined(BENCH_GLM)

#include "FreshData.h"

#define GLM_ENABLE_EXPERIMENTAL
#include <glm/glm.hpp>
#include <glm/gtc/matrix_inverse.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtx/closest_point.hpp>

namespace {

/// The corners of a box; glm has no box.
struct Box {
  glm::dvec3 min, max;
};

} // namespace

namespace agreement {

template <>
struct NumbersOf<glm::dvec3> {
  static void Append(std::vector<double>& out, const glm::dvec3& v) {
    out.insert(out.end(), {v.x, v.y, v.z});
  }
};

template <>
struct NumbersOf<glm::dvec4> {
  static void Append(std::vector<double>& out, const glm::dvec4& v) {
    out.insert(out.end(), {v.x, v.y, v.z, v.w});
  }
};

template <>
struct NumbersOf<glm::dmat4> {
  static void Append(std::vector<double>& out, const glm::dmat4& m) {
    for (int r = 0; r < 3; ++r) {
      for (int c = 0; c < 4; ++c)
        out.push_back(m[c][r]);
    }
  }
};

template <>
struct NumbersOf<Box> {
  static void Append(std::vector<double>& out, const Box& box) {
    NumbersOf<glm::dvec3>::Append(out, box.min);
    NumbersOf<glm::dvec3>::Append(out, box.max);
  }
};

} // namespace agreement

namespace {

using namespace fresh_data;
using V = glm::dvec3;

V GlmOf(const gsl_Point& p) {
  return {p.x, p.y, p.z};
}

V GlmOf(const gsl_Vector& v) {
  return {v.x, v.y, v.z};
}

glm::dmat4 GlmTransform() {
  const gsl_Matrix ours = SomeTransform();
  glm::dmat4 m;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c)
      m[c][r] = ours.m[r][c];
  }
  return m;
}

/// The length is beside the components, as ours is.
glm::dvec4 WithLength(const V& v) {
  return {v, glm::length(v)};
}

void RegisterVectors() {
  AddRow("VectorAdd/glm", [](benchmark::State& s) {
    OnPairs(s, Triples<V>(), [](const V& a, const V& b) { return WithLength(a + b); });
  });
  AddRow("VectorScale/glm", [](benchmark::State& s) {
    const auto any = [](Numbers& n) { return WithLength(GlmOf(n.Point(10.0))); };
    using Measured = glm::dvec4;
    OnPairs(s, Corpus<Measured>(20240229, any), [](const Measured& a, const Measured& b) {
      const Measured scaled = a * b.x;
      return Measured(scaled.x, scaled.y, scaled.z, glm::abs(scaled.w));
    });
  });
  AddRow("VectorDot/glm", [](benchmark::State& s) {
    OnPairs(s, Triples<V>(), [](const V& a, const V& b) { return glm::dot(a, b); });
  });
  AddRow("VectorCrossAndLength/glm", [](benchmark::State& s) {
    OnPairs(s, Triples<V>(), [](const V& a, const V& b) { return WithLength(glm::cross(a, b)); });
  });
  AddRow("VectorNormalize/glm", [](benchmark::State& s) {
    OnPairs(s, Triples<V>(), [](const V& a, const V&) { return glm::normalize(a); });
  });
  AddRow("PointDistance/glm", [](benchmark::State& s) {
    OnPairs(s, Triples<V>(), [](const V& a, const V& b) { return glm::distance(a, b); });
  });
}

void RegisterTransforms() {
  AddRow("TransformPoint/glm", [](benchmark::State& s) {
    // Four columns of three rows: no work for the last row.
    const glm::dmat4x3 m(GlmTransform());
    OnEach(s, Triples<V>(), [&](const V& a) {
      const V moved = m * glm::dvec4(a, 1.0);
      return moved.x + moved.y + moved.z;
    });
  });
  AddRow("TransformConcatenate/glm", [](benchmark::State& s) {
    const glm::dmat4 m = GlmTransform();
    glm::dmat4 product(1.0);
    for (int k = 0; k < 3; ++k)
      product = m * product;
    if (!agreement::IsAgreed(s, product)) return;
    for (auto _ : s) {
      product = m * product;
      benchmark::DoNotOptimize(product);
    }
  });
  AddRow("TransformInverse/glm", [](benchmark::State& s) {
    glm::dmat4 m = GlmTransform();
    if (!agreement::IsAgreed(s, glm::affineInverse(m))) return;
    for (auto _ : s) {
      benchmark::DoNotOptimize(m);
      benchmark::DoNotOptimize(glm::affineInverse(m));
    }
  });
}

std::vector<Box> Boxes() {
  std::vector<Box> boxes;
  for (const Points<2>& corners : BoxCorners()) {
    const V a = GlmOf(corners[0]);
    const V b = GlmOf(corners[1]);
    boxes.push_back({glm::min(a, b), glm::max(a, b)});
  }
  return boxes;
}

Box Around(const std::vector<V>& points) {
  Box box = {points.front(), points.front()};
  for (const V& p : points)
    box = {glm::min(box.min, p), glm::max(box.max, p)};
  return box;
}

} // namespace

void RegisterValuesOfGlm() {
  RegisterVectors();
  RegisterTransforms();
}

void RegisterLinesOfGlm() {
  struct In {
    V p, on, direction;
  };
  const auto any = [](Numbers& n) {
    const PointAndLineInput in = AnyPointAndLineInput(n);
    return In{GlmOf(in.p), GlmOf(in.line.on), GlmOf(in.line.direction)};
  };
  AddRow("PointLineDistance/glm", [any](benchmark::State& s) {
    OnEach(s, Corpus<In>(8, any), [](const In& in) {
      return glm::length(glm::cross(in.p - in.on, in.direction)) / glm::length(in.direction);
    });
  });
}

void RegisterQueriesOfGlm() {
  AddRow("PointSegmentDistance/glm", [](benchmark::State& s) {
    const auto convert = [](const gsl_Point& p) { return GlmOf(p); };
    OnEach(s, PeerCorpus<V, 3>(2, convert), [](const std::array<V, 3>& p) {
      V closest = glm::closestPointOnLine(p[0], p[1], p[2]);
      benchmark::DoNotOptimize(closest);
      return glm::distance(p[0], closest);
    });
  });
  AddRow("RotationAboutAxis/glm", [](benchmark::State& s) {
    OnEach(s, Corpus<Turn>(6, AnyTurn), [](const Turn& turn) {
      const V p = GlmOf(turn.p);
      const glm::dmat4 there = glm::translate(glm::dmat4(1.0), p);
      return glm::translate(glm::rotate(there, turn.angle, GlmOf(turn.axis)), -p);
    });
  });
}

void RegisterBoxesOfGlm() {
  AddRow("BoxAddPoints/glm", [](benchmark::State& s) {
    const std::vector<V> points = Triples<V>();
    if (!agreement::IsAgreed(s, Around(points))) return;
    for (auto _ : s)
      benchmark::DoNotOptimize(Around(points));
  });
  AddRow("BoxIntersect/glm", [](benchmark::State& s) {
    OnPairs(s, Boxes(), [](const Box& a, const Box& b) {
      return glm::all(glm::lessThanEqual(a.min, b.max)) &&
             glm::all(glm::lessThanEqual(b.min, a.max));
    });
  });
}

#else

void RegisterValuesOfGlm() {}
void RegisterLinesOfGlm() {}
void RegisterQueriesOfGlm() {}
void RegisterBoxesOfGlm() {}

#endif
