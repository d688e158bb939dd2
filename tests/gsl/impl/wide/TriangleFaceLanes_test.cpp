#include "wide/TriangleFaceLanes.h"

#include "SweepBatches.h"
#include "TriTriTranscription.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

namespace {

using namespace sweep_batches;
using gsl_arithmetic::Coord3;
using gsl_wide::TriangleSweepBatch;

/// Pairs of faces that attack the bounds of the lanes. They lie across Z or nearly so.
class FaceCases {
public:
  enum Family {
    Aside,
    NearlyParallelEdges,
    EqualDistances,
    NeedlesAside,
    FarFromTheOrigin,
    EndToEnd,
    ShortEdgesAside,
    kFamilies
  };

  explicit FaceCases(std::uint64_t seed) : m_random(seed) {}

  /// Every case has this direction.
  void Keep(const gsl_Vector& direction) { m_direction = direction; }

  SweepCase Next(Family family) {
    SweepCase c;
    c.direction = m_direction;
    c.margin = m_random.Chance(0.5) ? 1e9 : 0.0;
    switch (family) {
    case NearlyParallelEdges:
      Face(c.a, 0.5);
      Copy(c, std::pow(10.0, m_random.In(-8.0, -1.0)), m_random.In(-0.5, 0.5));
      break;
    case EqualDistances:
      Level(c);
      break;
    case NeedlesAside:
      Face(c.a, std::pow(10.0, m_random.In(-6.0, 0.0)));
      Face(c.b, std::pow(10.0, m_random.In(-6.0, 0.0)));
      Part(c);
      break;
    case FarFromTheOrigin:
      Face(c.a, 1.0);
      Face(c.b, 1.0);
      Part(c);
      Move(c.a, std::pow(10.0, m_random.In(0.0, 5.0)), c.b);
      break;
    case EndToEnd:
      LineUp(c);
      break;
    case ShortEdgesAside:
      Face(c.a, 1.0);
      Face(c.b, 1.0);
      Shorten(c, std::pow(10.0, m_random.In(-5.0, 0.0)), std::pow(10.0, m_random.In(0.0, 2.0)));
      Part(c);
      break;
    default:
      Face(c.a, 1.0);
      Copy(c, std::pow(10.0, m_random.In(-8.0, 0.0)), 0.0);
      Part(c);
      break;
    }
    return c;
  }

private:
  RandomNumbers m_random;
  gsl_Vector m_direction = gsl_Vector(0.0, 0.0, 1.0);

  /// Makes a triangle of about the size 1, as thin as `width`.
  void Face(gsl_Point* tri, double width) {
    const double turn = m_random.In(0.0, 6.3), c = std::cos(turn), s = std::sin(turn);
    for (int i = 0; i < 3; ++i) {
      const double x = m_random.In(-1.0, 1.0);
      const double y = m_random.In(-1.0, 1.0) * width;
      tri[i] = gsl_Point(c * x - s * y, s * x + c * y, m_random.In(-0.2, 0.2));
    }
  }

  /// Makes B a copy of A, with corners that are moved a little, and `aside` of A.
  void Copy(SweepCase& c, double little, double aside) {
    const double z = m_random.In(0.0, 3.0);
    for (int i = 0; i < 3; ++i) {
      const double x = m_random.In(-little, little);
      c.b[i] = c.a[i] + gsl_Vector(aside + x, m_random.In(-little, little), z);
    }
  }

  /// Makes an edge of each that lie nearly on one line. The lines cross about the gap between them,
  /// or where they overlap.
  void LineUp(SweepCase& c) {
    const double apart = std::pow(10.0, m_random.In(-9.0, -2.0));
    const double gap = m_random.Chance(0.3) ? -m_random.In(0.05, 0.5) : apart;
    const double angle = std::pow(10.0, m_random.In(-5.2, -3.0));
    const double crossing = m_random.In(-0.5, 1.5) * gap;
    const double z = m_random.In(0.5, 3.0);
    c.a[0] = gsl_Point(-m_random.In(0.1, 1.0), 0.0, m_random.In(-0.2, 0.2));
    c.a[1] = gsl_Point(0.0, 0.0, m_random.In(-0.2, 0.2));
    c.a[2] = gsl_Point(-0.5, -m_random.In(0.1, 1.0), m_random.In(-0.2, 0.2));
    const double end = gap + m_random.In(0.1, 1.0);
    c.b[0] = gsl_Point(gap, angle * (gap - crossing), z + m_random.In(-0.2, 0.2));
    c.b[1] = gsl_Point(end, angle * (end - crossing), z + m_random.In(-0.2, 0.2));
    c.b[2] = gsl_Point(0.5, m_random.In(0.1, 1.0), z + m_random.In(-0.2, 0.2));
    // A turn by a multiple of a right angle keeps the gap along an axis.
    const double x = m_random.In(-3.0, 3.0),
                 y = m_random.Chance(0.5) ? 0.0 : m_random.In(-3.0, 3.0);
    const bool isTurned = m_random.Chance(0.5);
    for (gsl_Point* const tri : {c.a, c.b}) {
      for (int i = 0; i < 3; ++i)
        tri[i] = isTurned ? gsl_Point(-tri[i].y + x, tri[i].x + y, tri[i].z)
                          : gsl_Point(tri[i].x + x, tri[i].y + y, tri[i].z);
    }
  }

  /// Makes triangles of this size, and an edge of either as short as `part` of it.
  void Shorten(SweepCase& c, double part, double size) {
    gsl_Point* const tri = m_random.Chance(0.5) ? c.a : c.b;
    const int i = m_random.Below(3);
    tri[i] = gsl_Point(tri[i], part, tri[(i + 1) % 3], 1.0 - part);
    for (int k = 0; k < 3; ++k) {
      c.a[k] = gsl_Point(c.a[k].x * size, c.a[k].y * size, c.a[k].z * size);
      c.b[k] = gsl_Point(c.b[k].x * size, c.b[k].y * size, c.b[k].z * size);
    }
  }

  /// Both triangles are level, or B is about a last place off: distances are equal or nearly equal.
  void Level(SweepCase& c) {
    Face(c.a, 1.0);
    Face(c.b, 1.0);
    const double height = m_random.In(0.0, 3.0);
    const double slope = m_random.Chance(0.5) ? 0.0 : m_random.In(-1.0, 1.0);
    const double offs[3] = {0.0, 1e-16, 1e-15};
    const double off = offs[m_random.Below(3)];
    for (int i = 0; i < 3; ++i) {
      c.a[i].z = slope * c.a[i].x;
      c.b[i].z = slope * c.b[i].x + height * (1.0 + m_random.In(-off, off));
    }
  }

  /// Moves B aside, so that the boxes have a gap of about the least that counts, or of any size.
  void Part(SweepCase& c) {
    const bool isAlongX = m_random.Chance(0.5);
    const double sizes[3] = {m_random.In(0.0, 0.05), m_random.In(0.0, 5.0),
                             std::pow(10.0, m_random.In(0.0, 6.0))};
    const auto along = [isAlongX](const gsl_Point& p) { return isAlongX ? p.x : p.y; };
    double high = along(c.a[0]), low = along(c.b[0]);
    for (int i = 1; i < 3; ++i) {
      high = std::max(high, along(c.a[i]));
      low = std::min(low, along(c.b[i]));
    }
    const double way = high - low + sizes[m_random.Below(3)];
    const double z = m_random.In(-0.5, 3.0);
    for (gsl_Point& p : c.b)
      p = p + gsl_Vector(isAlongX ? way : 0.0, isAlongX ? 0.0 : way, z);
  }

  void Move(gsl_Point* a, double far, gsl_Point* b) {
    const double x = m_random.In(-far, far);
    const double y = m_random.In(-far, far);
    const gsl_Vector way(x, y, m_random.In(-far, far));
    for (int i = 0; i < 3; ++i) {
      a[i] = a[i] + way;
      b[i] = b[i] + way;
    }
  }
};

using FaceBatch = SweepBatch<FaceCases, SweepCase, 3>;

long left = 0, taken = 0;

void CountedOne(const TriangleSweepBatch& batch, std::size_t k) {
  ++left;
  gsl_batch::OneTrianglePair(batch, k);
}

void CountedTake(const TriangleSweepBatch& batch, const gsl_wide::TriangleGroup& group) {
  for (unsigned found = group.found; found != 0; found &= found - 1)
    ++taken;
  gsl_batch::TakeTriangles(batch, group);
}

/// Sweeps 4096 pairs along Z with the usual tolerances and counts what the lanes leave and find.
template <class Make>
SweptPairs Count(const gsl_WideKernels& kernels, const Make& make) {
  constexpr std::size_t kCount = 4096;
  std::vector<PointArray> corners(6, PointArray(kCount, 3));
  RandomNumbers random(11);
  for (std::size_t k = 0; k < kCount; ++k) {
    Coord3 p[6];
    make(random, p);
    for (std::size_t i = 0; i < 6; ++i)
      corners[i].Set(k, p[i]);
  }
  TriangleSweepBatch batch = {};
  batch.count = kCount;
  for (std::size_t i = 0; i < 3; ++i) {
    batch.a[i] = corners[i].In();
    batch.b[i] = corners[i + 3].In();
  }
  batch.direction[2] = batch.axis[2] = batch.length = 1.0;
  batch.linearTolerance = 1e-6;
  batch.cosineTolerance = 1e-10;
  batch.twoSided[0] = batch.twoSided[1] = true;
  batch.margin = numbers::kInfinity;
  SweptPairs best = FaceBatch::Nothing(numbers::kInfinity);
  gsl_batch::SweptTriangles swept = {best};
  batch.distance = &best.distance;
  batch.contact = &swept;
  batch.one = CountedOne;
  batch.take = CountedTake;
  left = taken = 0;
  kernels.sweepTriangles(batch);
  return best;
}

/// Six corners near the origin; those of B are 4 ahead and `aside`.
void AnyPair(RandomNumbers& random, Coord3 (&p)[6], double aside) {
  for (int i = 0; i < 6; ++i) {
    const double x = random.In(-1.0, 1.0) + (i < 3 ? 0.0 : aside);
    const double y = random.In(-1.0, 1.0);
    p[i] = {x, y, random.In(-1.0, 1.0) + (i < 3 ? 0.0 : 4.0)};
  }
}

/// Calls the sweep of one pair along Z.
double SingleCall(const Coord3 (&p)[6]) {
  const auto at = [&p](int i) { return gsl_Point(p[i].x, p[i].y, p[i].z); };
  const bool twoSided[2] = {true, true};
  gsl_Point contacts[2];
  double distance = numbers::kInfinity;
  static_cast<void>(gsl_TriTriMinDirectionalDist(gsl_Vector(0.0, 0.0, 1.0), at(0), at(1), at(2),
                                                 at(3), at(4), at(5), twoSided, 0.0, contacts,
                                                 distance));
  return distance;
}

} // namespace

TEST(TriangleFaceLanes, EveryWidthFindsWhatTheLoopOfSingleCallsFindsAtTheBounds) {
  constexpr std::uint64_t kSeed = 0xFACE;
  std::printf("seed %d\n", static_cast<int>(kSeed));
  for (int family = 0; family < FaceCases::kFamilies; ++family)
    ExpectTheLoopOfTriangles<FaceBatch, FaceCases>(family, kSeed, 20000, [](auto&&... arguments) {
      return transcription::TriTriMinDirectionalDist(arguments...);
    });
}

TEST(TriangleFaceLanes, NearlyAllRandomPairsAreDecided) {
  for (const gsl_WideKernels* const kernels : batch_cases::AllKernels()) {
    Count(*kernels, [](RandomNumbers& random, Coord3(&p)[6]) { AnyPair(random, p, 0.0); });
    EXPECT_LT(left, 4096 / 50);
    EXPECT_GT(taken, 4096 / 2);
  }
}

TEST(TriangleFaceLanes, PairsFarAsideAreRejectedInTheLanes) {
  for (const double aside : {2.5, 10.0, 1000.0}) {
    for (const gsl_WideKernels* const kernels : batch_cases::AllKernels()) {
      Count(*kernels, [aside](RandomNumbers& random, Coord3(&p)[6]) { AnyPair(random, p, aside); });
      EXPECT_LT(left, 4096 / 50) << aside;
      EXPECT_EQ(taken, 0) << aside;
    }
  }
}

TEST(TriangleFaceLanes, TheFirstOfEqualDistancesIsDecidedInTheLanes) {
  // Every contact is 2 away. The first corner of A is the first of them.
  const auto make = [](RandomNumbers&, Coord3(&p)[6]) {
    const Coord3 level[6] = {{0.1, 0.2, 0.0},   {1.0, 0.0, 0.0},  {0.0, 1.0, 0.0},
                             {-3.1, -3.2, 2.0}, {9.3, -3.3, 2.0}, {-3.4, 9.5, 2.0}};
    std::copy(level, level + 6, p);
  };
  for (const gsl_WideKernels* const kernels : batch_cases::AllKernels()) {
    const SweptPairs best = Count(*kernels, make);
    EXPECT_EQ(left, 0);
    EXPECT_EQ(best.pair, 0u);
    EXPECT_EQ(best.distance, 2.0);
    EXPECT_TRUE(Same(best.contact[0], Coord3{0.1, 0.2, 0.0}));
  }
}

TEST(TriangleFaceLanes, FacesThatAreParallelButForRoundingAreDecidedInTheLanes) {
  const auto make = [](RandomNumbers& random, Coord3(&p)[6]) {
    AnyPair(random, p, 0.0);
    for (int i = 0; i < 6; ++i)
      p[i].z = 0.3 * p[i].x - 0.7 * p[i].y + (i < 3 ? 0.0 : 4.1);
  };
  for (const gsl_WideKernels* const kernels : batch_cases::AllKernels()) {
    Count(*kernels, make);
    EXPECT_LT(left, 4096 / 50);
    EXPECT_GT(taken, 4096 / 2);
  }
}

TEST(TriangleFaceLanes, ACornerAtTheBorderIsLeft) {
  // The first corner of A is below an edge of B, where rounding decides.
  const auto make = [](RandomNumbers&, Coord3(&p)[6]) {
    const Coord3 touching[6] = {{0.0, 0.0, 0.0},  {1.0, 0.5, 0.0},  {0.5, 1.0, 0.0},
                                {-1.0, 1.0, 2.0}, {1.0, -1.0, 2.0}, {-3.0, -3.0, 2.0}};
    std::copy(touching, touching + 6, p);
  };
  for (const gsl_WideKernels* const kernels : batch_cases::AllKernels()) {
    EXPECT_EQ(Count(*kernels, make).distance, 2.0);
    EXPECT_EQ(left, 4096);
  }
}

TEST(TriangleFaceLanes, TheBorderOfTheTriangleTestIsTheBorderOfTheSingleCall) {
  // A corner of A is below B, beside its last edge by the square of the tolerance divided by the
  // area. That is many tolerances, because B is small. It is closer to B than where the edges of A
  // lead.
  const double s = 0.004;
  Coord3 p[6] = {{0.001, 0.0, 0.0}, {0.1, -5.0, 1.0}, {0.3, -5.0, 1.0},
                 {0.0, 0.0, 2.0},   {0.0, s, 2.0},    {s, 0.0, 2.0}};
  double in = 1e-6, out = 1e-3;
  while (numbers::Above(in) < out) {
    const double middle = in + (out - in) / 2.0;
    p[0].y = -middle;
    (SingleCall(p) == 2.0 ? in : out) = middle;
  }
  ASSERT_NEAR(in, 1e-12 / (s * s * s), 1e-6);
  double y = in;
  for (int i = 0; i < 20; ++i)
    y = numbers::Below(y);
  for (int i = 0; i < 40; ++i, y = numbers::Above(y)) {
    p[0].y = -y;
    const auto make = [&p](RandomNumbers&, Coord3(&to)[6]) { std::copy(p, p + 6, to); };
    for (const gsl_WideKernels* const kernels : batch_cases::AllKernels())
      ASSERT_EQ(Count(*kernels, make).distance, SingleCall(p)) << i;
  }
}

TEST(TriangleFaceLanes, AWeightWhoseQuotientLosesItsDigitsIsNotCertain) {
  namespace lanes = gsl_wide::GSL_LANES_NAMESPACE;
  const auto at = [](double x, double y) {
    return lanes::Coords{lanes::Splat(x), lanes::Splat(y), lanes::Splat(0.0)};
  };
  // The weight is within the square of the tolerance, and the documented quotient is beyond it.
  const lanes::LaneTriangle tri = {{at(0.0, 0.0), at(5e34, 0.0), at(0.0, 5e34)}};
  lanes::LaneTriangleTest beside(tri, 4.97e-93);
  static_cast<void>(beside.Contains(at(1e34, -1.73e-289)));
  EXPECT_EQ(lanes::MaskOf(beside.isCertain), 0u);
  lanes::LaneTriangleTest within(tri, 4.97e-93);
  static_cast<void>(within.Contains(at(1e34, 1e34)));
  EXPECT_NE(lanes::MaskOf(within.isCertain), 0u);
}

TEST(TriangleFaceLanes, TheReachOfCrossingsCountsACornerAndTwoEdgesOfEach) {
  namespace lanes = gsl_wide::GSL_LANES_NAMESPACE;
  const auto at = [](double x, double y) {
    return lanes::Coords{lanes::Splat(x), lanes::Splat(y), lanes::Splat(0.0)};
  };
  // The first corner of A is 1 from the origin, and its edges at that corner are 2 and 3 long. The
  // edges of the shadow at its first corner, the origin, are 6 and 8 long.
  const lanes::LaneTriangle a = {{at(1.0, 0.0), at(1.0, 2.0), at(4.0, 0.0)}};
  const lanes::LaneTriangle s = {{at(0.0, 0.0), at(6.0, 0.0), at(0.0, 8.0)}};
  const lanes::LaneEdges ofA = lanes::EdgesOf(a), ofS = lanes::EdgesOf(s);
  const lanes::LaneCrossings crossings(a, ofA, s, ofS, 1e-6);
  EXPECT_NEAR(crossings.reach[0], std::sqrt(8.0 * (1.0 + 4.0 + 9.0 + 36.0 + 64.0)), 1e-12);
}
