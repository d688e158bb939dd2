#include "RationalSweep.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace reference {

namespace {

WholePoint operator+(const WholePoint& a, const WholePoint& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}

WholePoint operator-(const WholePoint& a, const WholePoint& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}

WholePoint operator*(const WholePoint& a, const Whole& s) {
  return {a.x * s, a.y * s, a.z * s};
}

Whole Dot(const WholePoint& a, const WholePoint& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

WholePoint Cross(const WholePoint& a, const WholePoint& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

bool IsZero(const WholePoint& a) {
  return a.x == 0 && a.y == 0 && a.z == 0;
}

RationalPoint operator-(const RationalPoint& a, const RationalPoint& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}

RationalPoint operator*(const RationalPoint& a, const Rational& s) {
  return {a.x * s, a.y * s, a.z * s};
}

Rational Dot(const RationalPoint& a, const RationalPoint& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

RationalPoint Cross(const RationalPoint& a, const RationalPoint& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

std::size_t Next(std::size_t k) {
  return k == 2 ? 0 : k + 1;
}

/// A corner in coordinates in which the direction is (0, 0, reach), with reach > 0: two whole
/// numbers that do not change along the direction, and a height that does.
struct Sheared {
  Whole u, v, height;
};

struct Shear {
  explicit Shear(const WholePoint& direction) {
    const Whole* c[3] = {&direction.x, &direction.y, &direction.z};
    while (*c[axis] == 0)
      ++axis;
    along = *c[axis];
    acrossU = *c[Next(axis)];
    acrossV = *c[Next(Next(axis))];
    reach = abs(along);
  }

  void Apply(const WholePoint& p, Sheared& out) const {
    const Whole* c[3] = {&p.x, &p.y, &p.z};
    const Whole& height = *c[axis];
    out.u = along * *c[Next(axis)] - acrossU * height;
    out.v = along * *c[Next(Next(axis))] - acrossV * height;
    out.height = along > 0 ? height : Whole(-height);
  }

  std::size_t axis = 0;
  Whole along, acrossU, acrossV, reach;
};

/// A triangle, sheared, with its extents.
struct ShearedTriangle {
  Sheared corner[3];
  Whole uLow, uHigh, vLow, vHigh, low, high;

  void Measure() {
    const auto extent = [this](Whole Sheared::*c, Whole& least, Whole& most) {
      least = std::min({corner[0].*c, corner[1].*c, corner[2].*c});
      most = std::max({corner[0].*c, corner[1].*c, corner[2].*c});
    };
    extent(&Sheared::u, uLow, uHigh);
    extent(&Sheared::v, vLow, vHigh);
    extent(&Sheared::height, low, high);
  }
};

/// Intersects the line u = v = 0 with the hull of nine differences. By Caratheodory's theorem each
/// end of the intersection is a combination of at most three differences with positive and unique
/// weights. So it is one point on the line, two points on opposite sides of the line, or three
/// points around the line.
class LineThroughHull {
public:
  /// Computes the heights of the ends. Returns false when the line misses the hull.
  bool Cut(const ShearedTriangle& moving, const ShearedTriangle& fixed) {
    m_any = false;
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t j = 0; j < 3; ++j)
        SetDifference(3 * i + j, moving.corner[i], fixed.corner[j]);
    }
    FillCrosses();
    for (std::size_t i = 0; i < 9; ++i) {
      if (IsOnLine(i)) Take(m_point[i].height, Whole(1));
      for (std::size_t j = i + 1; j < 9; ++j) {
        if (AreOpposite(i, j)) TakePair(i, j);
        for (std::size_t k = j + 1; k < 9; ++k)
          if (AreAround(i, j, k)) TakeTriple(i, j, k);
      }
    }
    return m_any;
  }

  Rational Low() const { return {m_low, m_lowUnder}; }
  Rational High() const { return {m_high, m_highUnder}; }

private:
  void SetDifference(std::size_t k, const Sheared& from, const Sheared& to) {
    m_point[k].u = to.u - from.u;
    m_point[k].v = to.v - from.v;
    m_point[k].height = to.height - from.height;
  }

  void FillCrosses() {
    for (std::size_t i = 0; i < 9; ++i) {
      for (std::size_t j = i + 1; j < 9; ++j) {
        m_cross[i][j] = m_point[i].u * m_point[j].v - m_point[i].v * m_point[j].u;
        m_side[i][j] = sgn(m_cross[i][j]);
      }
    }
  }

  bool IsOnLine(std::size_t i) const { return m_point[i].u == 0 && m_point[i].v == 0; }

  bool AreOpposite(std::size_t i, std::size_t j) const {
    return m_side[i][j] == 0 &&
           (sgn(m_point[i].u) * sgn(m_point[j].u) < 0 || sgn(m_point[i].v) * sgn(m_point[j].v) < 0);
  }

  bool AreAround(std::size_t i, std::size_t j, std::size_t k) const {
    const int side = m_side[i][j];
    return side != 0 && m_side[j][k] == side && m_side[i][k] == -side;
  }

  void TakePair(std::size_t i, std::size_t j) {
    const bool byU = m_point[i].u != 0;
    const Whole atI = abs(byU ? m_point[j].u : m_point[j].v);
    const Whole atJ = abs(byU ? m_point[i].u : m_point[i].v);
    Take(atI * m_point[i].height + atJ * m_point[j].height, atI + atJ);
  }

  void TakeTriple(std::size_t i, std::size_t j, std::size_t k) {
    m_over = m_cross[j][k] * m_point[i].height - m_cross[i][k] * m_point[j].height +
             m_cross[i][j] * m_point[k].height;
    m_under = m_cross[j][k] - m_cross[i][k] + m_cross[i][j];
    if (m_under < 0) {
      m_over = -m_over;
      m_under = -m_under;
    }
    Take(m_over, m_under);
  }

  void Take(const Whole& over, const Whole& under) {
    if (!m_any || over * m_lowUnder < m_low * under) {
      m_low = over;
      m_lowUnder = under;
    }
    if (!m_any || over * m_highUnder > m_high * under) {
      m_high = over;
      m_highUnder = under;
    }
    m_any = true;
  }

  Sheared m_point[9];
  Whole m_cross[9][9];
  int m_side[9][9];
  Whole m_over, m_under, m_low, m_lowUnder, m_high, m_highUnder;
  bool m_any = false;
};

bool IsInsideSegment(const WholePoint& p, const WholePoint& a, const WholePoint& b) {
  const WholePoint e = b - a;
  const WholePoint r = p - a;
  if (!IsZero(Cross(e, r))) return false;
  const Whole at = Dot(e, r);
  return at > 0 && at < Dot(e, e);
}

bool IsInsideFace(const WholePoint& p, const WholeTriangle& t) {
  const WholePoint normal = Cross(t[1] - t[0], t[2] - t[0]);
  if (IsZero(normal) || Dot(normal, p - t[0]) != 0) return false;
  for (std::size_t k = 0; k < 3; ++k)
    if (Dot(normal, Cross(t[Next(k)] - t[k], p - t[k])) <= 0) return false;
  return true;
}

/// Finds the crossing of the insides of two segments that are not parallel.
std::optional<RationalPoint> Crossing(const WholePoint& a, const WholePoint& b, const WholePoint& c,
                                      const WholePoint& d) {
  const WholePoint e = b - a;
  const WholePoint f = d - c;
  const WholePoint r = c - a;
  const WholePoint normal = Cross(e, f);
  if (IsZero(normal) || Dot(normal, r) != 0) return std::nullopt;
  const Whole whole = Dot(normal, normal);
  const Whole onE = Dot(Cross(r, f), normal);
  const Whole onF = Dot(Cross(r, e), normal);
  if (onE <= 0 || onE >= whole || onF <= 0 || onF >= whole) return std::nullopt;
  Rational at(onE, whole);
  at.canonicalize();
  return RationalPoint{a.x + at * e.x, a.y + at * e.y, a.z + at * e.z};
}

RationalPoint ToRational(const WholePoint& p) {
  return {Rational(p.x), Rational(p.y), Rational(p.z)};
}

RationalPoint Scaled(const RationalPoint& p, int exponent) {
  const auto scaled = [exponent](const Rational& c) {
    Rational result;
    if (exponent >= 0) {
      mpq_mul_2exp(result.get_mpq_t(), c.get_mpq_t(), static_cast<mp_bitcnt_t>(exponent));
    } else {
      mpq_div_2exp(result.get_mpq_t(), c.get_mpq_t(), static_cast<mp_bitcnt_t>(-exponent));
    }
    return result;
  };
  return {scaled(p.x), scaled(p.y), scaled(p.z)};
}

template <class Visit>
void VisitComponents(const Coord3& p, const Visit& visit) {
  visit(p.x);
  visit(p.y);
  visit(p.z);
}

bool IsFinite(const Coord3& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

/// Converts doubles to whole multiples of one power of two.
class WholeScale {
public:
  /// Requires numbers whose largest magnitude is given.
  explicit WholeScale(double largest) { std::frexp(largest, &m_top); }

  /// Returns the number that the decision uses.
  double Decided(double c) const {
    if (std::fabs(c) >= std::ldexp(1.0, std::max(m_top - 288, -1074))) return c;
    return std::ldexp(std::nearbyint(std::ldexp(c, 339 - m_top)), m_top - 339);
  }

  void Cover(const Coord3& p) {
    VisitComponents(p, [this](double c) {
      const double decided = Decided(c);
      if (decided == 0.0) return;
      int exponent = 0;
      auto bits = static_cast<std::int64_t>(std::ldexp(std::frexp(decided, &exponent), 53));
      exponent -= 53;
      for (; (bits & 1) == 0; bits /= 2)
        ++exponent;
      m_unit = std::min(m_unit, exponent);
    });
  }

  int Unit() const { return m_unit; }

  WholePoint Of(const Coord3& p) const { return {Of(p.x), Of(p.y), Of(p.z)}; }

private:
  Whole Of(double c) const {
    const double decided = Decided(c);
    if (decided == 0.0) return 0;
    int exponent = 0;
    Whole whole(std::ldexp(std::frexp(decided, &exponent), 53));
    const int shift = exponent - 53 - m_unit;
    if (shift >= 0) return whole << static_cast<mp_bitcnt_t>(shift);
    return whole >> static_cast<mp_bitcnt_t>(-shift);
  }

  int m_top = 0;
  int m_unit = 2000;
};

struct Body {
  std::vector<std::size_t> used;
  std::vector<WholeTriangle> triangle; ///< those used
  std::vector<ShearedTriangle> sheared;
};

/// Judges one question.
class Bench {
public:
  Bench(const Question& question, bool byExtents)
      : m_question(question), m_byExtents(byExtents),
        m_scale(std::max(Largest(question.moving), Largest(question.fixed))),
        m_directionScale(LargestOf(question.direction)) {
    Cover(question.moving);
    Cover(question.fixed);
    m_directionScale.Cover(question.direction);
    m_direction = m_directionScale.Of(question.direction);
    m_verdict.largest = std::max(Largest(question.moving), Largest(question.fixed));
    m_verdict.direction = Scaled(ToRational(m_direction), m_directionScale.Unit());
    Fill(question.moving, 0, -1);
    Fill(question.fixed, 1, 1);
  }

  Verdict Run() {
    FindPair();
    if (m_verdict.outcome != Outcome::None) Describe();
    return m_verdict;
  }

  Verdict RunLast(double limit) {
    FindLastPair(limit);
    return m_verdict;
  }

  Patch RunPatch(std::size_t described) {
    FindPair();
    Patch patch = AllAtFirst();
    if (patch.pairs.empty()) return patch;
    const auto& pair = patch.pairs[described % patch.pairs.size()];
    EachPair([&](std::size_t i, std::size_t j, const Rational& low, const Rational& high) {
      if (pair != std::make_pair(m_body[0].used[i], m_body[1].used[j])) return;
      Take(m_verdict.outcome, i, j, low, high);
    });
    Describe();
    patch.described = m_verdict;
    return patch;
  }

private:
  static double LargestOf(const Coord3& p) {
    return std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
  }

  static bool IsFiniteTriangle(const std::vector<Coord3>& corners, std::size_t k) {
    return IsFinite(corners[3 * k]) && IsFinite(corners[3 * k + 1]) && IsFinite(corners[3 * k + 2]);
  }

  static double Largest(const std::vector<Coord3>& corners) {
    double largest = 0.0;
    for (std::size_t k = 0; k < corners.size() / 3; ++k) {
      if (!IsFiniteTriangle(corners, k)) continue;
      for (std::size_t c = 0; c < 3; ++c)
        largest = std::max(largest, LargestOf(corners[3 * k + c]));
    }
    return largest;
  }

  void Cover(const std::vector<Coord3>& corners) {
    for (std::size_t k = 0; k < corners.size() / 3; ++k) {
      if (!IsFiniteTriangle(corners, k)) continue;
      for (std::size_t c = 0; c < 3; ++c)
        m_scale.Cover(corners[3 * k + c]);
    }
  }

  /// `refused` is the sign of normal . direction that a one-sided question leaves out.
  void Fill(const std::vector<Coord3>& corners, std::size_t side, int refused) {
    const Shear shear(m_direction);
    Body& body = m_body[side];
    for (std::size_t k = 0; k < corners.size() / 3; ++k) {
      if (!IsFiniteTriangle(corners, k)) {
        ++m_verdict.skipped[side];
        continue;
      }
      WholeTriangle t;
      for (std::size_t c = 0; c < 3; ++c)
        t[c] = m_scale.Of(corners[3 * k + c]);
      const int facing = sgn(Dot(Cross(t[1] - t[0], t[2] - t[0]), m_direction));
      if (m_question.oneSided && facing == refused) {
        ++m_verdict.turnedAway[side];
        continue;
      }
      ShearedTriangle sheared;
      for (std::size_t c = 0; c < 3; ++c)
        shear.Apply(t[c], sheared.corner[c]);
      sheared.Measure();
      body.used.push_back(k);
      body.triangle.push_back(t);
      body.sheared.push_back(sheared);
    }
  }

  /// Calls visit(i, j, low, high) with the heights of each pair that counts and that touches at
  /// zero or later.
  template <class Visit>
  void EachPair(const Visit& visit) {
    for (std::size_t i = 0; i < m_body[0].used.size(); ++i) {
      for (std::size_t j = 0; j < m_body[1].used.size(); ++j) {
        const ShearedTriangle& a = m_body[0].sheared[i];
        const ShearedTriangle& b = m_body[1].sheared[j];
        if (AreApart(a, b) || !m_line.Cut(a, b)) continue;
        Rational low = m_line.Low();
        Rational high = m_line.High();
        if (sgn(high) < 0 || (m_question.notLeaving && sgn(high) == 0)) continue;
        low.canonicalize();
        high.canonicalize();
        visit(i, j, low, high);
      }
    }
  }

  /// Returns the square of the travel of a height, with the sign of the height.
  Rational SignedSquare(const Rational& height) {
    const Rational s = height / Shear(m_direction).reach;
    const RationalPoint shift = Scaled(ToRational(m_direction) * s, m_scale.Unit());
    const Rational square = Dot(shift, shift);
    return sgn(height) < 0 ? Rational(-square) : square;
  }

  void FindLastPair(double limit) {
    const bool hasLimit = std::isfinite(limit);
    const Rational square = hasLimit ? Rational(limit) * Rational(limit) : Rational(0);
    bool isCut = false;
    EachPair([&](std::size_t i, std::size_t j, const Rational& low, const Rational& high) {
      if (hasLimit && SignedSquare(low) > square) return;
      const bool reachesLimit = hasLimit && SignedSquare(high) >= square;
      const bool isBetter = m_verdict.outcome == Outcome::None || (reachesLimit && !isCut) ||
                            (reachesLimit == isCut && !isCut && high > m_high);
      if (isBetter) {
        Take(Outcome::Contact, i, j, low, high);
        isCut = reachesLimit;
      } else if (reachesLimit == isCut && (isCut || high == m_high)) {
        ++m_verdict.ties;
      }
    });
    if (m_verdict.outcome == Outcome::None) return;
    DescribePair();
    m_verdict.squaredTravel = isCut ? square : SignedSquare(m_high);
    if (m_verdict.squaredTravel == 0) m_verdict.outcome = Outcome::Start;
    if (isCut && SignedSquare(m_low) == square) {
      DescribeMeeting(m_low);
    } else if (!isCut || SignedSquare(m_high) == square) {
      DescribeMeeting(m_high);
    }
  }

  /// Finds the pairs that tie with the pair of the verdict.
  Patch AllAtFirst() {
    Patch patch;
    if (m_verdict.outcome == Outcome::None) return patch;
    const bool isStart = m_verdict.outcome == Outcome::Start;
    const Rational first = isStart ? Rational(0) : m_low;
    EachPair([&](std::size_t i, std::size_t j, const Rational& low, const Rational& high) {
      if (isStart ? sgn(low) > 0 : low != first) return;
      const bool isNew = patch.pairs.empty();
      patch.pairs.emplace_back(m_body[0].used[i], m_body[1].used[j]);
      const WholeTriangle& moving = m_body[0].triangle[i];
      const WholeTriangle& fixed = m_body[1].triangle[j];
      std::vector<RationalPoint> points;
      if (isStart && sgn(low) < 0 && sgn(high) > 0) {
        points = CommonCorners(moving, fixed);
      } else {
        points = MeetingPoints(moving, fixed, first / Shear(m_direction).reach);
      }
      for (std::size_t k = 0; k < points.size(); ++k)
        Include(Scaled(points[k], m_scale.Unit()), isNew && k == 0, patch);
    });
    return patch;
  }

  static void Include(const RationalPoint& p, bool isFirst, Patch& patch) {
    const auto include = [isFirst](const Rational& c, Rational& low, Rational& high) {
      if (isFirst || c < low) low = c;
      if (isFirst || c > high) high = c;
    };
    include(p.x, patch.low.x, patch.high.x);
    include(p.y, patch.low.y, patch.high.y);
    include(p.z, patch.low.z, patch.high.z);
  }

  /// Returns two opposite corners of the common part of the boxes.
  static std::vector<RationalPoint> CommonCorners(const WholeTriangle& a, const WholeTriangle& b) {
    const auto common = [&](Whole WholePoint::*c, Rational& low, Rational& high) {
      low = std::max(std::min({a[0].*c, a[1].*c, a[2].*c}), std::min({b[0].*c, b[1].*c, b[2].*c}));
      high = std::min(std::max({a[0].*c, a[1].*c, a[2].*c}), std::max({b[0].*c, b[1].*c, b[2].*c}));
    };
    RationalPoint low, high;
    common(&WholePoint::x, low.x, high.x);
    common(&WholePoint::y, low.y, high.y);
    common(&WholePoint::z, low.z, high.z);
    return {low, high};
  }

  /// Returns the points at which features meet after s times the direction.
  std::vector<RationalPoint> MeetingPoints(const WholeTriangle& moving, const WholeTriangle& fixed,
                                           const Rational& s) const {
    const Whole& under = s.get_den();
    std::vector<RationalPoint> points;
    for (const Meeting& meeting : AllMeetings(Arrived(moving, s), Multiplied(fixed, under)))
      points.push_back(meeting.point * Rational(Whole(1), under));
    return points;
  }

  // Multiplied by the denominator of s, all corners of the triangles in contact are whole numbers.
  WholeTriangle Arrived(const WholeTriangle& moving, const Rational& s) const {
    WholeTriangle arrived;
    for (std::size_t c = 0; c < 3; ++c)
      arrived[c] = moving[c] * s.get_den() + m_direction * s.get_num();
    return arrived;
  }
  static WholeTriangle Multiplied(const WholeTriangle& triangle, const Whole& by) {
    return {triangle[0] * by, triangle[1] * by, triangle[2] * by};
  }

  static bool AreApart(const ShearedTriangle& a, const ShearedTriangle& b) {
    return a.uHigh < b.uLow || b.uHigh < a.uLow || a.vHigh < b.vLow || b.vHigh < a.vLow ||
           b.high < a.low;
  }

  /// Returns true when the extents alone show that this pair neither touches at zero nor before or
  /// at the least height so far.
  bool IsBeyond(const ShearedTriangle& a, const ShearedTriangle& b) const {
    if (!m_byExtents) return false;
    return AreApart(a, b) ||
           (m_verdict.outcome == Outcome::Contact && b.low > a.high + m_heightAbove);
  }

  void FindPair() {
    for (std::size_t i = 0; i < m_body[0].used.size(); ++i) {
      for (std::size_t j = 0; j < m_body[1].used.size(); ++j) {
        const ShearedTriangle& a = m_body[0].sheared[i];
        const ShearedTriangle& b = m_body[1].sheared[j];
        if (IsBeyond(a, b) || !m_line.Cut(a, b)) continue;
        Rational low = m_line.Low();
        Rational high = m_line.High();
        if (sgn(high) < 0 || (m_question.notLeaving && sgn(high) == 0)) continue;
        low.canonicalize();
        high.canonicalize();
        if (sgn(low) <= 0) return Take(Outcome::Start, i, j, low, high);
        if (m_verdict.outcome == Outcome::None || low < m_low) {
          Take(Outcome::Contact, i, j, low, high);
        } else if (low == m_low) {
          ++m_verdict.ties;
        }
      }
    }
  }

  void Take(Outcome outcome, std::size_t i, std::size_t j, const Rational& low,
            const Rational& high) {
    m_verdict.outcome = outcome;
    m_moving = i;
    m_fixed = j;
    m_verdict.ties = 1;
    m_low = low;
    m_high = high;
    mpz_cdiv_q(m_heightAbove.get_mpz_t(), low.get_num_mpz_t(), low.get_den_mpz_t());
  }

  /// Fills in the result of the pair.
  void Describe() {
    DescribePair();
    const bool isStart = m_verdict.outcome == Outcome::Start;
    m_verdict.squaredTravel = isStart ? Rational(0) : SignedSquare(m_low);
    if (isStart && sgn(m_low) != 0 && sgn(m_high) != 0) return;
    DescribeMeeting(isStart ? Rational(0) : m_low);
  }

  void DescribePair() {
    const WholeTriangle& moving = m_body[0].triangle[m_moving];
    const WholeTriangle& fixed = m_body[1].triangle[m_fixed];
    const Rational reach = Shear(m_direction).reach;
    const Rational first = m_low / reach;
    const Rational last = m_high / reach;
    m_verdict.moving = m_body[0].used[m_moving];
    m_verdict.fixed = m_body[1].used[m_fixed];
    const int unit = m_scale.Unit();
    for (std::size_t c = 0; c < 3; ++c) {
      m_verdict.movingCorners[c] = Scaled(ToRational(moving[c]), unit);
      m_verdict.fixedCorners[c] = Scaled(ToRational(fixed[c]), unit);
    }
    const RationalPoint ends = Scaled({first, last, Rational(0)}, unit - m_directionScale.Unit());
    m_verdict.interval = {ends.x, ends.y};
  }

  /// Fills in the features that meet at a height, and where.
  void DescribeMeeting(const Rational& height) {
    const Rational s = height / Shear(m_direction).reach;
    const int unit = m_scale.Unit();
    const WholeTriangle& moving = m_body[0].triangle[m_moving];
    const WholeTriangle& fixed = m_body[1].triangle[m_fixed];
    const Meeting meeting = FirstMeeting(Arrived(moving, s), Multiplied(fixed, s.get_den()));
    m_verdict.kind = meeting.kind;
    if (meeting.kind == Kind::Overlap) return;
    const RationalPoint point = meeting.point * Rational(Whole(1), s.get_den());
    m_verdict.onFixed = Scaled(point, unit);
    m_verdict.onMoving = Scaled(point - ToRational(m_direction) * s, unit);
  }

  const Question& m_question;
  bool m_byExtents;
  WholeScale m_scale, m_directionScale;
  WholePoint m_direction;
  Body m_body[2];
  LineThroughHull m_line;
  std::size_t m_moving = 0, m_fixed = 0; ///< positions in the bodies
  Rational m_low, m_high;                ///< heights of the pair's interval
  Whole m_heightAbove;                   ///< m_low, rounded up
  Verdict m_verdict;
};

Rational SquaredDistanceToSegment(const RationalPoint& p, const RationalPoint& a,
                                  const RationalPoint& b) {
  const RationalPoint e = b - a;
  const RationalPoint r = p - a;
  const Rational length = Dot(e, e);
  Rational at = length == 0 ? Rational(0) : Rational(Dot(e, r) / length);
  if (at < 0) at = 0;
  if (at > 1) at = 1;
  const RationalPoint rest = r - e * at;
  return Dot(rest, rest);
}

} // namespace

std::optional<Interval> SweepPair(const WholePoint& direction, const WholeTriangle& moving,
                                  const WholeTriangle& fixed) {
  const Shear shear(direction);
  ShearedTriangle a;
  ShearedTriangle b;
  for (std::size_t c = 0; c < 3; ++c) {
    shear.Apply(moving[c], a.corner[c]);
    shear.Apply(fixed[c], b.corner[c]);
  }
  LineThroughHull line;
  if (!line.Cut(a, b)) return std::nullopt;
  Interval interval{line.Low(), line.High()};
  interval.first.canonicalize();
  interval.last.canonicalize();
  interval.first /= Rational(shear.reach);
  interval.last /= Rational(shear.reach);
  return interval;
}

std::vector<Meeting> AllMeetings(const WholeTriangle& moving, const WholeTriangle& fixed) {
  // Each feature of one triangle is tried against each feature of the other, in the order of ties.
  std::vector<Meeting> all;
  const auto search = [&all](Kind kind, std::size_t ofMoving, std::size_t ofFixed,
                             const auto& meet) {
    for (std::size_t i = 0; i < ofMoving; ++i) {
      for (std::size_t j = 0; j < ofFixed; ++j) {
        const std::optional<RationalPoint> point = meet(i, j);
        if (point) all.push_back({kind, i, j, *point});
      }
    }
  };
  const auto when = [](bool met, const WholePoint& p) {
    return met ? std::optional<RationalPoint>(ToRational(p)) : std::nullopt;
  };
  search(Kind::VertexVertex, 3, 3, [&](std::size_t i, std::size_t j) {
    return when(IsZero(moving[i] - fixed[j]), moving[i]);
  });
  search(Kind::VertexEdge, 3, 3, [&](std::size_t i, std::size_t j) {
    return when(IsInsideSegment(moving[i], fixed[j], fixed[Next(j)]), moving[i]);
  });
  search(Kind::EdgeVertex, 3, 3, [&](std::size_t i, std::size_t j) {
    return when(IsInsideSegment(fixed[j], moving[i], moving[Next(i)]), fixed[j]);
  });
  search(Kind::VertexFace, 3, 1, [&](std::size_t i, std::size_t) {
    return when(IsInsideFace(moving[i], fixed), moving[i]);
  });
  search(Kind::FaceVertex, 1, 3, [&](std::size_t, std::size_t j) {
    return when(IsInsideFace(fixed[j], moving), fixed[j]);
  });
  search(Kind::EdgeEdge, 3, 3, [&](std::size_t i, std::size_t j) {
    return Crossing(moving[i], moving[Next(i)], fixed[j], fixed[Next(j)]);
  });
  return all;
}

Meeting FirstMeeting(const WholeTriangle& moving, const WholeTriangle& fixed) {
  const std::vector<Meeting> all = AllMeetings(moving, fixed);
  return all.empty() ? Meeting{Kind::Overlap, 0, 0, {}} : all.front();
}

Rational SquaredDistance(const RationalPoint& p, const std::array<RationalPoint, 3>& triangle) {
  Rational least = SquaredDistanceToSegment(p, triangle[0], triangle[1]);
  least = std::min(least, SquaredDistanceToSegment(p, triangle[1], triangle[2]));
  least = std::min(least, SquaredDistanceToSegment(p, triangle[2], triangle[0]));
  const RationalPoint normal = Cross(triangle[1] - triangle[0], triangle[2] - triangle[0]);
  const Rational square = Dot(normal, normal);
  if (square == 0) return least;
  for (std::size_t k = 0; k < 3; ++k) {
    if (Dot(normal, Cross(triangle[Next(k)] - triangle[k], p - triangle[k])) < 0) return least;
  }
  const Rational height = Dot(normal, p - triangle[0]);
  return std::min(least, Rational(height * height / square));
}

Verdict Judge(const Question& question) {
  return Bench(question, true).Run();
}

Verdict JudgeEveryPair(const Question& question) {
  return Bench(question, false).Run();
}

Verdict JudgeLast(const Question& question, double limit) {
  return Bench(question, true).RunLast(limit);
}

Patch JudgePatch(const Question& question, std::size_t described) {
  return Bench(question, true).RunPatch(described);
}

double NearestRoot(const Rational& square) {
  if (square == 0) return 0.0;
  constexpr double infinity = std::numeric_limits<double>::infinity();
  constexpr mp_bitcnt_t bits = 256;
  // The fraction and the exponent are separate, so that no number leaves the range of double.
  const mpf_class root = sqrt(mpf_class(square, bits));
  long exponent = 0;
  const double fraction = mpf_get_d_2exp(&exponent, root.get_mpf_t());
  const double low = std::ldexp(fraction, static_cast<int>(exponent));
  if (!std::isfinite(low)) return infinity;
  // The fraction is cut off, but a subnormal result may have been rounded up.
  double best = std::nextafter(low, 0.0);
  for (int step = 0; step < 3; ++step) {
    const double above = std::nextafter(best, infinity);
    const Rational middle = std::isfinite(above) ? Rational((Rational(best) + Rational(above)) / 2)
                                                 : Rational(best) + Rational(std::ldexp(1.0, 970));
    if (square < middle * middle) break;
    if (square == middle * middle) {
      int unused = 0;
      const bool isEven = std::fmod(std::ldexp(std::frexp(best, &unused), 53), 2.0) == 0.0;
      if (isEven) break;
    }
    best = above;
    if (!std::isfinite(best)) break;
  }
  return best;
}

} // namespace reference
