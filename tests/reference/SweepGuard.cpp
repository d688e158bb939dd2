#include "SweepGuard.h"

#include "Search.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace reference {

namespace {

using gsl_sweep::SweepAnswer;
using gsl_sweep::SweepQuestion;
using gsl_sweep::SweepStatus;

constexpr double infinity = std::numeric_limits<double>::infinity();

/// An answer, or the overflow that was thrown instead.
struct Told {
  SweepAnswer answer;
  bool overflowed = false;
};

Told Ask(const Question& question, double maxDistance, unsigned threads) {
  gsl_sweep::Mesh moving;
  gsl_sweep::Mesh fixed;
  moving.corners = question.moving;
  fixed.corners = question.fixed;
  SweepQuestion asked;
  asked.direction = question.direction;
  asked.oneSided = question.oneSided;
  asked.maxDistance = maxDistance;
  asked.threads = threads;
  Told told;
  try {
    told.answer = gsl_sweep::Sweep(moving, fixed, asked);
  } catch (const std::overflow_error&) {
    told.overflowed = true;
  }
  return told;
}

bool SameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

bool SameBits(const Coord3& a, const Coord3& b) {
  return SameBits(a.x, b.x) && SameBits(a.y, b.y) && SameBits(a.z, b.z);
}

bool AreSame(const Told& a, const Told& b) {
  if (a.overflowed || b.overflowed) return a.overflowed == b.overflowed;
  return a.answer.status == b.answer.status && SameBits(a.answer.travel, b.answer.travel) &&
         SameBits(a.answer.direction, b.answer.direction) && a.answer.kind == b.answer.kind &&
         a.answer.moving.triangle == b.answer.moving.triangle &&
         a.answer.fixed.triangle == b.answer.fixed.triangle &&
         SameBits(a.answer.moving.point, b.answer.moving.point) &&
         SameBits(a.answer.fixed.point, b.answer.fixed.point);
}

/// One unit in the last place, as an exact number.
Rational UnitAt(double value) {
  const double magnitude = std::fabs(value);
  if (magnitude >= std::numeric_limits<double>::max()) {
    return Rational(magnitude) - Rational(std::nextafter(magnitude, 0.0));
  }
  return Rational(std::nextafter(magnitude, infinity)) - Rational(magnitude);
}

/// The rounding that is promised: once, from about a hundred bits.
const Rational halfUnit(Rational(1, 2) + Rational(1, 1 << 20));

/// |sqrt(square)| is within `error` of a number that is not negative.
bool IsRootNear(double value, const Rational& square, const Rational& error) {
  const Rational above = Rational(value) + error;
  const Rational below = Rational(value) - error;
  return square <= above * above && (below <= 0 || square >= below * below);
}

class Comparison {
public:
  Comparison(const Scene& scene, const Verdict& verdict, const Told& told)
      : m_scene(scene), m_verdict(verdict), m_told(told.answer) {
    // What rounding from a hundred bits leaves of the largest coordinate, and the least double.
    m_fuzz = verdict.largest;
    mpq_div_2exp(m_fuzz.get_mpq_t(), m_fuzz.get_mpq_t(), 85);
    Rational least(1);
    mpq_div_2exp(least.get_mpq_t(), least.get_mpq_t(), 1074);
    m_fuzz += least;
  }

  /// Empty when all is right. `limited` when a limit keeps the contact out of reach.
  std::string Run(bool limited) {
    CheckFinite();
    if (!m_complaint.empty()) return m_complaint;
    CheckBodies();
    CheckDirection();
    if (limited || m_verdict.outcome == Outcome::None) {
      if (m_told.status != SweepStatus::None) Complain("status: expected none");
    } else if (m_verdict.outcome == Outcome::Start) {
      if (m_told.status != SweepStatus::Start) Complain("status: expected start");
    } else if (m_told.status != SweepStatus::Contact) {
      Complain("status: expected contact");
    }
    if (!m_complaint.empty() || m_told.status == SweepStatus::None) return m_complaint;
    CheckPair();
    CheckTravel();
    CheckNormal();
    if (m_verdict.kind == Kind::Overlap) {
      CheckSharedPoint();
    } else {
      CheckPoints();
    }
    return m_complaint;
  }

private:
  void Complain(const std::string& what) { m_complaint += what + "\n"; }

  /// A rational cannot be made of anything else.
  void CheckFinite() {
    const double told[] = {m_told.travel,         m_told.direction.x,    m_told.direction.y,
                           m_told.direction.z,    m_told.moving.point.x, m_told.moving.point.y,
                           m_told.moving.point.z, m_told.fixed.point.x,  m_told.fixed.point.y,
                           m_told.fixed.point.z,  m_told.normal.x,       m_told.normal.y,
                           m_told.normal.z};
    for (const double c : told) {
      if (!std::isfinite(c)) return Complain("a number that is not finite");
    }
  }

  void CheckBodies() {
    const gsl_sweep::SweptBody* bodies[2] = {&m_told.moving, &m_told.fixed};
    const std::size_t counts[2] = {m_scene.question.moving.size() / 3,
                                   m_scene.question.fixed.size() / 3};
    for (std::size_t side = 0; side < 2; ++side) {
      if (bodies[side]->triangles != counts[side]) Complain("number of triangles");
      if (bodies[side]->skipped != m_verdict.skipped[side]) Complain("number of skipped triangles");
      if (bodies[side]->leftOut != m_verdict.turnedAway[side]) Complain("number turned away");
    }
  }

  /// Each component is d / |d|, rounded once.
  void CheckDirection() {
    const RationalPoint& d = m_verdict.direction;
    const Rational square = d.x * d.x + d.y * d.y + d.z * d.z;
    const auto check = [&](double told, const Rational& c) {
      if (sgn(c) == 0 ? told != 0.0 : sgn(c) * told < 0.0) Complain("sign of the unit direction");
      if (!IsRootNear(std::fabs(told), c * c / square, UnitAt(told) * halfUnit)) {
        Complain("unit direction");
      }
    };
    check(m_told.direction.x, d.x);
    check(m_told.direction.y, d.y);
    check(m_told.direction.z, d.z);
  }

  void CheckPair() {
    if (m_told.moving.triangle != m_verdict.moving || m_told.fixed.triangle != m_verdict.fixed) {
      Complain("pair: expected " + std::to_string(m_verdict.moving) + " and " +
               std::to_string(m_verdict.fixed));
    }
    if (static_cast<int>(m_told.kind) != static_cast<int>(m_verdict.kind)) {
      Complain("kind: expected " + std::to_string(static_cast<int>(m_verdict.kind)));
    }
  }

  void CheckTravel() {
    if (m_verdict.outcome == Outcome::Start) {
      if (m_told.travel != 0.0) Complain("travel: expected zero");
      return;
    }
    const Rational error = UnitAt(m_told.travel) * halfUnit;
    if (!(m_told.travel >= 0.0) || !IsRootNear(m_told.travel, m_verdict.squaredTravel, error)) {
      Complain("travel: expected " + Text(NearestRoot(m_verdict.squaredTravel)));
    }
  }

  /// Of length one and against the direction. Which plane the features define is not judged.
  void CheckNormal() {
    const Coord3& n = m_told.normal;
    if (!m_told.hasNormal) {
      if (n.x != 0.0 || n.y != 0.0 || n.z != 0.0)
        Complain("normal: written although there is none");
      return;
    }
    const Rational x(n.x), y(n.y), z(n.z);
    const Rational error = abs(x * x + y * y + z * z - 1);
    if (error > Rational(1, 1L << 50)) Complain("normal: not of length one");
    const RationalPoint& d = m_verdict.direction;
    if (x * d.x + y * d.y + z * d.z > 0) Complain("normal: along the direction");
  }

  void CheckPoints() {
    const bool ofEdges = m_verdict.kind == Kind::EdgeEdge;
    CheckPoint("moving", m_told.moving.point, m_verdict.onMoving, {0.0, 0.0, 0.0});
    // The point on the fixed edge is the one on the moving edge, carried on after it was rounded.
    CheckPoint("fixed", m_told.fixed.point, m_verdict.onFixed,
               ofEdges ? m_told.moving.point : Coord3{0.0, 0.0, 0.0});
  }

  /// Within half a unit in the last place, and half a unit of what it was computed from.
  void CheckPoint(const char* side, const Coord3& told, const RationalPoint& exact,
                  const Coord3& from) {
    const auto check = [&](double c, const Rational& expected, double source) {
      Rational error = UnitAt(c) * halfUnit + m_fuzz;
      if (source != 0.0) error += UnitAt(source) * halfUnit;
      if (!(abs(Rational(c) - expected) <= error)) {
        Complain(std::string("point on the ") + side + " body: " + Text(c) + ", expected " +
                 Text(expected.get_d()));
      }
    };
    check(told.x, exact.x, from.x);
    check(told.y, exact.y, from.y);
    check(told.z, exact.z, from.z);
  }

  /// On both triangles, up to four units in the last place of the largest coordinate.
  void CheckSharedPoint() {
    if (!SameBits(m_told.moving.point, m_told.fixed.point)) Complain("points of an overlap differ");
    const Coord3& p = m_told.fixed.point;
    const RationalPoint point{Rational(p.x), Rational(p.y), Rational(p.z)};
    Rational error = m_verdict.largest;
    mpq_div_2exp(error.get_mpq_t(), error.get_mpq_t(), 50);
    error += m_fuzz;
    for (const auto* corners : {&m_verdict.movingCorners, &m_verdict.fixedCorners}) {
      if (SquaredDistance(point, *corners) > error * error) Complain("point of an overlap");
    }
  }

  static std::string Text(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%a", value);
    return text;
  }

  const Scene& m_scene;
  const Verdict& m_verdict;
  const SweepAnswer& m_told;
  Rational m_fuzz;
  std::string m_complaint;
};

double LimitOf(const Scene& scene, double travel) {
  switch (scene.limit) {
  case Limit::Zero:
    return 0.0;
  case Limit::BelowTravel:
    return std::nextafter(travel, 0.0);
  case Limit::AtTravel:
    return travel;
  case Limit::AboveTravel:
    return std::nextafter(travel, infinity);
  case Limit::HalfTravel:
    return travel / 2.0;
  case Limit::None:
    break;
  }
  return infinity;
}

/// What the judge says of a scene with its limit.
struct Expected {
  explicit Expected(const Scene& scene) : verdict(Judge(scene.question)) {
    if (verdict.outcome == Outcome::Contact) travel = NearestRoot(verdict.squaredTravel);
    limit = LimitOf(scene, std::isfinite(travel) ? travel : 1.0);
    if (verdict.outcome == Outcome::Contact && std::isfinite(limit)) {
      limited = verdict.squaredTravel > Rational(limit) * Rational(limit);
    }
  }

  void Count(Tally& tally) const {
    ++tally.scenes;
    tally.limited += limited ? 1 : 0;
    tally.overflows += !limited && !std::isfinite(travel) ? 1 : 0;
    if (limited || verdict.outcome == Outcome::None) {
      ++tally.nones;
      return;
    }
    ++(verdict.outcome == Outcome::Start ? tally.starts : tally.contacts);
    ++tally.kinds[static_cast<int>(verdict.kind)];
    tally.tied += verdict.ties > 1 ? 1 : 0;
    tally.single += verdict.interval.IsSinglePoint() ? 1 : 0;
  }

  Verdict verdict;
  double travel = 0.0; ///< nearest double
  double limit = infinity;
  bool limited = false; ///< out of reach by the limit alone
};

std::string TextOf(const Told& told) {
  if (told.overflowed) return "told: overflow";
  const SweepAnswer& a = told.answer;
  char text[400];
  std::snprintf(
      text, sizeof text,
      "told: status %d, travel %a, kind %d, pair %zu and %zu, at {%a, %a, %a} and {%a, %a, %a}",
      static_cast<int>(a.status), a.travel, static_cast<int>(a.kind), a.moving.triangle,
      a.fixed.triangle, a.moving.point.x, a.moving.point.y, a.moving.point.z, a.fixed.point.x,
      a.fixed.point.y, a.fixed.point.z);
  return text;
}

} // namespace

void Tally::Add(const Tally& other) {
  scenes += other.scenes;
  contacts += other.contacts;
  starts += other.starts;
  nones += other.nones;
  for (std::size_t k = 0; k < std::size(kinds); ++k)
    kinds[k] += other.kinds[k];
  tied += other.tied;
  single += other.single;
  limited += other.limited;
  overflows += other.overflows;
}

void Count(const Scene& scene, Tally& tally) {
  Expected(scene).Count(tally);
}

std::string Complaint(const Scene& scene, Tally& tally) {
  const Expected expected(scene);
  expected.Count(tally);
  const Told told = Ask(scene.question, expected.limit, 1);
  std::string complaint;
  const bool overflows = !expected.limited && !std::isfinite(expected.travel);
  if (told.overflowed != overflows) {
    complaint = "overflow\n";
  } else if (!overflows) {
    complaint = Comparison(scene, expected.verdict, told).Run(expected.limited);
  }
  for (const unsigned threads : {2u, 3u}) {
    if (!AreSame(told, Ask(scene.question, expected.limit, threads))) {
      complaint += "another answer on " + std::to_string(threads) + " threads\n";
    }
  }
  if (!complaint.empty()) complaint += TextOf(told) + "\n";
  return complaint;
}

} // namespace reference
