#include "PairKernel.h"

#include "BigNumber.h"
#include "RandomNumbers.h"
#include "reference/PairSweepOracle.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

/// Pairs whose features are all but along the direction, so that travels that are computed in
/// double are far off, or have no certain digit. Each pair is made from its travel, which is a
/// whole number of steps along a direction of whole length.
namespace {

using namespace gsl_sweep;
using oracle::IntPoint;
using oracle::Wide;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

IntPoint Plus(const IntPoint& p, std::int64_t s, const IntPoint& v) {
  return {p[0] + s * v[0], p[1] + s * v[1], p[2] + s * v[2]};
}

Wide Determinant(const IntPoint& a, const IntPoint& b, const IntPoint& c) {
  const auto minor = [&](std::size_t i, std::size_t j) {
    return Wide{b[i]} * c[j] - Wide{b[j]} * c[i];
  };
  return a[0] * minor(1, 2) + a[1] * minor(2, 0) + a[2] * minor(0, 1);
}

/// Two vectors that are almost in a plane with the direction.
struct Sliver {
  IntPoint d;
  std::int64_t length; ///< of d
  IntPoint u, v;
  std::int64_t parts; ///< 8, which divides u and v, or 3, which divides u + v
  IntPoint origin;
  double scale; ///< of all coordinates

  Coord3 At(const IntPoint& p) const {
    return {static_cast<double>(p[0]) * scale, static_cast<double>(p[1]) * scale,
            static_cast<double>(p[2]) * scale};
  }
  /// Returns a point inside the triangle of u and v, for i and j from 1 with a sum below the parts.
  IntPoint Inside(std::int64_t i, std::int64_t j) const {
    IntPoint p{};
    for (std::size_t c = 0; c < 3; ++c)
      p[c] = origin[c] + (i * u[c] + j * v[c]) / parts;
    return p;
  }
  TravelDirection Direction() const {
    return TravelDirection(
        {static_cast<double>(d[0]), static_cast<double>(d[1]), static_cast<double>(d[2])});
  }
  Triangle Face(const TravelDirection& direction) const {
    return MakeTriangle(direction, At(origin), At(Plus(origin, 1, u)), At(Plus(origin, 1, v)));
  }
  double Travel(std::int64_t steps) const { return static_cast<double>(steps * length) * scale; }
};

class SliversOf {
public:
  explicit SliversOf(unsigned seed) : m_random(seed) {}

  /// Where travels in double have some digits.
  Sliver DrawThin() { return Draw(8); }
  /// Where they have no certain digit, or one.
  Sliver DrawFine() { return Draw(3); }
  /// Where a normal that is rounded may be on the other side of the direction.
  Sliver DrawSteep() {
    for (;;) {
      Sliver sliver{};
      SetDirection(sliver);
      sliver.u = Vector(std::int64_t{1} << 52);
      const IntPoint off = Vector(1);
      sliver.v = Plus(off, (std::int64_t{1} << 52) / sliver.length, sliver.d);
      sliver.scale = 1.0;
      if (Determinant(sliver.d, sliver.u, sliver.v) != 0) return sliver;
    }
  }
  /// Where a point inside is 2^53 + 1 or 2^53 + 3 steps after a point of doubles.
  Sliver DrawEven() {
    for (;;) {
      Sliver sliver{};
      sliver.d = {1, 2, 2};
      sliver.length = 3;
      sliver.parts = 3;
      sliver.u = Doubled(Vector(std::int64_t{1} << 49));
      const IntPoint off = Doubled(Vector(2));
      const std::int64_t steps = 2 * Whole(0, std::int64_t{1} << 46);
      sliver.v = Plus(Plus(Plus({}, 3, off), -1, sliver.u), 3 * steps, sliver.d);
      const IntPoint inside =
          Plus(Doubled(Vector(std::int64_t{1} << 49)), 1,
               {std::int64_t{3} << 51, std::int64_t{3} << 51, std::int64_t{3} << 51});
      sliver.origin = Plus(Plus(inside, -1, off), -steps, sliver.d);
      sliver.scale = 1.0;
      if (Determinant(sliver.d, sliver.u, sliver.v) != 0) return sliver;
    }
  }
  /// Draws a thin or a fine one, and a point inside it.
  Sliver DrawAny(IntPoint& inside) {
    const bool isThin = Whole(0, 1) == 0;
    const Sliver sliver = isThin ? DrawThin() : DrawFine();
    inside = isThin ? sliver.Inside(Whole(1, 4), 3) : sliver.Inside(1, 1);
    return sliver;
  }

  std::int64_t Steps() { return Whole(1, 1 << 28); }
  std::int64_t Whole(std::int64_t low, std::int64_t high) {
    return WholesIn<std::int64_t>(low, high)(m_random);
  }

private:
  IntPoint Vector(std::int64_t range) {
    IntPoint p{};
    for (std::int64_t& c : p)
      c = Whole(-range, range);
    return p;
  }

  static IntPoint Doubled(const IntPoint& p) { return Plus({}, 2, p); }

  /// Sets a direction and its length by four numbers, as every such direction is made.
  void SetDirection(Sliver& sliver) {
    const std::int64_t a = Whole(1, 1023);
    const std::int64_t b = Whole(-1023, 1023);
    const std::int64_t c = Whole(-1023, 1023);
    const std::int64_t e = Whole(-1023, 1023);
    sliver.d = {a * a + b * b - c * c - e * e, 2 * (a * e + b * c), 2 * (b * e - a * c)};
    sliver.length = a * a + b * b + c * c + e * e;
  }

  void SetThinVectors(Sliver& sliver) {
    const int bits = static_cast<int>(Whole(20, 44));
    const int thin = static_cast<int>(Whole(0, bits));
    sliver.u = Vector(std::int64_t{1} << bits);
    const std::int64_t turns = Whole(-2, 2);
    const std::int64_t steps = Whole(0, std::int64_t{1} << (bits / 2));
    sliver.v = Plus(Plus(Vector(std::int64_t{1} << thin), turns, sliver.u), steps, sliver.d);
    for (std::size_t c = 0; c < 3; ++c) {
      sliver.u[c] *= 8;
      sliver.v[c] *= 8;
    }
  }

  void SetFineVectors(Sliver& sliver) {
    const int bits = static_cast<int>(Whole(44, 49));
    sliver.u = Vector(std::int64_t{1} << bits);
    const IntPoint off = Vector(2);
    const std::int64_t steps = Whole(-(1 << 26), 1 << 26);
    // The sum of both is divisible by 3.
    sliver.v = Plus(Plus(Plus({}, 3, off), -1, sliver.u), 3 * steps, sliver.d);
  }

  /// Draws vectors of eight or of three parts.
  Sliver Draw(std::int64_t parts) {
    constexpr std::array<double, 3> kScales{0x1p-70, 0x1p20, 0x1p130};
    for (;;) {
      Sliver sliver{};
      sliver.parts = parts;
      SetDirection(sliver);
      if (parts == 8) {
        SetThinVectors(sliver);
      } else {
        SetFineVectors(sliver);
      }
      sliver.origin = Vector(std::int64_t{1} << 50);
      sliver.scale = kScales[static_cast<std::size_t>(Whole(0, 2))];
      if (Determinant(sliver.d, sliver.u, sliver.v) != 0) return sliver;
    }
  }

  std::mt19937_64 m_random;
};

/// Returns a travel as the quotient that the kernel compares with its own.
ExactRatio RatioOf(const Sliver& sliver, const TravelDirection& direction, std::int64_t steps) {
  // The kernel divides the direction by a power of two.
  const std::size_t axis = sliver.d[0] != 0 ? 0 : sliver.d[1] != 0 ? 1 : 2;
  const Coord3& vector = direction.Vector();
  const double divided = axis == 0 ? vector.x : axis == 1 ? vector.y : vector.z;
  gsl_exact::Expansion<192> over;
  gsl_exact::Expansion<192> under;
  over.Append(static_cast<double>(steps) * sliver.scale * static_cast<double>(sliver.d[axis]));
  under.Append(divided);
  ExactRatio ratio;
  ratio.Set(over, under);
  return ratio;
}

void ExpectPoint(const Coord3& actual, const Coord3& expected) {
  EXPECT_EQ(actual.x, expected.x);
  EXPECT_EQ(actual.y, expected.y);
  EXPECT_EQ(actual.z, expected.z);
}

/// Where a pair meets once, and nowhere else.
struct Once {
  double travel;
  ContactKind kind;
  Coord3 onMoving, onFixed;
};

void ExpectContact(const PairContact& contact, const Once& expected) {
  EXPECT_EQ(contact.travel, expected.travel);
  EXPECT_EQ(contact.kind, expected.kind);
  EXPECT_EQ(contact.movingFeature, 0);
  EXPECT_EQ(contact.fixedFeature, 0);
  ExpectPoint(contact.onMoving, expected.onMoving);
  ExpectPoint(contact.onFixed, expected.onFixed);
}

/// Asks all that depends on how near a bracket is to the travel, which must be positive.
void ExpectOnce(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
                const ExactRatio& ratio, const Once& expected) {
  ContactInterval interval{};
  ASSERT_TRUE(FindContactInterval(direction, moving, fixed, interval));
  ExpectContact(interval.first, expected);
  ExpectContact(interval.last, expected);
  PairContact contact{};
  ExactRatio travel;
  const auto judge = [&](double limit) {
    return JudgePair(direction, moving, fixed, Rule::Touch, limit, contact, travel);
  };
  EXPECT_EQ(judge(expected.travel), PairOutcome::Ahead);
  ExpectContact(contact, expected);
  EXPECT_EQ(CompareRatios(travel, ratio), 0);
  EXPECT_EQ(judge(std::nextafter(expected.travel, 0.0)), PairOutcome::Apart);
  const auto judgeLast = [&](double least, double greatest) {
    return JudgeLast(direction, moving, fixed, Rule::Touch, {greatest, 0}, least, contact, travel);
  };
  EXPECT_EQ(judgeLast(expected.travel, kInfinity), LastOutcome::Parts);
  ExpectContact(contact, expected);
  EXPECT_EQ(CompareRatios(travel, ratio), 0);
  EXPECT_EQ(judgeLast(std::nextafter(expected.travel, kInfinity), kInfinity), LastOutcome::Apart);
  EXPECT_EQ(judgeLast(0.0, expected.travel), LastOutcome::Cut);
  EXPECT_EQ(judgeLast(0.0, std::nextafter(expected.travel, 0.0)), LastOutcome::Apart);
  PointBounds points;
  EXPECT_TRUE(MeetFirstAt(direction, moving, fixed, ratio, points));
  ExpectPoint(points.low, expected.onFixed);
  ExpectPoint(points.high, expected.onFixed);
}

constexpr int kRounds = 300;

TEST(PairSlivers, CornerOverAFaceAllButEdgeOn) {
  SliversOf slivers(11);
  for (int round = 0; round < kRounds && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(testing::Message() << "round " << round);
    IntPoint meeting{};
    const Sliver sliver = slivers.DrawAny(meeting);
    const TravelDirection direction = sliver.Direction();
    const std::int64_t steps = slivers.Steps();
    const Coord3 start = sliver.At(Plus(meeting, -steps, sliver.d));
    ExpectOnce(direction, MakeTriangle(direction, start, start, start), sliver.Face(direction),
               RatioOf(sliver, direction, steps),
               {sliver.Travel(steps), ContactKind::VertexFace, start, sliver.At(meeting)});
  }
}

TEST(PairSlivers, FaceAllButEdgeOnOverACorner) {
  SliversOf slivers(12);
  for (int round = 0; round < kRounds && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(testing::Message() << "round " << round);
    IntPoint start{};
    const Sliver sliver = slivers.DrawAny(start);
    const TravelDirection direction = sliver.Direction();
    const std::int64_t steps = slivers.Steps();
    const Coord3 meeting = sliver.At(Plus(start, steps, sliver.d));
    ExpectOnce(direction, sliver.Face(direction),
               MakeTriangle(direction, meeting, meeting, meeting),
               RatioOf(sliver, direction, steps),
               {sliver.Travel(steps), ContactKind::FaceVertex, sliver.At(start), meeting});
  }
}

TEST(PairSlivers, EdgesWhoseShadowsAreAllButParallel) {
  SliversOf slivers(13);
  for (int round = 0; round < kRounds && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(testing::Message() << "round " << round);
    IntPoint inside{};
    const Sliver sliver = slivers.DrawAny(inside);
    const TravelDirection direction = sliver.Direction();
    const std::int64_t steps = slivers.Steps();
    const IntPoint start = Plus(sliver.origin, -steps, sliver.d);
    const Coord3 fromMoving = sliver.At(Plus(start, -1, sliver.u));
    const Coord3 toMoving = sliver.At(Plus(start, 1, sliver.u));
    const Coord3 fromFixed = sliver.At(Plus(sliver.origin, -1, sliver.v));
    const Coord3 toFixed = sliver.At(Plus(sliver.origin, 1, sliver.v));
    ExpectOnce(
        direction, MakeTriangle(direction, fromMoving, toMoving, toMoving),
        MakeTriangle(direction, fromFixed, toFixed, toFixed), RatioOf(sliver, direction, steps),
        {sliver.Travel(steps), ContactKind::EdgeEdge, sliver.At(start), sliver.At(sliver.origin)});
  }
}

TEST(PairSlivers, FirstAndLastOfCornersThatAreNearlyLevel) {
  SliversOf slivers(14);
  for (int round = 0; round < kRounds && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(testing::Message() << "round " << round);
    const Sliver sliver = slivers.DrawThin();
    const TravelDirection direction = sliver.Direction();
    const Triangle fixed = sliver.Face(direction);
    const std::int64_t base = slivers.Steps() - (1 << 27);
    const std::int64_t first = slivers.Whole(0, 2);
    const std::int64_t other = slivers.Whole(1, 2);
    std::array<std::int64_t, 3> steps{base + 1, base + 1, base + 1};
    const auto least = static_cast<std::size_t>(first);
    const auto greatest = static_cast<std::size_t>((first + other) % 3);
    steps[least] = base;
    steps[greatest] = base + 2;
    const std::array<IntPoint, 3> over{sliver.Inside(1, 1), sliver.Inside(1, 6),
                                       sliver.Inside(5, 2)};
    std::array<Coord3, 3> corner{};
    for (std::size_t k = 0; k < 3; ++k)
      corner[k] = sliver.At(Plus(over[k], -steps[k], sliver.d));
    const Triangle moving = MakeTriangle(direction, corner[0], corner[1], corner[2]);
    ContactInterval interval{};
    ASSERT_TRUE(FindContactInterval(direction, moving, fixed, interval));
    EXPECT_EQ(interval.first.travel, sliver.Travel(base));
    EXPECT_EQ(interval.first.movingFeature, static_cast<int>(least));
    ExpectPoint(interval.first.onFixed, sliver.At(over[least]));
    EXPECT_EQ(interval.last.travel, sliver.Travel(base + 2));
    EXPECT_EQ(interval.last.movingFeature, static_cast<int>(greatest));
    ExpectPoint(interval.last.onFixed, sliver.At(over[greatest]));
  }
}

TEST(PairSlivers, CornerBesideTheCornerOfAFaceAllButEdgeOn) {
  // The gap to the plane is a few units, though the travel is long.
  SliversOf slivers(15);
  for (int round = 0; round < kRounds && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(testing::Message() << "round " << round);
    const Sliver sliver = slivers.DrawFine();
    const TravelDirection direction = sliver.Direction();
    // The point inside is this many steps from the first corner, and a few units beside it.
    const IntPoint meeting = sliver.Inside(1, 1);
    const std::size_t axis = sliver.d[0] != 0 ? 0 : 1;
    const double away = static_cast<double>(meeting[axis] - sliver.origin[axis]);
    const auto steps = static_cast<std::int64_t>(away / static_cast<double>(sliver.d[axis]));
    if (steps < 1) continue;
    const Coord3 start = sliver.At(Plus(meeting, -steps, sliver.d));
    ExpectOnce(direction, MakeTriangle(direction, start, start, start), sliver.Face(direction),
               RatioOf(sliver, direction, steps),
               {sliver.Travel(steps), ContactKind::VertexFace, start, sliver.At(meeting)});
  }
}

template <int N>
gsl_exact::Expansion<192> Widened(const gsl_exact::Expansion<N>& number) {
  gsl_exact::Expansion<192> result;
  for (int k = 0; k < number.count; ++k)
    result.Append(number.component[k]);
  return result;
}

TEST(PairSlivers, TravelsHalfwayBetweenTwoDoublesMeetWhateverTheyRoundTo) {
  // 2^53 + 1 and 2^53 + 3 steps are halfway. So the last of their hundred bits decides what they
  // round to, and equal quotients may round to different doubles.
  SliversOf slivers(17);
  int above = 0;
  int below = 0;
  for (int round = 0; round < kRounds && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(testing::Message() << "round " << round);
    const Sliver sliver = slivers.DrawEven();
    const TravelDirection direction = sliver.Direction();
    const Triangle fixed = sliver.Face(direction);
    const double beyond = round % 2 == 0 ? 1.0 : 3.0;
    const std::int64_t steps = (std::int64_t{1} << 53) + static_cast<std::int64_t>(beyond);
    const Coord3 start = sliver.At(Plus(sliver.Inside(1, 1), -steps, sliver.d));
    const Triangle moving = MakeTriangle(direction, start, start, start);
    PairContact contact{};
    ExactRatio travel;
    ASSERT_EQ(JudgePair(direction, moving, fixed, Rule::Touch, kInfinity, contact, travel),
              PairOutcome::Ahead);
    // The kernel divides the direction by four. The quotient is that of two numbers of 150 and of
    // 100 bits.
    const auto high = static_cast<double>(slivers.Whole(1, std::int64_t{1} << 50));
    const auto low = static_cast<double>(slivers.Whole(1, std::int64_t{1} << 50));
    const gsl_exact::Expansion<2> factor = gsl_exact::Expand({0x1p52 * high, low});
    ExactRatio ratio;
    ratio.Set(Widened(gsl_exact::Product(factor, {0x1p55, 4.0 * beyond})), Widened(factor));
    EXPECT_EQ(CompareRatios(travel, ratio), 0);
    above += travel.rounded.hi > ratio.rounded.hi ? 1 : 0;
    below += travel.rounded.hi < ratio.rounded.hi ? 1 : 0;
    PointBounds points;
    EXPECT_TRUE(MeetFirstAt(direction, moving, fixed, ratio, points));
    ExpectPoint(points.low, sliver.At(sliver.Inside(1, 1)));
  }
  EXPECT_GT(above, 0);
  EXPECT_GT(below, 0);
}

/// Returns the sign of a . b for the very doubles.
int SignOfProduct(const Coord3& a, const Coord3& b) {
  using gsl_exact::BigNumber;
  const auto times = [](double p, double q) { return BigNumber(p) * BigNumber(q); };
  return (times(a.x, b.x) + times(a.y, b.y) + times(a.z, b.z)).Sign();
}

/// Returns a component of the exact normal of a sliver, rounded.
double UnitNormal(const Sliver& sliver, std::size_t c) {
  const auto component = [&](std::size_t k) {
    const std::size_t i = (k + 1) % 3;
    const std::size_t j = (k + 2) % 3;
    return static_cast<long double>(Wide{sliver.u[i]} * sliver.v[j] -
                                    Wide{sliver.u[j]} * sliver.v[i]);
  };
  const long double x = component(0);
  const long double y = component(1);
  const long double z = component(2);
  const long double length = std::sqrt(x * x + y * y + z * z);
  const bool isAlong = Determinant(sliver.d, sliver.u, sliver.v) > 0;
  return static_cast<double>((isAlong ? -component(c) : component(c)) / length);
}

TEST(PairSlivers, NormalsAreAgainstTheDirection) {
  SliversOf slivers(16);
  int turned = 0;
  for (int round = 0; round < 4 * kRounds && !testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(testing::Message() << "round " << round);
    const Sliver sliver = slivers.DrawSteep();
    const TravelDirection direction = sliver.Direction();
    const Triangle face = sliver.Face(direction);
    Coord3 normal{};
    ASSERT_TRUE(
        ContactNormal(direction, face, face, {1.0, ContactKind::VertexFace, {}, {}}, normal));
    EXPECT_LT(SignOfProduct(normal, direction.Vector()), 0);
    const Coord3 nearest{UnitNormal(sliver, 0), UnitNormal(sliver, 1), UnitNormal(sliver, 2)};
    turned += SignOfProduct(nearest, direction.Vector()) >= 0 ? 1 : 0;
    const std::array<double, 3> actual{normal.x, normal.y, normal.z};
    const std::array<double, 3> expected{nearest.x, nearest.y, nearest.z};
    const auto dominant = static_cast<std::size_t>(direction.Dominant());
    for (std::size_t c = 0; c < 3; ++c) {
      const double turn = c == dominant ? 0x1p-52 : 0.0;
      EXPECT_NEAR(actual[c], expected[c], std::fabs(expected[c]) * 0x1p-52 + turn);
    }
  }
  EXPECT_GE(turned, 10);
}

} // namespace
