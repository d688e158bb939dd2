// Measures the batches, with the registers of each width, beside the loop of the scalar calls. One
// iteration is 4096 inputs in random order.

#include "FreshData.h"
#include "gsl_BBox.h"
#include "gsl_Batch.h"
#include "gsl_BatchRun.h"
#include "gsl_InPlaneSegSegMinDirectionalDist.h"
#include "gsl_Matrix.h"
#include "gsl_Segment.h"
#include "gsl_TriTriMinDirectionalDist.h"

#include <array>
#include <limits>
#include <string>

namespace {

using namespace fresh_data;
using gsl_wide::PointsIn;

/// The points as a host of many inputs has them: an array for each of the four.
struct Arrays {
  std::vector<double> numbers[4];
  std::vector<double> upper; ///< the upper corners of boxes that begin at numbers[0]

  Arrays() {
    for (const Points<4>& points : Corpus<Points<4>>(1, AnyPoints<4>)) {
      for (std::size_t i = 0; i < 4; ++i) {
        numbers[i].push_back(points[i].x);
        numbers[i].push_back(points[i].y);
        numbers[i].push_back(points[i].z);
      }
    }
    for (const double c : numbers[0])
      upper.push_back(c + 1.0);
  }
  PointsIn operator[](std::size_t i) const { return {numbers[i].data(), 3}; }
  gsl_BatchPoints Public(std::size_t i) const { return {numbers[i].data()}; }
};

struct Results {
  std::vector<double> distances = std::vector<double>(kCount);
  std::vector<double> points = std::vector<double>(6 * kCount);
};

/// The rotation that every transform uses.
gsl_Matrix Turned() {
  gsl_Matrix m;
  m.AxisRotation(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(1.0, 1.0, 0.5), 0.7);
  return m;
}

template <class Run>
void Register(const std::string& name, Run run) {
  benchmark::RegisterBenchmark(name.c_str(), [run](benchmark::State& state) {
    const Arrays in;
    Results out;
    for (auto _ : state) {
      run(in, out);
      benchmark::DoNotOptimize(out.distances.data());
      benchmark::DoNotOptimize(out.points.data());
      benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kCount));
  });
}

/// Registers run(kernels, in, out) for the registers that are not the widest.
template <class Run>
void RegisterWidths(const std::string& work, Run run) {
  const auto at = [&](const char* name, gsl_VectorWidth width) {
    const gsl_WideKernels* const kernels = gsl_FindWideKernels(width);
    if (kernels == nullptr || kernels == &gsl_BestWideKernels()) return;
    Register(work + "/" + name,
             [kernels, run](const Arrays& in, Results& out) { run(*kernels, in, out); });
  };
  at("baseline", gsl_VectorWidth::Baseline);
  at("avx2", gsl_VectorWidth::Avx2);
}

/// Registers query(item) for each item, into the distances.
template <class Item, class Make, class Query>
void RegisterScalar(const std::string& work, Make make, Query query) {
  const std::string name = work + "/scalar";
  benchmark::RegisterBenchmark(name.c_str(), [make, query](benchmark::State& state) mutable {
    const std::vector<Item> items = Corpus<Item>(1, make);
    std::vector<double> results(kCount);
    for (auto _ : state) {
      for (std::size_t k = 0; k < kCount; ++k)
        results[k] = query(items[k]);
      benchmark::DoNotOptimize(results.data());
      benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kCount));
  });
}

struct PointAndSegment {
  gsl_Point p;
  gsl_Segment segment;
};

struct Segments {
  gsl_Segment a, b;
};

void RegisterPointSegments() {
  const std::string work = "BatchPointSegment";
  Register(work + "/ours", [](const Arrays& in, Results& out) {
    gsl_PointSegmentDistances(kCount, in.Public(3), in.Public(0), in.Public(1),
                              out.distances.data(), out.points.data());
  });
  RegisterWidths(work, [](const gsl_WideKernels& kernels, const Arrays& in, Results& out) {
    gsl_batch::PointSegments(kernels, {kCount, in[3], in[0], in[1], 1e-6, out.distances.data(),
                                       out.points.data(), nullptr, nullptr});
  });
  const auto make = [](Numbers& n) {
    const Points<4> p = AnyPoints<4>(n);
    return PointAndSegment{p[3], gsl_Segment(p[0], p[1])};
  };
  RegisterScalar<PointAndSegment>(work, make, [](const PointAndSegment& item) {
    static gsl_Point closest;
    return item.p.GetDistance(item.segment, closest);
  });
}

void RegisterPointTriangles() {
  const std::string work = "BatchPointTriangle";
  Register(work + "/ours", [](const Arrays& in, Results& out) {
    gsl_PointTriangleDistances(kCount, in.Public(3), in.Public(0), in.Public(1), in.Public(2),
                               out.distances.data());
  });
  RegisterWidths(work, [](const gsl_WideKernels& kernels, const Arrays& in, Results& out) {
    gsl_batch::PointTriangles(
        kernels, {kCount, in[3], in[0], in[1], in[2], 1e-6, 1e-10, out.distances.data(), nullptr});
  });
  RegisterScalar<Points<4>>(work, AnyPoints<4>,
                            [](const Points<4>& p) { return p[3].GetDistance(p[0], p[1], p[2]); });
}

void RegisterSegmentPairs() {
  const std::string work = "BatchSegmentSegment";
  Register(work + "/ours", [](const Arrays& in, Results& out) {
    gsl_SegmentDistances(kCount, in.Public(0), in.Public(1), in.Public(2), in.Public(3),
                         out.distances.data(), out.points.data(), out.points.data() + 3 * kCount);
  });
  RegisterWidths(work, [](const gsl_WideKernels& kernels, const Arrays& in, Results& out) {
    gsl_batch::SegmentPairs(kernels, {kCount, in[0], in[1], in[2], in[3], 1e-6,
                                      out.distances.data(), out.points.data(),
                                      out.points.data() + 3 * kCount, nullptr, nullptr, nullptr});
  });
  const auto make = [](Numbers& n) {
    const Points<4> p = AnyPoints<4>(n);
    return Segments{gsl_Segment(p[0], p[1]), gsl_Segment(p[2], p[3])};
  };
  RegisterScalar<Segments>(work, make, [](const Segments& item) {
    static gsl_Segment connection;
    item.a.GetDistance(item.b, connection);
    return connection.Length();
  });
}

void RegisterTransforms() {
  const std::string work = "BatchTransformPoint";
  Register(work + "/ours", [m = Turned()](const Arrays& in, Results& out) {
    gsl_TransformPoints(kCount, m, in.Public(0), out.points.data());
  });
  RegisterWidths(
      work, [m = Turned()](const gsl_WideKernels& kernels, const Arrays& in, Results& out) {
        gsl_batch::TransformPoints(kernels, {kCount, in[0], &m.m, out.points.data(), nullptr});
      });
  RegisterScalar<gsl_Point>(
      work, [](Numbers& n) { return n.Point(5.0); },
      [m = Turned()](gsl_Point p) {
        m.Transform(p);
        benchmark::DoNotOptimize(p);
        return p.x;
      });
}

void RegisterBoxes() {
  const std::string work = "BatchTransformBox";
  Register(work + "/ours", [m = Turned()](const Arrays& in, Results& out) {
    gsl_TransformBoxes(kCount, m, in.Public(0), {in.upper.data()}, out.points.data());
  });
  RegisterWidths(
      work, [m = Turned()](const gsl_WideKernels& kernels, const Arrays& in, Results& out) {
        gsl_batch::TransformBoxes(
            kernels, {kCount, in[0], {in.upper.data(), 3}, &m.m, out.points.data(), nullptr});
      });
  const auto make = [](Numbers& n) {
    gsl_BBox box;
    const gsl_Point lower = n.Point(5.0);
    box.Add(lower);
    box.Add(gsl_Point(lower.x + 1.0, lower.y + 1.0, lower.z + 1.0));
    return box;
  };
  RegisterScalar<gsl_BBox>(work, make, [m = Turned()](gsl_BBox box) {
    box.Transform(m);
    benchmark::DoNotOptimize(box);
    return box.min.x;
  });
  const std::string around = "BatchBoxOfPoints";
  Register(around + "/ours", [](const Arrays& in, Results& out) {
    gsl_BoxOfPoints(kCount, in.Public(0), out.points.data());
  });
  RegisterWidths(around, [](const gsl_WideKernels& kernels, const Arrays& in, Results& out) {
    gsl_batch::BoxOfPoints(kernels, in[0], kCount, out.points.data());
  });
  RegisterScalar<gsl_Point>(
      around, [](Numbers& n) { return n.Point(5.0); },
      [box = gsl_BBox()](const gsl_Point& p) mutable {
        box.Add(p);
        return box.min.x;
      });
}

/// One triangle under 4096 others in a wide space: small, in any place and any attitude.
struct Scattered {
  Arrays arrays;
  Points<3> moving = {gsl_Point(0.0, 0.0, -5.0), gsl_Point(1.0, 0.0, -5.0),
                      gsl_Point(0.0, 1.0, -5.0)};
  std::vector<Points<3>> fixed;

  Scattered() {
    for (std::size_t k = 0; k < kCount; ++k) {
      std::vector<double>* const p = arrays.numbers;
      for (std::size_t i = 3 * k; i < 3 * k + 3; ++i) {
        p[1][i] = p[0][i] + 0.1 * p[1][i];
        p[2][i] = p[0][i] + 0.1 * p[2][i];
      }
      const auto at = [k](const std::vector<double>& n) {
        return gsl_Point(n[3 * k], n[3 * k + 1], n[3 * k + 2]);
      };
      fixed.push_back({at(p[0]), at(p[1]), at(p[2])});
    }
  }
};

constexpr bool kTwoSided[2] = {true, true};

/// Registers run(scene) for a whole sweep, which returns the distance.
template <class Run>
void RegisterSweep(const std::string& name, Run run) {
  benchmark::RegisterBenchmark(name.c_str(), [run](benchmark::State& state) {
    const Scattered scene;
    for (auto _ : state)
      benchmark::DoNotOptimize(run(scene));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kCount));
  });
}

double SweepAt(const gsl_WideKernels& kernels, const Scattered& scene) {
  gsl_wide::TriangleSweepBatch batch = {};
  batch.count = kCount;
  for (std::size_t i = 0; i < 3; ++i) {
    batch.a[i] = {&scene.moving[i].x, 0};
    batch.b[i] = scene.arrays[i];
    if (i < 2) batch.twoSided[i] = kTwoSided[i];
  }
  batch.linearTolerance = 1e-6;
  batch.cosineTolerance = 1e-10;
  gsl_batch::SweptPairs best = {1e9, {}, 0, false};
  gsl_batch::SweepTriangles(kernels, batch, gsl_Vector(0.0, 0.0, 1.0).Measured(), best);
  return best.distance;
}

void RegisterSweeps() {
  const std::string work = "BatchTriangleSweep";
  RegisterSweep(work + "/ours",
                [](const Scattered& scene) { return SweepAt(gsl_BestWideKernels(), scene); });
  const auto at = [&](const char* name, gsl_VectorWidth width) {
    const gsl_WideKernels* const kernels = gsl_FindWideKernels(width);
    if (kernels == nullptr || kernels == &gsl_BestWideKernels()) return;
    RegisterSweep(work + "/" + name,
                  [kernels](const Scattered& scene) { return SweepAt(*kernels, scene); });
  };
  at("baseline", gsl_VectorWidth::Baseline);
  at("avx2", gsl_VectorWidth::Avx2);
  RegisterSweep(work + "/scalar", [](const Scattered& scene) {
    const gsl_Vector direction(0.0, 0.0, 1.0);
    gsl_Point contacts[2];
    double distance = 1e9;
    for (const Points<3>& b : scene.fixed) {
      benchmark::DoNotOptimize(
          gsl_TriTriMinDirectionalDist(direction, scene.moving[0], scene.moving[1], scene.moving[2],
                                       b[0], b[1], b[2], kTwoSided, 0.0, contacts, distance));
    }
    return distance;
  });
}

/// Pairs of triangles along Z, as single calls and as arrays of corners take them.
struct TrianglePairs {
  double distance = std::numeric_limits<double>::infinity();
  double margin = 0.0;
  std::vector<Points<6>> pairs;
  std::vector<double> corners[6];
  std::vector<double> prepared[2];

  /// B is `ahead` of A and `aside` of it.
  TrianglePairs(double ahead, double aside) {
    pairs = Corpus<Points<6>>(7, [=](Numbers& n) {
      Points<6> p;
      for (std::size_t i = 0; i < 3; ++i) {
        p[i] = n.Point(1.0);
        p[i + 3] = n.Point(1.0) + gsl_Vector(aside, 0.0, ahead);
      }
      return p;
    });
    for (const Points<6>& p : pairs) {
      for (std::size_t i = 0; i < 6; ++i)
        corners[i].insert(corners[i].end(), {p[i].x, p[i].y, p[i].z});
    }
    for (std::size_t body = 0; body < 2; ++body) {
      prepared[body].resize(gsl_CountPreparedNumbers(kCount));
      gsl_PrepareTriangles(kCount, Triangles(body), prepared[body].data());
    }
  }

  gsl_BatchTriangles Triangles(std::size_t body) const {
    const std::vector<double>* const of = corners + 3 * body;
    return {{{of[0].data()}, {of[1].data()}, {of[2].data()}}};
  }
};

TrianglePairs OutOfReach() {
  TrianglePairs pairs(50.0, 0.0);
  pairs.distance = 1.0;
  return pairs;
}

TrianglePairs Apart() {
  return {4.0, 10.0};
}

/// No pair is rejected, however close another pair was.
TrianglePairs EveryCandidate() {
  TrianglePairs pairs(4.0, 0.0);
  pairs.margin = std::numeric_limits<double>::infinity();
  return pairs;
}

double SweepPairs(const gsl_WideKernels& kernels, const TrianglePairs& in, bool arePrepared) {
  gsl_wide::TriangleSweepBatch batch = {};
  batch.count = kCount;
  for (std::size_t i = 0; i < 3; ++i) {
    batch.a[i] = {in.corners[i].data(), 3};
    batch.b[i] = {in.corners[i + 3].data(), 3};
  }
  if (arePrepared) {
    batch.preparedA = {in.prepared[0].data(), gsl_batch::PreparedPitch(kCount), 1};
    batch.preparedB = {in.prepared[1].data(), gsl_batch::PreparedPitch(kCount), 1};
  }
  batch.linearTolerance = 1e-6;
  batch.cosineTolerance = 1e-10;
  batch.twoSided[0] = batch.twoSided[1] = true;
  batch.margin = in.margin;
  gsl_batch::SweptPairs best = {in.distance, {}, 0, false};
  gsl_batch::SweepTriangles(kernels, batch, gsl_Vector(0.0, 0.0, 1.0).Measured(), best);
  return best.distance;
}

double SweepOneByOne(const TrianglePairs& in) {
  const gsl_Vector direction(0.0, 0.0, 1.0);
  gsl_Point contacts[2];
  double distance = in.distance;
  for (const Points<6>& p : in.pairs) {
    benchmark::DoNotOptimize(gsl_TriTriMinDirectionalDist(
        direction, p[0], p[1], p[2], p[3], p[4], p[5], kTwoSided, in.margin, contacts, distance));
  }
  return distance;
}

/// Registers run(pairs) for a whole sweep, which returns the distance.
template <class Make, class Run>
void RegisterPairs(const std::string& name, Make make, Run run) {
  benchmark::RegisterBenchmark(name.c_str(), [make, run](benchmark::State& state) {
    const auto pairs = make();
    for (auto _ : state)
      benchmark::DoNotOptimize(run(pairs));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kCount));
  });
}

/// Registers run(kernels, pairs) for the registers of each width.
template <class Make, class Run>
void RegisterPairWidths(const std::string& work, Make make, Run run) {
  RegisterPairs(work + "/ours", make,
                [run](const auto& pairs) { return run(gsl_BestWideKernels(), pairs); });
  const auto at = [&](const char* name, gsl_VectorWidth width) {
    const gsl_WideKernels* const kernels = gsl_FindWideKernels(width);
    if (kernels == nullptr || kernels == &gsl_BestWideKernels()) return;
    RegisterPairs(work + "/" + name, make,
                  [kernels, run](const auto& pairs) { return run(*kernels, pairs); });
  };
  at("baseline", gsl_VectorWidth::Baseline);
  at("avx2", gsl_VectorWidth::Avx2);
}

void RegisterTrianglePairs(const std::string& scene, TrianglePairs (*make)()) {
  for (const bool arePrepared : {false, true}) {
    const std::string work = (arePrepared ? "BatchPrepared" : "BatchSweep") + scene;
    RegisterPairWidths(work, make,
                       [arePrepared](const gsl_WideKernels& kernels, const TrianglePairs& pairs) {
                         return SweepPairs(kernels, pairs, arePrepared);
                       });
    RegisterPairs(work + "/scalar", make, SweepOneByOne);
  }
}

/// Pairs of segments in the plane z = 0, across the direction X and facing each other.
struct SegmentPairs {
  std::vector<Points<4>> pairs;
  std::vector<double> ends[4];

  explicit SegmentPairs(double aside) {
    pairs = Corpus<Points<4>>(10, [aside](Numbers& n) {
      Points<4> p;
      for (std::size_t i = 0; i < 2; ++i) {
        const double y = i == 0 ? -4.0 : 4.0;
        const double ax = n.In(-1.0, 1.0);
        const double ay = n.In(-1.0, 1.0);
        const double bx = n.In(4.0, 6.0);
        const double by = n.In(-1.0, 1.0);
        p[i] = gsl_Point(ax, y + ay, 0.0);
        p[i + 2] = gsl_Point(bx, aside - y + by, 0.0);
      }
      return p;
    });
    for (const Points<4>& p : pairs) {
      for (std::size_t i = 0; i < 4; ++i)
        ends[i].insert(ends[i].end(), {p[i].x, p[i].y, p[i].z});
    }
  }
};

double SweepSegmentPairs(const gsl_WideKernels& kernels, const SegmentPairs& in) {
  gsl_wide::SegmentSweepBatch batch = {};
  batch.count = kCount;
  for (std::size_t i = 0; i < 2; ++i) {
    batch.a[i] = {in.ends[i].data(), 3};
    batch.b[i] = {in.ends[i + 2].data(), 3};
  }
  batch.linearTolerance = 1e-6;
  batch.cosineTolerance = 1e-10;
  batch.twoSided[0] = batch.twoSided[1] = true;
  gsl_batch::SweptPairs best = {std::numeric_limits<double>::infinity(), {}, 0, false};
  gsl_batch::SweepSegments(kernels, batch, gsl_Vector(1.0, 0.0, 0.0).Measured(), best);
  return best.distance;
}

double SweepSegmentsOneByOne(const SegmentPairs& in) {
  const gsl_Vector direction(1.0, 0.0, 0.0);
  gsl_Point contacts[2];
  double distance = std::numeric_limits<double>::infinity();
  for (const Points<4>& p : in.pairs) {
    benchmark::DoNotOptimize(gsl_InPlaneSegSegMinDirectionalDist(
        direction, p[0], p[1], p[2], p[3], kTwoSided, 0.0, contacts, distance));
  }
  return distance;
}

void RegisterSegmentSweeps(const std::string& work, double aside) {
  const auto make = [aside] { return SegmentPairs(aside); };
  RegisterPairWidths(work, make, SweepSegmentPairs);
  RegisterPairs(work + "/scalar", make, SweepSegmentsOneByOne);
}

const bool registered = [] {
  RegisterPointSegments();
  RegisterPointTriangles();
  RegisterSegmentPairs();
  RegisterTransforms();
  RegisterBoxes();
  RegisterSweeps();
  RegisterTrianglePairs("OutOfReach", OutOfReach);
  RegisterTrianglePairs("Apart", Apart);
  RegisterTrianglePairs("EveryCandidate", EveryCandidate);
  RegisterSegmentSweeps("BatchInPlaneOverlapping", 0.0);
  RegisterSegmentSweeps("BatchInPlaneAside", 20.0);
  return true;
}();

} // namespace
