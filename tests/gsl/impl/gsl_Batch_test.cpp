#include "gsl_Batch.h"

#include "BatchCases.h"
#include "ScopedSettings.h"
#include "gsl_BBox.h"
#include "gsl_InPlaneSegSegMinDirectionalDist.h"
#include "gsl_Matrix.h"
#include "gsl_Segment.h"
#include "gsl_TriTriMinDirectionalDist.h"

#include <gtest/gtest.h>

namespace {

using namespace batch_cases;

constexpr std::size_t kCount = 4099;

gsl_Point PointAt(const std::vector<double>& numbers, std::size_t k) {
  return {numbers[3 * k], numbers[3 * k + 1], numbers[3 * k + 2]};
}

/// Points of the corpus, packed.
struct Corpus {
  std::vector<double> p[4];

  explicit Corpus(std::uint64_t seed, std::size_t count = kCount) {
    FourPoints points(seed);
    for (std::size_t k = 0; k < count; ++k) {
      points.Draw();
      for (int i = 0; i < 4; ++i) {
        p[i].push_back(points.p[i].x);
        p[i].push_back(points.p[i].y);
        p[i].push_back(points.p[i].z);
      }
    }
  }
  gsl_BatchPoints operator[](int i) const { return {p[i].data()}; }
};

bool SamePoint(const double* a, const gsl_Point& b) {
  return numbers::SameBits(a[0], b.x) && numbers::SameBits(a[1], b.y) &&
         numbers::SameBits(a[2], b.z);
}

bool SameUid(const gsl_Point& a, const gsl_Point& b) {
  return a.uid == b.uid;
}

/// The triangles of the first three points of each.
std::vector<double> PreparedOf(const Corpus& in) {
  std::vector<double> numbers(gsl_CountPreparedNumbers(kCount));
  gsl_PrepareTriangles(kCount, {{in[0], in[1], in[2]}}, numbers.data());
  return numbers;
}

/// The part that the identity of a nearest point names.
gsl_BatchPart PartOf(const gsl_Point& nearest, const gsl_Segment& segment) {
  if (SameUid(nearest, segment.Point1())) return gsl_BatchPart::First;
  return SameUid(nearest, segment.Point2()) ? gsl_BatchPart::Second : gsl_BatchPart::Foot;
}

} // namespace

TEST(GslBatch, PointSegmentsAreTheScalarCalls) {
  const Corpus in(1);
  for (const double tolerance : {1e-6, 0.0, 0.5}) {
    ScopedSettings settings;
    settings->linearTolerance = tolerance;
    std::vector<double> distances(kCount), nearest(3 * kCount, numbers::kSentinel);
    std::vector<gsl_BatchPart> parts(kCount);
    gsl_PointSegmentDistances(kCount, in[3], in[0], in[1], distances.data(), nearest.data(),
                              parts.data());
    for (std::size_t k = 0; k < kCount; ++k) {
      const gsl_Segment segment(PointAt(in.p[0], k), PointAt(in.p[1], k));
      const gsl_Point held(numbers::kSentinel, numbers::kSentinel, numbers::kSentinel);
      gsl_Point closest = held;
      const double distance = PointAt(in.p[3], k).GetDistance(segment, closest);
      ASSERT_TRUE(numbers::SameBits(distances[k], distance)) << k;
      ASSERT_TRUE(SamePoint(&nearest[3 * k], closest)) << k;
      const gsl_BatchPart part =
          SameUid(closest, held) ? gsl_BatchPart::None : PartOf(closest, segment);
      ASSERT_EQ(parts[k], part) << k;
    }
  }
}

TEST(GslBatch, PointTrianglesAreTheScalarCalls) {
  const Corpus in(2);
  for (const double tolerance : {1e-6, 0.0, 0.6, -1.0}) {
    ScopedSettings settings;
    settings->linearTolerance = tolerance;
    for (const double cosine : {1e-10, 0.1}) {
      settings->cosineTolerance = cosine;
      std::vector<double> distances(kCount);
      gsl_PointTriangleDistances(kCount, in[3], in[0], in[1], in[2], distances.data());
      for (std::size_t k = 0; k < kCount; ++k) {
        const double distance =
            PointAt(in.p[3], k)
                .GetDistance(PointAt(in.p[0], k), PointAt(in.p[1], k), PointAt(in.p[2], k));
        ASSERT_TRUE(numbers::SameBits(distances[k], distance)) << k;
      }
    }
  }
}

TEST(GslBatch, SegmentPairsAreTheScalarCalls) {
  const Corpus in(3);
  std::vector<double> distances(kCount), onA(3 * kCount, numbers::kSentinel), onB = onA;
  std::vector<gsl_BatchPart> partsA(kCount), partsB(kCount);
  gsl_SegmentDistances(kCount, in[0], in[1], in[2], in[3], distances.data(), onA.data(), onB.data(),
                       partsA.data(), partsB.data());
  const gsl_Point held(numbers::kSentinel, numbers::kSentinel, numbers::kSentinel);
  for (std::size_t k = 0; k < kCount; ++k) {
    const gsl_Segment a(PointAt(in.p[0], k), PointAt(in.p[1], k));
    const gsl_Segment b(PointAt(in.p[2], k), PointAt(in.p[3], k));
    gsl_Segment connection(held, held);
    a.GetDistance(b, connection);
    const bool isNone = SameUid(connection.Point1(), held);
    const double distance = isNone ? numbers::kNaN : connection.Length();
    ASSERT_TRUE(numbers::SameBits(distances[k], distance)) << k;
    ASSERT_TRUE(SamePoint(&onA[3 * k], connection.Point1())) << k;
    ASSERT_TRUE(SamePoint(&onB[3 * k], connection.Point2())) << k;
    ASSERT_EQ(partsA[k], isNone ? gsl_BatchPart::None : PartOf(connection.Point1(), a)) << k;
    ASSERT_EQ(partsB[k], isNone ? gsl_BatchPart::None : PartOf(connection.Point2(), b)) << k;
  }
}

TEST(GslBatch, TransformsAreTheScalarCalls) {
  const Corpus in(4);
  gsl_Matrix m;
  m.AxisRotation(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(1.0, 1.0, 0.5), 0.7);
  std::vector<double> moved(3 * kCount);
  gsl_TransformPoints(kCount, m, in[0], moved.data());
  std::vector<double> inPlace = in.p[0];
  gsl_TransformPoints(kCount, m, {inPlace.data()}, inPlace.data());
  for (std::size_t k = 0; k < kCount; ++k) {
    gsl_Point p = PointAt(in.p[0], k);
    m.Transform(p);
    ASSERT_TRUE(SamePoint(&moved[3 * k], p)) << k;
    ASSERT_TRUE(SamePoint(&inPlace[3 * k], p)) << k;
  }
}

TEST(GslBatch, BoxesAreTheScalarCalls) {
  const Corpus in(5);
  gsl_Matrix m;
  m.AxisRotation(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(1.0, 1.0, 0.5), 0.7);
  std::vector<double> moved(6 * kCount);
  gsl_TransformBoxes(kCount, m, in[0], in[1], moved.data());
  gsl_BBox around;
  for (std::size_t k = 0; k < kCount; ++k) {
    gsl_BBox box;
    box.min = PointAt(in.p[0], k);
    box.max = PointAt(in.p[1], k);
    box.Transform(m);
    ASSERT_TRUE(SamePoint(&moved[6 * k], box.min)) << k;
    ASSERT_TRUE(SamePoint(&moved[6 * k + 3], box.max)) << k;
    around.Add(PointAt(in.p[0], k));
  }
  double box[6];
  gsl_BoxOfPoints(kCount, in[0], box);
  EXPECT_TRUE(SamePoint(box, around.min));
  EXPECT_TRUE(SamePoint(box + 3, around.max));
}

TEST(GslBatch, SweepsOfTrianglesAreTheScalarCallsInOrder) {
  const Corpus first(6), second(7);
  const gsl_Vector direction(0.1, 0.2, 1.5);
  const bool twoSided[2] = {true, false};
  for (std::size_t begin = 0; begin + 40 <= kCount; begin += 37) {
    const gsl_BatchTriangles a = {
        {{&first.p[0][3 * begin], 0}, {&first.p[1][3 * begin], 0}, {&first.p[2][3 * begin], 0}}};
    const gsl_BatchTriangles b = {
        {{&second.p[0][3 * begin]}, {&second.p[1][3 * begin]}, {&second.p[2][3 * begin]}}};
    gsl_BatchContact contact = {1e3, {7.0, 7.25, 7.5}, {8.0, 8.25, 8.5}, 99};
    const bool found = gsl_SweepTriangles(40, direction, a, b, twoSided, 0.5, contact);
    gsl_Point contacts[2] = {{7.0, 7.25, 7.5}, {8.0, 8.25, 8.5}};
    double distance = 1e3;
    bool expected = false;
    std::size_t pair = 99;
    for (std::size_t k = begin; k < begin + 40; ++k) {
      const double before = distance;
      expected |= gsl_TriTriMinDirectionalDist(
          direction, PointAt(first.p[0], begin), PointAt(first.p[1], begin),
          PointAt(first.p[2], begin), PointAt(second.p[0], k), PointAt(second.p[1], k),
          PointAt(second.p[2], k), twoSided, 0.5, contacts, distance);
      if (distance < before) pair = k - begin;
    }
    ASSERT_EQ(found, expected) << begin;
    ASSERT_EQ(contact.pair, pair) << begin;
    ASSERT_TRUE(numbers::SameBits(contact.distance, distance)) << begin;
    ASSERT_TRUE(SamePoint(contact.onA, contacts[0])) << begin;
    ASSERT_TRUE(SamePoint(contact.onB, contacts[1])) << begin;
  }
}

TEST(GslBatch, SweepsOfPreparedTrianglesAreTheScalarCallsInOrder) {
  const Corpus first(8), second(9);
  const gsl_Vector direction(-0.3, 0.2, 1.5);
  const bool twoSided[2] = {true, true};
  const std::vector<double> a = PreparedOf(first), b = PreparedOf(second);
  for (std::size_t begin = 0; begin + 40 <= kCount; begin += 37) {
    const bool isShared = begin % 2 == 0;
    gsl_BatchContact contact = {1e3, {7.0, 7.25, 7.5}, {8.0, 8.25, 8.5}, 99};
    const bool found =
        gsl_SweepPreparedTriangles(40, direction, {a.data(), kCount, begin, isShared},
                                   {b.data(), kCount, begin}, twoSided, 0.5, contact);
    gsl_Point contacts[2] = {{7.0, 7.25, 7.5}, {8.0, 8.25, 8.5}};
    double distance = 1e3;
    bool expected = false;
    for (std::size_t k = begin; k < begin + 40; ++k) {
      const std::size_t i = isShared ? begin : k;
      expected |= gsl_TriTriMinDirectionalDist(
          direction, PointAt(first.p[0], i), PointAt(first.p[1], i), PointAt(first.p[2], i),
          PointAt(second.p[0], k), PointAt(second.p[1], k), PointAt(second.p[2], k), twoSided, 0.5,
          contacts, distance);
    }
    ASSERT_EQ(found, expected) << begin;
    ASSERT_TRUE(numbers::SameBits(contact.distance, distance)) << begin;
    ASSERT_TRUE(SamePoint(contact.onA, contacts[0])) << begin;
    ASSERT_TRUE(SamePoint(contact.onB, contacts[1])) << begin;
  }
}

TEST(GslBatch, PreparedTrianglesAreDecidedByTheTolerancesOfTheSweep) {
  // The sine of the edges of A is about 0.1.
  const double a[9] = {0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 2.0, 0.1, 0.0};
  const double b[9] = {-9.0, -9.0, 2.0, -9.0, 30.0, 2.0, 30.0, -9.0, 2.0};
  std::vector<double> ofA(gsl_CountPreparedNumbers(1)), ofB(ofA.size());
  gsl_PrepareTriangles(1, {{{a}, {a + 3}, {a + 6}}}, ofA.data());
  gsl_PrepareTriangles(1, {{{b}, {b + 3}, {b + 6}}}, ofB.data());
  const bool twoSided[2] = {false, false};
  // Enough pairs for whole registers.
  const auto sweep = [&] {
    gsl_BatchContact contact = {10.0, {}, {}, 99};
    const bool found =
        gsl_SweepPreparedTriangles(16, gsl_Vector(0.0, 0.0, 1.0), {ofA.data(), 1, 0, true},
                                   {ofB.data(), 1, 0, true}, twoSided, 0.0, contact);
    EXPECT_EQ(contact.distance, found ? 2.0 : 10.0);
    return found;
  };
  EXPECT_TRUE(sweep());
  ScopedSettings settings;
  settings->cosineTolerance = 0.2;
  EXPECT_FALSE(sweep()) << "A has no normal";
}

TEST(GslBatch, AlongADirectionWithoutLengthTheFirstContactStays) {
  // The stale length makes the unit vector so short that every distance is 0. The later corners of
  // A are closer to the plane of B.
  const double a[9] = {0.1, 0.2, 0.0, 1.0, 0.0, 0.5, 0.0, 1.0, 0.8};
  const double b[9] = {-9.0, -9.0, 2.0, -9.0, 30.0, 2.0, 30.0, -9.0, 2.0};
  gsl_Vector direction(0.0, 0.0, 1.0);
  direction.magnitude = 1e300;
  ScopedSettings settings;
  settings->linearTolerance = 0.0;
  const bool twoSided[2] = {true, true};
  gsl_BatchContact contact = {10.0, {}, {}, 99};
  EXPECT_TRUE(gsl_SweepTriangles(16, direction, {{{a, 0}, {a + 3, 0}, {a + 6, 0}}},
                                 {{{b, 0}, {b + 3, 0}, {b + 6, 0}}}, twoSided, 0.0, contact));
  EXPECT_EQ(contact.distance, 0.0);
  EXPECT_EQ(contact.onA[0], 0.1);
  EXPECT_EQ(contact.onA[1], 0.2);
}

TEST(GslBatch, SweepsOfSegmentsAreTheScalarCallsInOrder) {
  Corpus in(10);
  for (std::vector<double>& numbers : in.p) {
    for (std::size_t k = 0; k < kCount; k += 2)
      numbers[3 * k + 2] = 0.0;
  }
  const gsl_Vector direction(0.5, 1.5, 0.0);
  const bool twoSided[2] = {true, false};
  for (std::size_t begin = 0; begin + 40 <= kCount; begin += 37) {
    const gsl_BatchSegments a = {{{&in.p[0][3 * begin], 0}, {&in.p[1][3 * begin], 0}}};
    const gsl_BatchSegments b = {{{&in.p[2][3 * begin]}, {&in.p[3][3 * begin]}}};
    gsl_BatchContact contact = {1e3, {7.0, 7.25, 7.5}, {8.0, 8.25, 8.5}, 99};
    const bool found = gsl_SweepSegments(40, direction, a, b, twoSided, 0.01, contact);
    gsl_Point contacts[2] = {{7.0, 7.25, 7.5}, {8.0, 8.25, 8.5}};
    double distance = 1e3;
    bool expected = false;
    std::size_t pair = 99;
    for (std::size_t k = begin; k < begin + 40; ++k) {
      const double before = distance;
      expected |= gsl_InPlaneSegSegMinDirectionalDist(
          direction, PointAt(in.p[0], begin), PointAt(in.p[1], begin), PointAt(in.p[2], k),
          PointAt(in.p[3], k), twoSided, 0.01, contacts, distance);
      if (distance < before) pair = k - begin;
    }
    ASSERT_EQ(found, expected) << begin;
    ASSERT_EQ(contact.pair, pair) << begin;
    ASSERT_TRUE(numbers::SameBits(contact.distance, distance)) << begin;
    ASSERT_TRUE(SamePoint(contact.onA, contacts[0])) << begin;
    ASSERT_TRUE(SamePoint(contact.onB, contacts[1])) << begin;
  }
}

TEST(GslBatch, TheOrderOfTheEndsOfASegmentIsItsOrientation) {
  // A segment faces its edge x Z: A faces along Y, and B faces A.
  const double a[6] = {3.0, 0.0, 0.0, 1.0, 0.0, 0.0}, b[6] = {0.0, 2.0, 0.0, 10.0, 2.0, 0.0};
  const gsl_BatchSegments ofA = {{{a, 0}, {a + 3, 0}}}, ofB = {{{b, 0}, {b + 3, 0}}};
  const gsl_BatchSegments reversedA = {{{a + 3, 0}, {a, 0}}}, reversedB = {{{b + 3, 0}, {b, 0}}};
  const bool twoSided[2] = {false, false};
  const auto sweep = [&](const gsl_BatchSegments& first, const gsl_BatchSegments& second) {
    gsl_BatchContact contact = {10.0, {}, {}, 99};
    const bool found =
        gsl_SweepSegments(16, gsl_Vector(0.0, 1.0, 0.0), first, second, twoSided, 0.0, contact);
    EXPECT_EQ(contact.distance, found ? 2.0 : 10.0);
    return found;
  };
  EXPECT_TRUE(sweep(ofA, ofB));
  EXPECT_FALSE(sweep(reversedA, ofB));
  EXPECT_FALSE(sweep(ofA, reversedB));
  EXPECT_FALSE(sweep(reversedA, reversedB));
}

TEST(GslBatch, PreparingWritesAsManyNumbersAsItSays) {
  const Corpus in(11);
  for (const std::size_t count : {0u, 1u, 7u, 8u, 9u, 64u}) {
    Reals numbers(gsl_CountPreparedNumbers(count), numbers::kSentinel);
    gsl_PrepareTriangles(count, {{in[0], in[1], in[2]}}, numbers.Data());
    EXPECT_TRUE(numbers.GuardsHold()) << count;
  }
}

TEST(GslBatch, AStrideReadsPointsInsideObjects) {
  static_assert(sizeof(gsl_Point) % sizeof(double) == 0, "points are whole doubles apart");
  std::vector<gsl_Point> points;
  for (int k = 0; k < 11; ++k)
    points.emplace_back(k, 2.0 * k, 3.0);
  double box[6];
  gsl_BoxOfPoints(points.size(), {&points[0].x, sizeof(gsl_Point) / sizeof(double)}, box);
  EXPECT_EQ(box[0], 0.0);
  EXPECT_EQ(box[4], 20.0);
  EXPECT_EQ(box[5], 3.0);
}

TEST(GslBatch, NothingIsReadOrWrittenForNoInputs) {
  const gsl_BatchPoints none = {nullptr};
  gsl_PointSegmentDistances(0, none, none, none, nullptr);
  gsl_PointTriangleDistances(0, none, none, none, none, nullptr);
  gsl_SegmentDistances(0, none, none, none, none, nullptr);
  gsl_TransformPoints(0, gsl_Matrix(), none, nullptr);
  gsl_TransformBoxes(0, gsl_Matrix(), none, none, nullptr);
  const gsl_BatchTriangles noTriangles = {{none, none, none}};
  gsl_BatchContact contact = {4.0, {}, {}, 99};
  EXPECT_FALSE(
      gsl_SweepTriangles(0, gsl_Vector(), noTriangles, noTriangles, nullptr, 0.0, contact));
  const gsl_PreparedTriangles noPrepared = {nullptr, 0};
  EXPECT_FALSE(
      gsl_SweepPreparedTriangles(0, gsl_Vector(), noPrepared, noPrepared, nullptr, 0.0, contact));
  const gsl_BatchSegments noSegments = {{none, none}};
  EXPECT_FALSE(gsl_SweepSegments(0, gsl_Vector(), noSegments, noSegments, nullptr, 0.0, contact));
  gsl_PrepareTriangles(0, noTriangles, nullptr);
  EXPECT_EQ(contact.distance, 4.0);
  EXPECT_EQ(contact.pair, 99u);
  double box[6] = {};
  gsl_BoxOfPoints(0, none, box);
  EXPECT_EQ(box[2], 0.0);
  EXPECT_EQ(box[5], -1.0);
}

TEST(GslBatch, TheToleranceIsReadAtTheCall) {
  const double p[3] = {0.0, 2.0, 0.0}, a[3] = {0.0, 0.0, 0.0}, b[3] = {0.25, 0.0, 0.0};
  double distance = numbers::kSentinel;
  gsl_BatchPart part = gsl_BatchPart::Second;
  ScopedSettings settings;
  settings->linearTolerance = 0.25;
  gsl_PointSegmentDistances(1, {p}, {a}, {b}, &distance, nullptr, &part);
  EXPECT_EQ(part, gsl_BatchPart::Foot);
  EXPECT_EQ(distance, 2.0);
  settings->linearTolerance = numbers::Above(0.25);
  gsl_PointSegmentDistances(1, {p}, {a}, {b}, &distance, nullptr, &part);
  EXPECT_EQ(part, gsl_BatchPart::None);
  EXPECT_TRUE(std::isnan(distance));
}
