#include "PairKernel.h"

#include "RandomNumbers.h"
#include "reference/PairMeetings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <ostream>
#include <random>
#include <vector>

/// Every answer of the pair kernel on triangles of whole numbers, compared with a second method
/// that computes in whole numbers.
namespace {

using namespace gsl_sweep;
using oracle::Fraction;
using oracle::IntPoint;
using oracle::IntTriangle;
using oracle::Meeting;
using Points = std::vector<Meeting>;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

double Below(double c) {
  return std::nextafter(c, -kInfinity);
}

double Above(double c) {
  return std::nextafter(c, kInfinity);
}

/// Returns the root of a square, and 0 of any other number.
std::int64_t WholeRoot(std::int64_t square) {
  const auto root = static_cast<std::int64_t>(std::llround(std::sqrt(static_cast<double>(square))));
  return root * root == square ? root : 0;
}

/// One pair, as the second method and as the kernel see it. Coordinates are whole multiples of a
/// power of two.
struct WholePair {
  WholePair(const IntPoint& along, const IntTriangle& a, const IntTriangle& b, double unit)
      : d(along), wholeMoving(a), wholeFixed(b), scale(unit),
        length(WholeRoot(d[0] * d[0] + d[1] * d[1] + d[2] * d[2])), direction(ToCoord(d, 1.0)),
        moving(ToTriangle(a)), fixed(ToTriangle(b)),
        expected(oracle::TouchingTravels(d, wholeMoving, wholeFixed)) {
    if (!expected) return;
    atFirst = oracle::MeetingsAfter(d, wholeMoving, wholeFixed, expected->low);
    atLast = oracle::MeetingsAfter(d, wholeMoving, wholeFixed, expected->high);
  }

  static Coord3 ToCoord(const IntPoint& p, double unit) {
    return {static_cast<double>(p[0]) * unit, static_cast<double>(p[1]) * unit,
            static_cast<double>(p[2]) * unit};
  }

  Triangle ToTriangle(const IntTriangle& t) const {
    return MakeTriangle(direction, ToCoord(t[0], scale), ToCoord(t[1], scale),
                        ToCoord(t[2], scale));
  }

  /// Returns the double nearest to a fraction, as one division rounds once.
  double Nearest(const Fraction& f) const {
    constexpr oracle::Wide kMost = oracle::Wide{1} << 53;
    EXPECT_TRUE(f.numerator < kMost && -f.numerator < kMost && f.denominator < kMost);
    return static_cast<double>(f.numerator) / static_cast<double>(f.denominator) * scale;
  }

  /// Returns the double nearest to the travel. Requires a direction of whole length.
  double Travel(const Fraction& s) const {
    return Nearest(oracle::MakeFraction(s.numerator * length, s.denominator));
  }

  /// Returns the exact sign of travel - limit, for a limit of any size. One fma rounds once, so
  /// that its sign is exact.
  int CompareTravel(const Fraction& s, double limit) const {
    if (std::isinf(limit)) return -1;
    const double rest = std::fma(limit / scale, static_cast<double>(s.denominator),
                                 -static_cast<double>(s.numerator * length));
    return (rest < 0.0) - (rest > 0.0);
  }

  bool Touches() const {
    return expected && expected->low.Sign() <= 0 && expected->high.Sign() >= 0;
  }

  const IntPoint d;
  const IntTriangle wholeMoving, wholeFixed;
  const double scale;
  const std::int64_t length; ///< of the direction; 0 where it is not whole
  const TravelDirection direction;
  const Triangle moving, fixed;
  const std::optional<oracle::Interval> expected;
  Points atFirst, atLast;
};

std::array<double, 3> Components(const Coord3& p) {
  return {p.x, p.y, p.z};
}

/// Compares a contact with the first meeting at a travel. Each point is rounded once, except that
/// where edges cross the second one begins at the first one.
void ExpectContact(const WholePair& pair, const PairContact& contact, const Fraction& s,
                   const Points& meetings) {
  ASSERT_FALSE(meetings.empty());
  const Meeting& m = meetings[0];
  EXPECT_EQ(static_cast<int>(contact.kind), static_cast<int>(m.kind));
  EXPECT_EQ(contact.movingFeature, static_cast<int>(m.onMoving));
  EXPECT_EQ(contact.fixedFeature, static_cast<int>(m.onFixed));
  const double sign = s.Sign();
  EXPECT_EQ((contact.travel > 0.0) - (contact.travel < 0.0), sign);
  if (pair.length != 0) {
    EXPECT_EQ(contact.travel, pair.Travel(s));
  } else {
    const auto square = static_cast<long double>(pair.d[0] * pair.d[0] + pair.d[1] * pair.d[1] +
                                                 pair.d[2] * pair.d[2]);
    const auto travel = static_cast<double>(s.Value() * std::sqrt(square)) * pair.scale;
    EXPECT_NEAR(contact.travel, travel, std::fabs(travel) * 0x1p-52);
  }
  const auto onMoving = Components(contact.onMoving);
  const auto onFixed = Components(contact.onFixed);
  for (std::size_t c = 0; c < 3; ++c) {
    const Fraction before = m.point[c] + -(s * Fraction{pair.d[c], 1});
    EXPECT_EQ(onMoving[c], pair.Nearest(before));
    const double after = pair.Nearest(m.point[c]);
    const bool isExact = m.kind != oracle::MeetingKind::EdgeEdge;
    const double error = isExact ? 0.0 : (std::fabs(onMoving[c]) + std::fabs(after)) * 0x1p-52;
    EXPECT_NEAR(onFixed[c], after, error);
  }
}

PairContact Sentinel() {
  return {-77.0, ContactKind::Inside, {}, {}};
}

/// The greatest distance of a moved point of the pair from zero, by far.
double SizeOf(const WholePair& pair) {
  double size = 0.0;
  for (const IntTriangle& t : {pair.wholeMoving, pair.wholeFixed}) {
    for (const IntPoint& p : t) {
      for (const std::int64_t c : p)
        size = std::max(size, std::fabs(static_cast<double>(c)) * pair.scale);
    }
  }
  return size;
}

/// Compares a point between both contacts with the average that is weighed to a travel.
void ExpectBetween(const WholePair& pair, const ContactInterval& interval, double limit,
                   const PairContact& contact) {
  EXPECT_EQ(contact.kind, ContactKind::Overlap);
  EXPECT_EQ(contact.travel, limit);
  EXPECT_EQ(contact.movingFeature, 0);
  EXPECT_EQ(contact.fixedFeature, 0);
  const long double whole = interval.last.travel - interval.first.travel;
  const long double atLast = (limit - interval.first.travel) / whole;
  const auto between = [&](double first, double last) {
    return static_cast<double>(first * (1.0L - atLast) + last * atLast);
  };
  const double error = 4e-15 * (SizeOf(pair) + std::fabs(limit));
  const auto expect = [&](Coord3 PairContact::*side) {
    const auto first = Components(interval.first.*side);
    const auto last = Components(interval.last.*side);
    const auto actual = Components(contact.*side);
    for (std::size_t c = 0; c < 3; ++c)
      EXPECT_NEAR(actual[c], between(first[c], last[c]), error);
  };
  expect(&PairContact::onMoving);
  if (limit == 0.0) {
    EXPECT_EQ(Components(contact.onFixed), Components(contact.onMoving));
  } else {
    expect(&PairContact::onFixed);
  }
}

void CheckInterval(const WholePair& pair) {
  ContactInterval interval{Sentinel(), Sentinel()};
  const bool met = FindContactInterval(pair.direction, pair.moving, pair.fixed, interval);
  ASSERT_EQ(met, pair.expected.has_value());
  if (!met) {
    EXPECT_EQ(interval.first.travel, -77.0);
    EXPECT_EQ(interval.last.travel, -77.0);
    return;
  }
  ExpectContact(pair, interval.first, pair.expected->low, pair.atFirst);
  ExpectContact(pair, interval.last, pair.expected->high, pair.atLast);
  if (!pair.Touches()) return;
  const PairContact start = ContactAtStart(interval);
  if (pair.expected->low.Sign() == 0) {
    ExpectContact(pair, start, pair.expected->low, pair.atFirst);
  } else if (pair.expected->high.Sign() == 0) {
    ExpectContact(pair, start, pair.expected->high, pair.atLast);
  } else {
    ExpectBetween(pair, interval, 0.0, start);
  }
}

bool CountsAmongSolids(const WholePair& pair) {
  return oracle::FacingOf(pair.d, pair.wholeMoving) > 0 &&
         oracle::FacingOf(pair.d, pair.wholeFixed) < 0 &&
         oracle::ShadowsShareArea(pair.d, pair.wholeMoving, pair.wholeFixed);
}

/// What a search must hear about a pair when no limit leaves it out.
PairOutcome ExpectedOutcome(const WholePair& pair, Rule rule) {
  if (!pair.expected) return PairOutcome::Apart;
  const int first = pair.expected->low.Sign();
  const int last = pair.expected->high.Sign();
  if (rule == Rule::Solid) {
    return first >= 0 && CountsAmongSolids(pair) ? PairOutcome::Ahead : PairOutcome::Apart;
  }
  if (last < 0 || (last == 0 && rule == Rule::NotLeaving)) return PairOutcome::Apart;
  return first <= 0 ? PairOutcome::Touching : PairOutcome::Ahead;
}

/// The power of two by which the kernel divides the direction.
double ScaleOfDirection(const IntPoint& d) {
  std::int64_t largest = 0;
  for (const std::int64_t c : d)
    largest = std::max(largest, c < 0 ? -c : c);
  int exponent = 0;
  std::frexp(static_cast<double>(largest), &exponent);
  return std::ldexp(1.0, exponent);
}

void CheckJudge(const WholePair& pair, Rule rule) {
  const PairOutcome expected = ExpectedOutcome(pair, rule);
  std::vector<double> limits{kInfinity};
  if (pair.length != 0 && expected == PairOutcome::Ahead) {
    const double travel = pair.Travel(pair.expected->low);
    limits.insert(limits.end(), {travel, Below(travel)});
  }
  for (std::size_t k = 0; k < limits.size(); ++k) {
    PairContact first = Sentinel();
    ExactRatio travel;
    travel.rounded.hi = -77.0;
    const PairOutcome outcome =
        JudgePair(pair.direction, pair.moving, pair.fixed, rule, limits[k], first, travel);
    ASSERT_EQ(outcome, k == 2 ? PairOutcome::Apart : expected) << "limit " << limits[k];
    if (outcome != PairOutcome::Ahead) {
      EXPECT_EQ(first.travel, -77.0);
      EXPECT_EQ(travel.rounded.hi, -77.0);
      continue;
    }
    ExpectContact(pair, first, pair.expected->low, pair.atFirst);
    EXPECT_EQ(travel.rounded.hi, pair.Nearest(pair.expected->low) * ScaleOfDirection(pair.d));
  }
}

LastOutcome ExpectedEnd(const WholePair& pair, Rule rule, double greatest, double least) {
  if (!pair.expected) return LastOutcome::Apart;
  const int last = pair.expected->high.Sign();
  if (last < 0 || (last == 0 && rule == Rule::NotLeaving)) return LastOutcome::Apart;
  if (pair.Travel(pair.expected->high) < least) return LastOutcome::Apart;
  if (pair.CompareTravel(pair.expected->high, greatest) < 0) return LastOutcome::Parts;
  return pair.CompareTravel(pair.expected->low, greatest) > 0 ? LastOutcome::Apart
                                                              : LastOutcome::Cut;
}

/// Requires a direction of whole length.
std::vector<double> GreatestTravels(const WholePair& pair) {
  if (!pair.expected) return {kInfinity};
  const double first = pair.Travel(pair.expected->low);
  const double last = pair.Travel(pair.expected->high);
  std::vector<double> result{kInfinity, 0.0};
  for (const double travel :
       {Below(first), first, Above(first), Below(last), last, Above(last), (first + last) / 2.0})
    if (travel > 0x1p-900) result.push_back(travel);
  return result;
}

void CheckLast(const WholePair& pair, Rule rule, double greatest, double least) {
  PairContact last = Sentinel();
  ExactRatio travel;
  travel.rounded.hi = -77.0;
  // The same length, as the product of two numbers.
  const ScaledLength length{greatest * 0.125, 3};
  const LastOutcome outcome =
      JudgeLast(pair.direction, pair.moving, pair.fixed, rule, length, least, last, travel);
  ASSERT_EQ(outcome, ExpectedEnd(pair, rule, greatest, least))
      << "greatest " << greatest << " least " << least;
  if (outcome == LastOutcome::Parts) {
    ExpectContact(pair, last, pair.expected->high, pair.atLast);
    EXPECT_EQ(travel.rounded.hi, pair.Nearest(pair.expected->high) * ScaleOfDirection(pair.d));
    return;
  }
  EXPECT_EQ(last.travel, -77.0);
  EXPECT_EQ(travel.rounded.hi, -77.0);
  if (outcome != LastOutcome::Cut) return;
  const PairContact cut = ContactAtCut(pair.direction, pair.moving, pair.fixed, length);
  if (pair.CompareTravel(pair.expected->low, greatest) == 0) {
    ExpectContact(pair, cut, pair.expected->low, pair.atFirst);
  } else if (pair.CompareTravel(pair.expected->high, greatest) == 0) {
    ExpectContact(pair, cut, pair.expected->high, pair.atLast);
  } else {
    ContactInterval interval{};
    FindContactInterval(pair.direction, pair.moving, pair.fixed, interval);
    ExpectBetween(pair, interval, greatest, cut);
  }
}

void CheckEnd(const WholePair& pair) {
  if (pair.length == 0) return;
  for (const double greatest : GreatestTravels(pair)) {
    CheckLast(pair, Rule::Touch, greatest, 0.0);
    CheckLast(pair, Rule::NotLeaving, greatest, 0.0);
  }
  if (!pair.expected) return;
  const double last = pair.Travel(pair.expected->high);
  CheckLast(pair, Rule::Touch, kInfinity, last);
  CheckLast(pair, Rule::Touch, kInfinity, Above(last));
}

void ExpectBounds(const WholePair& pair, const PointBounds& bounds, const Points& meetings) {
  const auto low = Components(bounds.low);
  const auto high = Components(bounds.high);
  for (std::size_t c = 0; c < 3; ++c) {
    double least = kInfinity;
    double greatest = -kInfinity;
    for (const Meeting& m : meetings) {
      least = std::min(least, pair.Nearest(m.point[c]));
      greatest = std::max(greatest, pair.Nearest(m.point[c]));
    }
    // Where edges cross, both ways along the direction are rounded.
    const double error = 0x1p-51 * SizeOf(pair);
    EXPECT_NEAR(low[c], least, error);
    EXPECT_NEAR(high[c], greatest, error);
  }
}

void ExpectNoBounds(const PointBounds& bounds) {
  EXPECT_EQ(Components(bounds.low), Components(PointBounds().low));
  EXPECT_EQ(Components(bounds.high), Components(PointBounds().high));
}

/// Returns the same triangle with its corners in another order.
Triangle Turned(const WholePair& pair, const IntTriangle& t) {
  return pair.ToTriangle({t[1], t[2], t[0]});
}

/// Returns a travel as the quotient that the kernel compares with its own.
ExactRatio RatioOf(const WholePair& pair, const Fraction& s) {
  gsl_exact::Expansion<192> over;
  gsl_exact::Expansion<192> under;
  over.Append(static_cast<double>(s.numerator) * pair.scale * ScaleOfDirection(pair.d));
  under.Append(static_cast<double>(s.denominator));
  ExactRatio ratio;
  ratio.Set(over, under);
  return ratio;
}

void CheckMeetingFirst(const WholePair& pair) {
  const auto meet = [&pair](const Fraction& s, bool isTurned, PointBounds& points) {
    const Triangle moving = isTurned ? Turned(pair, pair.wholeMoving) : pair.moving;
    const Triangle fixed = isTurned ? Turned(pair, pair.wholeFixed) : pair.fixed;
    return MeetFirstAt(pair.direction, moving, fixed, RatioOf(pair, s), points);
  };
  PointBounds none;
  if (!pair.expected) {
    EXPECT_FALSE(meet({1, 1}, false, none));
    return ExpectNoBounds(none);
  }
  const Fraction& first = pair.expected->low;
  if (first.Sign() > 0) {
    for (const bool isTurned : {false, true}) {
      PointBounds points;
      EXPECT_TRUE(meet(first, isTurned, points));
      ExpectBounds(pair, points, pair.atFirst);
    }
    EXPECT_FALSE(meet(first / Fraction{3, 2}, false, none));
    EXPECT_FALSE(meet(pair.expected->high * Fraction{3, 2}, false, none));
  } else {
    EXPECT_FALSE(meet(first, false, none));
    EXPECT_FALSE(meet(pair.expected->high, false, none));
  }
  ExpectNoBounds(none);
}

void CheckMeetingAtStart(const WholePair& pair, Rule rule) {
  PointBounds points;
  const bool leaves = pair.expected && pair.expected->high.Sign() == 0;
  const bool meets = pair.Touches() && !(leaves && rule == Rule::NotLeaving);
  ASSERT_EQ(MeetAtStart(pair.direction, pair.moving, pair.fixed, rule, points), meets);
  if (!meets) {
    ExpectNoBounds(points);
  } else if (pair.expected->low.Sign() == 0) {
    ExpectBounds(pair, points, pair.atFirst);
  } else if (leaves) {
    ExpectBounds(pair, points, pair.atLast);
  } else {
    for (std::size_t c = 0; c < 3; ++c) {
      const auto extent = [&](const IntTriangle& t) {
        return std::minmax({t[0][c], t[1][c], t[2][c]});
      };
      const auto a = extent(pair.wholeMoving);
      const auto b = extent(pair.wholeFixed);
      const auto low = static_cast<double>(std::max(a.first, b.first)) * pair.scale;
      const auto high = static_cast<double>(std::min(a.second, b.second)) * pair.scale;
      EXPECT_EQ(Components(points.low)[c], low);
      EXPECT_EQ(Components(points.high)[c], high);
    }
  }
}

/// The edge of a triangle in whole numbers.
oracle::WidePoint EdgeOf(const IntTriangle& t, int k) {
  const auto from = static_cast<std::size_t>(k);
  return oracle::operator-(oracle::Widened(t[oracle::After(from)]), oracle::Widened(t[from]));
}

void CheckNormal(const WholePair& pair, const PairContact& contact) {
  Coord3 normal{-7.0, -8.0, -9.0};
  const bool found = ContactNormal(pair.direction, pair.moving, pair.fixed, contact, normal);
  oracle::WidePoint n{};
  if (contact.kind == ContactKind::VertexFace) {
    n = oracle::Cross(EdgeOf(pair.wholeFixed, 0), EdgeOf(pair.wholeFixed, 1));
  } else if (contact.kind == ContactKind::FaceVertex) {
    n = oracle::Cross(EdgeOf(pair.wholeMoving, 0), EdgeOf(pair.wholeMoving, 1));
  } else if (contact.kind == ContactKind::EdgeEdge) {
    n = oracle::Cross(EdgeOf(pair.wholeMoving, contact.movingFeature),
                      EdgeOf(pair.wholeFixed, contact.fixedFeature));
  }
  const oracle::Wide along = oracle::Dot(n, oracle::Widened(pair.d));
  ASSERT_EQ(found, along != 0);
  if (!found) {
    EXPECT_EQ(Components(normal), (std::array<double, 3>{-7.0, -8.0, -9.0}));
    return;
  }
  const auto square = static_cast<long double>(oracle::Dot(n, n));
  const long double length = (along > 0 ? -1.0L : 1.0L) * std::sqrt(square);
  for (std::size_t c = 0; c < 3; ++c) {
    const auto expected = static_cast<double>(static_cast<long double>(n[c]) / length);
    EXPECT_NEAR(Components(normal)[c], expected, std::fabs(expected) * 0x1p-52);
    EXPECT_FALSE(n[c] == 0 && std::signbit(Components(normal)[c]));
  }
}

void Check(const WholePair& pair) {
  CheckInterval(pair);
  for (const Rule rule : {Rule::Touch, Rule::NotLeaving, Rule::Solid})
    CheckJudge(pair, rule);
  CheckEnd(pair);
  CheckMeetingFirst(pair);
  for (const Rule rule : {Rule::Touch, Rule::NotLeaving})
    CheckMeetingAtStart(pair, rule);
  ContactInterval interval{};
  if (!FindContactInterval(pair.direction, pair.moving, pair.fixed, interval)) return;
  CheckNormal(pair, interval.first);
  CheckNormal(pair, interval.last);
}

/// Draws pairs, most of which are special in some way.
class PairsOf {
public:
  PairsOf(unsigned seed, std::int64_t range) : m_random(seed), m_range(range) {}

  WholePair Draw() {
    const IntPoint d = DrawDirection();
    IntTriangle a = DrawTriangle();
    IntTriangle b = DrawTriangle();
    switch (WholesIn<int>(0, 7)(m_random)) {
    case 0: // one of them is edge-on
      a[2] = Moved(a[1], d, Few());
      break;
    case 1:
      b[0] = Moved(b[2], d, Few());
      break;
    case 2: // both are, in one plane
      DrawWalls(d, a, b);
      break;
    case 3: // parallel
      for (IntPoint& p : b)
        p = Moved(InPlaneOf(a), d, 2);
      break;
    case 4: // corners over corners, and edges on edges
      b[0] = Moved(a[1], d, Few());
      b[1] = Moved(a[m_random() % 3], d, 1);
      break;
    case 5: // segments and points
      a[1] = a[0];
      if (m_random() % 2 == 0) b[2] = b[0];
      break;
    default:
      break;
    }
    return {d, a, b, m_random() % 2 == 0 ? 0x1p-30 : 4.0};
  }

private:
  IntPoint DrawPoint(std::int64_t range) {
    IntPoint p{};
    for (std::int64_t& c : p)
      c = WholesIn<std::int64_t>(-range, range)(m_random);
    return p;
  }

  IntTriangle DrawTriangle() {
    IntTriangle t;
    for (IntPoint& p : t)
      p = DrawPoint(m_range);
    return t;
  }

  /// Most directions have a whole length, so that travels are known to the last bit.
  IntPoint DrawDirection() {
    constexpr std::array<IntPoint, 6> kWhole{
        {{1, 0, 0}, {2, 0, 0}, {3, 0, 4}, {1, 2, 2}, {2, 3, 6}, {4, 4, 7}}};
    IntPoint d = kWhole[WholesIn<std::size_t>(0, 5)(m_random)];
    while (m_random() % 4 == 0 || d == IntPoint{})
      d = DrawPoint(3);
    std::swap(d[0], d[WholesIn<std::size_t>(0, 2)(m_random)]);
    std::swap(d[1], d[WholesIn<std::size_t>(1, 2)(m_random)]);
    for (std::int64_t& c : d)
      c = m_random() % 2 == 0 ? c : -c;
    return d;
  }

  std::int64_t Few() { return WholesIn<std::int64_t>(-2, 2)(m_random); }

  static IntPoint Moved(const IntPoint& p, const IntPoint& d, std::int64_t s) {
    return {p[0] + s * d[0], p[1] + s * d[1], p[2] + s * d[2]};
  }

  /// Returns a point on the line of two points.
  static IntPoint Between(const IntPoint& p, const IntPoint& q, std::int64_t s) {
    return Moved(p, {q[0] - p[0], q[1] - p[1], q[2] - p[2]}, s);
  }

  /// Makes two triangles in one plane along the direction.
  void DrawWalls(const IntPoint& d, IntTriangle& a, IntTriangle& b) {
    const IntPoint from = a[0];
    const IntPoint to = b[0];
    for (IntTriangle* t : {&a, &b}) {
      for (IntPoint& p : *t) {
        p = Between(from, to, Few());
        p = Moved(p, d, Few());
      }
    }
  }

  IntPoint InPlaneOf(const IntTriangle& t) {
    const IntPoint p = Between(t[0], t[1], Few());
    return Moved(p, {t[2][0] - t[0][0], t[2][1] - t[0][1], t[2][2] - t[0][2]}, Few());
  }

  std::mt19937_64 m_random;
  std::int64_t m_range;
};

struct MeetingsCase {
  unsigned seed;
  std::int64_t range;
  int count;
};

void PrintTo(const MeetingsCase& tested, std::ostream* out) {
  *out << "seed " << tested.seed << ", range " << tested.range;
}

class EveryPair : public testing::TestWithParam<MeetingsCase> {};

TEST_P(EveryPair, AgreesWithWholeNumbersInEveryAnswer) {
  PairsOf pairs(GetParam().seed, GetParam().range);
  for (int round = 0; round < GetParam().count && !HasFailure(); ++round) {
    SCOPED_TRACE(testing::Message() << "round " << round);
    Check(pairs.Draw());
  }
}

TEST(PairMeetings, PairsMeetInEveryWay) {
  PairsOf pairs(77, 2);
  std::array<int, 6> kinds{};
  int apart = 0;
  int through = 0;
  int solids = 0;
  for (int round = 0; round < 1000; ++round) {
    const WholePair pair = pairs.Draw();
    apart += pair.expected ? 0 : 1;
    if (!pair.expected) continue;
    ++kinds[static_cast<std::size_t>(pair.atFirst[0].kind)];
    through += pair.expected->low.Sign() < 0 && pair.expected->high.Sign() > 0 ? 1 : 0;
    solids += ExpectedOutcome(pair, Rule::Solid) == PairOutcome::Ahead ? 1 : 0;
  }
  for (const int count :
       {apart, through, solids, kinds[0], kinds[1], kinds[2], kinds[3], kinds[4], kinds[5]})
    EXPECT_GE(count, 10);
}

// Ranges of one and two make nearly every pair degenerate in some way.
INSTANTIATE_TEST_SUITE_P(PairMeetings, EveryPair,
                         testing::Values(MeetingsCase{1, 1, 200}, MeetingsCase{2, 1, 200},
                                         MeetingsCase{3, 2, 200}, MeetingsCase{4, 2, 200},
                                         MeetingsCase{5, 3, 200}, MeetingsCase{6, 3, 200},
                                         MeetingsCase{7, 5, 200}, MeetingsCase{8, 12, 200},
                                         MeetingsCase{9, 30, 200}, MeetingsCase{10, 100, 200}));

} // namespace
