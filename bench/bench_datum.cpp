// Measures boxes, three-point constructions, datum predicates, model segments, the in-plane sweep
// and script calls. The peers are Eigen for boxes, circles and skew lines, std::shared_ptr for the
// holders, and the step-by-step algorithm on the public classes for the sweep.

#include "InPlaneTranscription.h"
#include "RandomNumbers.h"
#include "gsl_BBox.h"
#include "gsl_InPlaneSegSegMinDirectionalDist.h"
#include "gsl_ModelSegment.h"
#include "gsl_ThreePoints.h"
#include "gsl_TransformIntObj.h"
#include "omu_PrimTuple.h"

#include <Eigen/Dense>
#include <Eigen/Geometry>
#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <vector>

namespace {

// A branch predictor learns a few hundred inputs by heart, and cannot learn so many.
constexpr std::size_t kCount = 4096;

class Numbers {
public:
  double operator()(double low, double high) { return random.In(low, high); }
  gsl_Point Point() {
    const double x = (*this)(-10.0, 10.0);
    const double y = (*this)(-10.0, 10.0);
    return {x, y, (*this)(-10.0, 10.0)};
  }

private:
  RandomNumbers random{20240611};
};

Eigen::Vector3d EigenOf(const gsl_Point& p) {
  return {p.x, p.y, p.z};
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

struct Boxes {
  std::vector<gsl_Point> points;
  std::vector<gsl_BBox> ours;
  std::vector<Eigen::Vector3d> eigenPoints;
  std::vector<Eigen::AlignedBox3d> eigen;

  Boxes() {
    Numbers numbers;
    for (std::size_t i = 0; i < kCount; ++i) {
      const gsl_Point a = numbers.Point();
      const gsl_Point b = numbers.Point();
      points.push_back(a);
      eigenPoints.push_back(EigenOf(a));
      gsl_BBox box;
      box.Add(a);
      box.Add(b);
      ours.push_back(box);
      Eigen::AlignedBox3d peer(EigenOf(a));
      peer.extend(EigenOf(b));
      eigen.push_back(peer);
    }
  }
};

void BoxAddPoints(benchmark::State& state) {
  const Boxes boxes;
  for (auto _ : state) {
    gsl_BBox box;
    for (const gsl_Point& p : boxes.points)
      box.Add(p);
    benchmark::DoNotOptimize(box);
  }
}

void BoxAddPointsEigen(benchmark::State& state) {
  const Boxes boxes;
  for (auto _ : state) {
    Eigen::AlignedBox3d box;
    for (const Eigen::Vector3d& p : boxes.eigenPoints)
      box.extend(p);
    benchmark::DoNotOptimize(box);
  }
}

void BoxIntersect(benchmark::State& state) {
  const Boxes boxes;
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(boxes.ours[i % kCount].Intersect(boxes.ours[(i + 1) % kCount]));
    ++i;
  }
}

void BoxIntersectEigen(benchmark::State& state) {
  const Boxes boxes;
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(boxes.eigen[i % kCount].intersects(boxes.eigen[(i + 1) % kCount]));
    ++i;
  }
}

void BoxTransform(benchmark::State& state) {
  const Boxes boxes;
  const gsl_Matrix m = SomeTransform();
  std::size_t i = 0;
  for (auto _ : state) {
    gsl_BBox box(boxes.ours[i++ % kCount]);
    box.Transform(m);
    benchmark::DoNotOptimize(box);
  }
}

void BoxTransformEigen(benchmark::State& state) {
  const Boxes boxes;
  const Eigen::Isometry3d m = SomeIsometry();
  std::size_t i = 0;
  for (auto _ : state) {
    // Transforms all eight corners, as our box does.
    const Eigen::AlignedBox3d& source = boxes.eigen[i++ % kCount];
    Eigen::AlignedBox3d box;
    for (int k = 0; k < 8; ++k)
      box.extend(m * source.corner(static_cast<Eigen::AlignedBox3d::CornerType>(k)));
    benchmark::DoNotOptimize(box);
  }
}

struct Triples {
  std::vector<std::array<gsl_Point, 3>> ours;
  std::vector<std::array<Eigen::Vector3d, 3>> eigen;

  Triples() {
    Numbers numbers;
    for (std::size_t i = 0; i < kCount; ++i) {
      ours.push_back({numbers.Point(), numbers.Point(), numbers.Point()});
      eigen.push_back({EigenOf(ours.back()[0]), EigenOf(ours.back()[1]), EigenOf(ours.back()[2])});
    }
  }
};

void CircumCircle(benchmark::State& state) {
  const Triples triples;
  std::size_t i = 0;
  gsl_Point centre;
  gsl_Vector normal;
  for (auto _ : state) {
    const auto& p = triples.ours[i++ % kCount];
    gsl_ComputeCircumCircle(p[0], p[1], p[2], centre, normal);
    benchmark::DoNotOptimize(centre.x);
  }
}

void CircumCircleEigen(benchmark::State& state) {
  const Triples triples;
  std::size_t i = 0;
  for (auto _ : state) {
    const auto& p = triples.eigen[i++ % kCount];
    Eigen::Matrix3d m;
    Eigen::Vector3d r;
    const Eigen::Vector3d n = (p[1] - p[0]).cross(p[2] - p[0]).normalized();
    for (int row = 0; row < 2; ++row) {
      const Eigen::Vector3d& a = p[static_cast<std::size_t>(row)];
      const Eigen::Vector3d& b = p[static_cast<std::size_t>(row) + 1];
      const Eigen::Vector3d d = 2.0 * (a - b);
      const double length = d.norm();
      m.row(row) = d / length;
      r[row] = (a.squaredNorm() - b.squaredNorm()) / length;
    }
    m.row(2) = n;
    r[2] = n.dot(p[0]);
    const Eigen::Vector3d centre = m.inverse() * r;
    benchmark::DoNotOptimize(centre.x());
  }
}

struct LinePairs {
  std::vector<gsl_StLine> ours;
  std::vector<Eigen::ParametrizedLine<double, 3>> eigen;

  LinePairs() {
    Numbers numbers;
    for (std::size_t i = 0; i < kCount; ++i) {
      const gsl_Point p = numbers.Point();
      const gsl_Point q = numbers.Point();
      ours.emplace_back(p, q);
      eigen.push_back(Eigen::ParametrizedLine<double, 3>::Through(EigenOf(p), EigenOf(q)));
    }
  }
};

void LinesAreSkew(benchmark::State& state) {
  const LinePairs lines;
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        gsl_LinesAreSkew(&lines.ours[i % kCount], &lines.ours[(i + 1) % kCount]));
    ++i;
  }
}

void LinesAreSkewEigen(benchmark::State& state) {
  const LinePairs lines;
  std::size_t i = 0;
  for (auto _ : state) {
    const auto& a = lines.eigen[i % kCount];
    const auto& b = lines.eigen[(i + 1) % kCount];
    const Eigen::Vector3d n = a.direction().cross(b.direction());
    const double length = n.norm();
    const double apart = length < 1e-6 ? 0.0 : std::abs((b.origin() - a.origin()).dot(n / length));
    benchmark::DoNotOptimize(apart > 1e-6);
    ++i;
  }
}

void ThreePointsColinear(benchmark::State& state) {
  Numbers numbers;
  std::vector<gsl_Dot> dots;
  for (std::size_t i = 0; i < kCount; ++i)
    dots.emplace_back(numbers.Point());
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(gsl_ThreePointsColinear(&dots[i % kCount], &dots[(i + 1) % kCount],
                                                     &dots[(i + 2) % kCount]));
    ++i;
  }
}

void HolderCopy(benchmark::State& state) {
  const gsl_ModelSegment segment(gsl_Dot(1.0, 2.0, 3.0), gsl_Dot(4.0, 5.0, 6.0));
  for (auto _ : state) {
    const gsl_ModelSegment copy(segment);
    benchmark::DoNotOptimize(&copy);
  }
}

struct SharedPair {
  std::shared_ptr<gsl_Dot> point1, point2;
  cls_Uid uid;
};

void HolderCopyShared(benchmark::State& state) {
  const SharedPair segment = {std::make_shared<gsl_Dot>(1.0, 2.0, 3.0),
                              std::make_shared<gsl_Dot>(4.0, 5.0, 6.0), cls_Uid::AllocateUid()};
  for (auto _ : state) {
    const SharedPair copy(segment);
    benchmark::DoNotOptimize(&copy);
  }
}

void SegmentRegenerate(benchmark::State& state) {
  const gsl_ModelSegment segment(gsl_Dot(1.0, 2.0, 3.0), gsl_Dot(4.0, 5.0, 6.0));
  for (auto _ : state) {
    gsl_ModelSegment copy(segment);
    copy.Regenerate(nullptr);
    benchmark::DoNotOptimize(&copy);
  }
}

void SegmentRegenerateShared(benchmark::State& state) {
  const SharedPair segment = {std::make_shared<gsl_Dot>(1.0, 2.0, 3.0),
                              std::make_shared<gsl_Dot>(4.0, 5.0, 6.0), cls_Uid::AllocateUid()};
  for (auto _ : state) {
    SharedPair copy(segment);
    copy.point1.reset(copy.point1->Copy());
    copy.point1->Regenerate(nullptr);
    copy.point2.reset(copy.point2->Copy());
    copy.point2->Regenerate(nullptr);
    benchmark::DoNotOptimize(&copy);
  }
}

/// A segment near a segment that moves along +Y: 0 is ahead of it and across the direction, 1 is
/// along the direction, 2 is anywhere.
struct InPlanePairs {
  std::vector<std::array<gsl_Point, 4>> pairs;
  gsl_Vector direction{0.1, 1.0, 0.0};

  explicit InPlanePairs(int kind) {
    Numbers numbers;
    const auto at = [&numbers](double x, double y) {
      return gsl_Point(x + numbers(-0.5, 0.5), y + numbers(-0.5, 0.5), 0.0);
    };
    const gsl_Vector d = direction.NormalizedCopy();
    for (std::size_t i = 0; i < kCount; ++i) {
      std::array<gsl_Point, 4> p = {at(1.0, 0.0), at(-1.0, 0.0), at(-1.0, 4.0), at(1.0, 4.0)};
      if (kind == 1) p[3] = p[2] + d * numbers(-2.0, 2.0);
      if (kind == 2) {
        for (gsl_Point& q : p)
          q = gsl_Point(numbers(-3.0, 3.0), numbers(-3.0, 3.0), 0.0);
      }
      pairs.push_back(p);
    }
  }
};

template <class Sweep>
void RunSweep(benchmark::State& state, const Sweep& sweep) {
  const InPlanePairs work(static_cast<int>(state.range(0)));
  const bool twoSided[2] = {true, true};
  gsl_Point contacts[2];
  std::size_t i = 0;
  for (auto _ : state) {
    const std::array<gsl_Point, 4>& p = work.pairs[i++ % kCount];
    double distance = std::numeric_limits<double>::infinity();
    benchmark::DoNotOptimize(
        sweep(work.direction, p[0], p[1], p[2], p[3], twoSided, 0.0, contacts, distance));
    benchmark::DoNotOptimize(distance);
  }
}

void InPlaneSweep(benchmark::State& state) {
  RunSweep(state, gsl_InPlaneSegSegMinDirectionalDist);
}

void InPlaneSweepSteps(benchmark::State& state) {
  RunSweep(state, [](auto&&... arguments) {
    return in_plane_transcription::SegSegMinDirectionalDist(arguments...);
  });
}

void ScriptCallMatrix(benchmark::State& state) {
  gsl_TransformIntObj object(omu_Shortcut("assembly.transform"), SomeTransform(), "");
  const cow_String method("matrix");
  const omu_PrimTuple arguments;
  for (auto _ : state)
    delete object.CallMethod(method, arguments);
}

BENCHMARK(BoxAddPoints)->Name("BoxAddPoints/ours");
BENCHMARK(BoxAddPointsEigen)->Name("BoxAddPoints/Eigen");
BENCHMARK(BoxIntersect)->Name("BoxIntersect/ours");
BENCHMARK(BoxIntersectEigen)->Name("BoxIntersect/Eigen");
BENCHMARK(BoxTransform)->Name("BoxTransform/ours");
BENCHMARK(BoxTransformEigen)->Name("BoxTransform/Eigen");
BENCHMARK(CircumCircle)->Name("CircumCircle/ours");
BENCHMARK(CircumCircleEigen)->Name("CircumCircle/Eigen");
BENCHMARK(LinesAreSkew)->Name("LinesAreSkew/ours");
BENCHMARK(LinesAreSkewEigen)->Name("LinesAreSkew/Eigen");
BENCHMARK(ThreePointsColinear)->Name("ThreePointsColinear/ours");
BENCHMARK(HolderCopy)->Name("ModelSegmentCopy/ours");
BENCHMARK(HolderCopyShared)->Name("ModelSegmentCopy/shared_ptr");
BENCHMARK(SegmentRegenerate)->Name("ModelSegmentRegenerate/ours");
BENCHMARK(SegmentRegenerateShared)->Name("ModelSegmentRegenerate/shared_ptr");
BENCHMARK(InPlaneSweep)->Name("InPlaneSweep/ours")->DenseRange(0, 2);
BENCHMARK(InPlaneSweepSteps)->Name("InPlaneSweep/steps")->DenseRange(0, 2);
BENCHMARK(ScriptCallMatrix)->Name("ScriptCallMatrix/ours");

} // namespace
