// Measures boxes, three-point constructions, datum predicates, model segments, the in-plane sweep
// and script calls. The peers are Eigen, glm and Bullet for boxes, Eigen for circles and skew
// lines, std::shared_ptr for the holders, and the step-by-step algorithm on the public classes for
// the sweep.

#include "EigenResults.h"
#include "FreshData.h"
#include "InPlaneTranscription.h"
#include "SmallPeers.h"
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

template <>
struct agreement::NumbersOf<gsl_BBox> {
  static void Append(std::vector<double>& out, const gsl_BBox& box) {
    NumbersOf<gsl_Point>::Append(out, box.min);
    NumbersOf<gsl_Point>::Append(out, box.max);
  }
};

namespace {

using namespace fresh_data;

Eigen::Vector3d EigenOf(const gsl_Point& p) {
  return {p.x, p.y, p.z};
}

Eigen::Isometry3d SomeIsometry() {
  const Eigen::Vector3d p(1.0, 2.0, 3.0);
  return Eigen::Translation3d(p) *
         Eigen::AngleAxisd(0.7, Eigen::Vector3d(1.0, -1.0, 2.0).normalized()) *
         Eigen::Translation3d(-p);
}

std::vector<gsl_BBox> OurBoxes() {
  std::vector<gsl_BBox> boxes;
  for (const Points<2>& corners : BoxCorners()) {
    gsl_BBox box;
    box.Add(corners[0]);
    box.Add(corners[1]);
    boxes.push_back(box);
  }
  return boxes;
}

std::vector<Eigen::AlignedBox3d> EigenBoxes() {
  std::vector<Eigen::AlignedBox3d> boxes;
  for (const Points<2>& corners : BoxCorners()) {
    Eigen::AlignedBox3d box(EigenOf(corners[0]));
    box.extend(EigenOf(corners[1]));
    boxes.push_back(box);
  }
  return boxes;
}

/// Measures the box around all points, which `add` enlarges by one.
template <class Box, class Point, class Add>
void OnWhole(benchmark::State& state, const std::vector<Point>& points, Add add) {
  const auto around = [&] {
    Box box;
    for (const Point& p : points)
      add(box, p);
    return box;
  };
  if (!agreement::IsAgreed(state, around())) return;
  for (auto _ : state)
    benchmark::DoNotOptimize(around());
}

void RegisterGrowingBoxes() {
  AddRow("BoxAddPoints/ours", [](benchmark::State& s) {
    OnWhole<gsl_BBox>(s, Triples<gsl_Point>(),
                      [](gsl_BBox& box, const gsl_Point& p) { box.Add(p); });
  });
  AddRow("BoxAddPoints/Eigen", [](benchmark::State& s) {
    OnWhole<Eigen::AlignedBox3d>(
        s, Triples<Eigen::Vector3d>(),
        [](Eigen::AlignedBox3d& box, const Eigen::Vector3d& p) { box.extend(p); });
  });
}

void RegisterBoxes() {
  AddRow("BoxIntersect/ours", [](benchmark::State& s) {
    OnPairs(s, OurBoxes(), [](const gsl_BBox& a, const gsl_BBox& b) { return a.Intersect(b); });
  });
  AddRow("BoxIntersect/Eigen", [](benchmark::State& s) {
    using Box = Eigen::AlignedBox3d;
    OnPairs(s, EigenBoxes(), [](const Box& a, const Box& b) { return a.intersects(b); });
  });
  AddRow("BoxTransform/ours", [](benchmark::State& s) {
    OnEach(s, OurBoxes(), [m = SomeTransform()](const gsl_BBox& source) {
      gsl_BBox box(source);
      box.Transform(m);
      return box;
    });
  });
  AddRow("BoxTransform/Eigen", [](benchmark::State& s) {
    OnEach(s, EigenBoxes(), [m = SomeIsometry()](const Eigen::AlignedBox3d& source) {
      Eigen::AlignedBox3d box;
      for (int k = 0; k < 8; ++k)
        box.extend(m * source.corner(static_cast<Eigen::AlignedBox3d::CornerType>(k)));
      return box;
    });
  });
}

Eigen::Vector3d EigenCentre(const std::array<Eigen::Vector3d, 3>& p) {
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
  return m.inverse() * r;
}

void RegisterCircles() {
  AddRow("CircumCircle/ours", [](benchmark::State& s) {
    gsl_Point centre;
    gsl_Vector normal;
    OnEach(s, Corpus<Points<3>>(11, AnyPoints<3>), [&](const Points<3>& p) -> const gsl_Point& {
      gsl_ComputeCircumCircle(p[0], p[1], p[2], centre, normal);
      return centre;
    });
  });
  AddRow("CircumCircle/Eigen", [](benchmark::State& s) {
    OnEach(s, PeerCorpus<Eigen::Vector3d, 3>(11, EigenOf), EigenCentre);
  });
}

gsl_StLine AnyLine(Numbers& n) {
  const Points<2> p = AnyPoints<2>(n);
  return {p[0], p[1]};
}

void RegisterLines() {
  AddRow("LinesAreSkew/ours", [](benchmark::State& s) {
    OnPairs(s, Corpus<gsl_StLine>(12, AnyLine),
            [](const gsl_StLine& a, const gsl_StLine& b) { return gsl_LinesAreSkew(&a, &b); });
  });
  AddRow("LinesAreSkew/Eigen", [](benchmark::State& s) {
    using Line = Eigen::ParametrizedLine<double, 3>;
    const auto any = [](Numbers& n) {
      const gsl_StLine line = AnyLine(n);
      const gsl_Vector& d = line.Direction();
      return Line(EigenOf(line.PointOn()), Eigen::Vector3d(d.x, d.y, d.z).normalized());
    };
    OnPairs(s, Corpus<Line>(12, any), [](const Line& a, const Line& b) {
      const Eigen::Vector3d n = a.direction().cross(b.direction());
      const double length = n.norm();
      const double apart =
          length < 1e-6 ? 0.0 : std::abs((b.origin() - a.origin()).dot(n / length));
      return apart > 1e-6;
    });
  });
}

void ThreePointsColinear(benchmark::State& state) {
  Numbers numbers(20240611);
  std::vector<gsl_Dot> dots;
  for (std::size_t i = 0; i < kCount; ++i)
    dots.emplace_back(numbers.Point(10.0));
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

gsl_Point AnyFlatPoint(Numbers& n) {
  const double x = n.In(-3.0, 3.0);
  return {x, n.In(-3.0, 3.0), 0.0};
}

/// A segment near a segment that moves along +Y: 0 is ahead of it and across the direction, 1 is
/// along the direction, 2 is anywhere.
struct InPlanePairs {
  std::vector<std::array<gsl_Point, 4>> pairs;
  gsl_Vector direction{0.1, 1.0, 0.0};

  explicit InPlanePairs(int kind) {
    Numbers numbers(20240611);
    const auto at = [&numbers](double x, double y) {
      const double right = numbers.In(-0.5, 0.5);
      return gsl_Point(x + right, y + numbers.In(-0.5, 0.5), 0.0);
    };
    const gsl_Vector d = direction.NormalizedCopy();
    for (std::size_t i = 0; i < kCount; ++i) {
      std::array<gsl_Point, 4> p = {at(1.0, 0.0), at(-1.0, 0.0), at(-1.0, 4.0), at(1.0, 4.0)};
      if (kind == 1) p[3] = p[2] + d * numbers.In(-2.0, 2.0);
      if (kind == 2) {
        for (gsl_Point& q : p)
          q = AnyFlatPoint(numbers);
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

BENCHMARK(ThreePointsColinear)->Name("ThreePointsColinear/ours");
BENCHMARK(HolderCopy)->Name("ModelSegmentCopy/ours");
BENCHMARK(HolderCopyShared)->Name("ModelSegmentCopy/shared_ptr");
BENCHMARK(SegmentRegenerate)->Name("ModelSegmentRegenerate/ours");
BENCHMARK(SegmentRegenerateShared)->Name("ModelSegmentRegenerate/shared_ptr");
BENCHMARK(InPlaneSweep)->Name("InPlaneSweep/ours")->DenseRange(0, 2);
BENCHMARK(InPlaneSweepSteps)->Name("InPlaneSweep/steps")->DenseRange(0, 2);
BENCHMARK(ScriptCallMatrix)->Name("ScriptCallMatrix/ours");

const bool registered = [] {
  RegisterGrowingBoxes();
  RegisterBoxes();
  RegisterCircles();
  RegisterLines();
  RegisterBoxesOfGlm();
  RegisterBoxesOfBullet();
  return true;
}();

} // namespace
