#include "SweepGuard.h"

#include "RationalSweep.h"
#include "gsl_Matrix.h"
#include "gsl_Sweep.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

namespace reference {

namespace {

using gsl_sweep::Answer;
using gsl_sweep::Body;
using gsl_sweep::Pair;
using gsl_sweep::SweepStatus;

constexpr double infinity = std::numeric_limits<double>::infinity();

/// An answer, or the overflow that was thrown.
struct Told {
  Answer answer;
  std::size_t triangles[2] = {}, skipped[2] = {}, leftOut[2] = {}; ///< moving, fixed
  bool overflowed = false;
};

Body BodyOf(const Coord3* corners, std::size_t count) {
  gsl_sweep::TriangleView view;
  view.vertices = count == 0 ? nullptr : &corners->x;
  view.vertexCount = count;
  view.triangleCount = count / 3;
  return Body(view);
}

Body BodyOf(const std::vector<Coord3>& corners) {
  return BodyOf(corners.data(), corners.size());
}

gsl_sweep::Run OnThreads(unsigned threads) {
  gsl_sweep::Run run;
  run.threads = threads;
  return run;
}

gsl_sweep::Question AskedOf(const Question& question, double maxDistance) {
  gsl_sweep::Question asked;
  asked.direction = question.direction;
  asked.oneSided = question.oneSided;
  asked.rule = question.notLeaving ? gsl_sweep::Rule::NotLeaving : gsl_sweep::Rule::Touch;
  asked.maxDistance = maxDistance;
  return asked;
}

enum class End { First, Last };

Told Ask(const Body& moving, const Body& fixed, const gsl_sweep::Question& question,
         End end = End::First) {
  Told told;
  const Body* bodies[2] = {&moving, &fixed};
  for (std::size_t side = 0; side < 2; ++side) {
    told.triangles[side] = bodies[side]->TriangleCount();
    told.skipped[side] = bodies[side]->SkippedCount();
  }
  const Pair pair(moving, {fixed}, OnThreads(1));
  const gsl_sweep::LeftOut leftOut = pair.CountLeftOut(question);
  told.leftOut[0] = leftOut.moving;
  told.leftOut[1] = leftOut.fixed;
  try {
    told.answer =
        end == End::First ? pair.First(question, OnThreads(1)) : pair.Last(question, OnThreads(1));
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

bool AreSame(const Answer& a, const Answer& b) {
  const gsl_sweep::Contact& c = a.contact;
  const gsl_sweep::Contact& d = b.contact;
  return a.status == b.status && SameBits(a.unitDirection, b.unitDirection) &&
         SameBits(c.travel, d.travel) && c.kind == d.kind && c.fixedBody == d.fixedBody &&
         c.movingTriangle == d.movingTriangle && c.fixedTriangle == d.fixedTriangle &&
         SameBits(c.movingPoint, d.movingPoint) && SameBits(c.fixedPoint, d.fixedPoint) &&
         c.hasNormal == d.hasNormal && SameBits(c.normal, d.normal);
}

/// One unit in the last place, as an exact number.
Rational UnitAt(double value) {
  const double magnitude = std::fabs(value);
  if (magnitude >= std::numeric_limits<double>::max()) {
    return Rational(magnitude) - Rational(std::nextafter(magnitude, 0.0));
  }
  return Rational(std::nextafter(magnitude, infinity)) - Rational(magnitude);
}

/// The number of a triangle in a contact that nobody wrote.
constexpr std::size_t kUntouched = 123456789;

/// The rounding that the library promises: one rounding, from about a hundred bits.
const Rational halfUnit(Rational(1, 2) + Rational(1, 1 << 20));

/// Returns whether |sqrt(square)| is within `error` of a number that is not negative.
bool IsRootNear(double value, const Rational& square, const Rational& error) {
  const Rational above = Rational(value) + error;
  const Rational below = Rational(value) - error;
  return square <= above * above && (below <= 0 || square >= below * below);
}

class Comparison {
public:
  Comparison(const Question& question, const Verdict& verdict, const Told& told)
      : m_question(question), m_verdict(verdict), m_all(told), m_told(told.answer) {
    // The error of rounding from a hundred bits for the largest coordinate, and the least double.
    m_fuzz = verdict.largest;
    mpq_div_2exp(m_fuzz.get_mpq_t(), m_fuzz.get_mpq_t(), 85);
    Rational least(1);
    mpq_div_2exp(least.get_mpq_t(), least.get_mpq_t(), 1074);
    m_fuzz += least;
  }

  /// Returns an empty text when everything is right. `limited` is set when a limit keeps the
  /// contact out of reach.
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

  /// A rational cannot hold any other value.
  void CheckFinite() {
    const gsl_sweep::Contact& c = m_told.contact;
    if (!std::isfinite(c.travel)) return Complain("a travel that is not finite");
    for (const Coord3& p : {m_told.unitDirection, c.movingPoint, c.fixedPoint, c.normal}) {
      if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) {
        return Complain("a number that is not finite");
      }
    }
  }

  void CheckBodies() {
    const std::size_t counts[2] = {m_question.moving.size() / 3, m_question.fixed.size() / 3};
    for (std::size_t side = 0; side < 2; ++side) {
      if (m_all.triangles[side] != counts[side]) Complain("number of triangles");
      if (m_all.skipped[side] != m_verdict.skipped[side]) Complain("number of skipped triangles");
      if (m_all.leftOut[side] != m_verdict.turnedAway[side]) Complain("number turned away");
    }
  }

  /// Returns whether each component is d / |d|, rounded once.
  void CheckDirection() {
    const RationalPoint& d = m_verdict.direction;
    const Rational square = d.x * d.x + d.y * d.y + d.z * d.z;
    const auto check = [&](double told, const Rational& c) {
      if (sgn(c) == 0 ? told != 0.0 : sgn(c) * told < 0.0) Complain("sign of the unit direction");
      if (!IsRootNear(std::fabs(told), c * c / square, UnitAt(told) * halfUnit)) {
        Complain("unit direction");
      }
    };
    check(m_told.unitDirection.x, d.x);
    check(m_told.unitDirection.y, d.y);
    check(m_told.unitDirection.z, d.z);
  }

  void CheckPair() {
    if (m_told.contact.movingTriangle != m_verdict.moving ||
        m_told.contact.fixedTriangle != m_verdict.fixed) {
      Complain("pair: expected " + std::to_string(m_verdict.moving) + " and " +
               std::to_string(m_verdict.fixed));
    }
    if (static_cast<int>(m_told.contact.kind) != static_cast<int>(m_verdict.kind)) {
      Complain("kind: expected " + std::to_string(static_cast<int>(m_verdict.kind)));
    }
  }

  void CheckTravel() {
    if (m_verdict.outcome == Outcome::Start) {
      if (m_told.contact.travel != 0.0) Complain("travel: expected zero");
      return;
    }
    const Rational error = UnitAt(m_told.contact.travel) * halfUnit;
    if (!(m_told.contact.travel >= 0.0) ||
        !IsRootNear(m_told.contact.travel, m_verdict.squaredTravel, error)) {
      Complain("travel: expected " + Text(NearestRoot(m_verdict.squaredTravel)));
    }
  }

  /// Returns whether the normal has length one and is against the direction.
  /// The plane of the features is not judged.
  void CheckNormal() {
    const Coord3& n = m_told.contact.normal;
    if (!m_told.contact.hasNormal) {
      if (n.x != 0.0 || n.y != 0.0 || n.z != 0.0)
        Complain("normal: written although there is none");
      return;
    }
    const Rational x(n.x), y(n.y), z(n.z);
    const Rational error = abs(x * x + y * y + z * z - 1);
    if (error > Rational(1, 1L << 50)) Complain("normal: not of length one");
    const RationalPoint& d = m_verdict.direction;
    if (x * d.x + y * d.y + z * d.z >= 0) Complain("normal: not against the direction");
  }

  void CheckPoints() {
    const bool ofEdges = m_verdict.kind == Kind::EdgeEdge;
    CheckPoint("moving", m_told.contact.movingPoint, m_verdict.onMoving, {0.0, 0.0, 0.0});
    // The point on the fixed edge is the point on the moving edge, moved after it was rounded.
    CheckPoint("fixed", m_told.contact.fixedPoint, m_verdict.onFixed,
               ofEdges ? m_told.contact.movingPoint : Coord3{0.0, 0.0, 0.0});
  }

  /// The error is within half a unit in the last place, plus half a unit of the terms.
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

  /// Returns whether the points are on their triangles and one travel apart, up to four units in
  /// the last place of the largest coordinate.
  void CheckSharedPoint() {
    const gsl_sweep::Contact& c = m_told.contact;
    if (m_told.status == SweepStatus::Start && !SameBits(c.movingPoint, c.fixedPoint))
      Complain("points of an overlap differ");
    Rational error = m_verdict.largest;
    mpq_div_2exp(error.get_mpq_t(), error.get_mpq_t(), 50);
    error += m_fuzz;
    const auto check = [&](const Coord3& p, const std::array<RationalPoint, 3>& corners) {
      const RationalPoint point{Rational(p.x), Rational(p.y), Rational(p.z)};
      if (SquaredDistance(point, corners) > error * error) Complain("point of an overlap");
    };
    check(c.movingPoint, m_verdict.movingCorners);
    check(c.fixedPoint, m_verdict.fixedCorners);
    const auto checkTravel = [&](double from, double to, double unit) {
      const Rational arrived = Rational(from) + Rational(c.travel) * Rational(unit);
      if (abs(arrived - Rational(to)) > 2 * error) Complain("travel between points of an overlap");
    };
    checkTravel(c.movingPoint.x, c.fixedPoint.x, m_told.unitDirection.x);
    checkTravel(c.movingPoint.y, c.fixedPoint.y, m_told.unitDirection.y);
    checkTravel(c.movingPoint.z, c.fixedPoint.z, m_told.unitDirection.z);
  }

  static std::string Text(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%a", value);
    return text;
  }

  const Question& m_question;
  const Verdict& m_verdict;
  const Told& m_all;
  const Answer& m_told;
  Rational m_fuzz;
  std::string m_complaint;
};

double LimitOf(Limit limit, double travel) {
  switch (limit) {
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

/// The verdict of the judge about a scene with its limit.
struct Expected {
  explicit Expected(const Scene& scene) : verdict(Judge(scene.question)) {
    if (verdict.outcome == Outcome::Contact) travel = NearestRoot(verdict.squaredTravel);
    limit = LimitOf(scene.limit, std::isfinite(travel) ? travel : 1.0);
    if (verdict.outcome == Outcome::Contact && std::isfinite(limit)) {
      limited = verdict.squaredTravel > Rational(limit) * Rational(limit);
    }
  }
  /// The same for the last contact. The verdict then holds within the limit.
  Expected(const Scene& scene, Limit limitOfLast) : verdict(JudgeLast(scene.question, infinity)) {
    if (verdict.outcome == Outcome::Contact) travel = NearestRoot(verdict.squaredTravel);
    limit = LimitOf(limitOfLast, std::isfinite(travel) ? travel : 1.0);
    if (!std::isfinite(limit)) return;
    verdict = JudgeLast(scene.question, limit);
    travel = verdict.outcome == Outcome::Contact ? NearestRoot(verdict.squaredTravel) : 0.0;
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
  const Answer& a = told.answer;
  const gsl_sweep::Contact& c = a.contact;
  char text[400];
  std::snprintf(
      text, sizeof text,
      "told: status %d, travel %a, kind %d, pair %zu and %zu, at {%a, %a, %a} and {%a, %a, %a}",
      static_cast<int>(a.status), c.travel, static_cast<int>(c.kind), c.movingTriangle,
      c.fixedTriangle, c.movingPoint.x, c.movingPoint.y, c.movingPoint.z, c.fixedPoint.x,
      c.fixedPoint.y, c.fixedPoint.z);
  return text;
}

std::string Judged(const Question& question, const Expected& expected, const Told& told) {
  const bool overflows = !expected.limited && !std::isfinite(expected.travel);
  std::string complaint;
  if (told.overflowed != overflows) {
    complaint = "overflow\n";
  } else if (!overflows) {
    complaint = Comparison(question, expected.verdict, told).Run(expected.limited);
  }
  return complaint.empty() ? complaint : complaint + TextOf(told) + "\n";
}

/// Random numbers that belong to a scene, the same on every machine.
class SceneNumbers {
public:
  explicit SceneNumbers(const Scene& scene) {
    for (const char letter : scene.name)
      m_state = m_state * 31 + static_cast<unsigned char>(letter);
  }

  std::uint64_t Next() {
    // Steele, Lea and Flood, Fast Splittable Pseudorandom Number Generators, 2014.
    m_state += 0x9e3779b97f4a7c15u;
    std::uint64_t z = m_state;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return z ^ (z >> 31);
  }
  std::size_t Below(std::size_t count) { return static_cast<std::size_t>(Next() % count); }
  double Unit() { return static_cast<double>(Next() >> 11) * 0x1p-52 - 1.0; }

private:
  std::uint64_t m_state = 0;
};

double LargestOf(const std::vector<Coord3>& corners) {
  double largest = 0.0;
  for (const Coord3& p : corners) {
    for (const double c : {p.x, p.y, p.z}) {
      if (std::isfinite(c)) largest = std::max(largest, std::fabs(c));
    }
  }
  return largest;
}

/// Moves the moving body by an offset: exact, rounded, far away, or beyond all numbers.
std::string ComplaintOfOffset(const Scene& scene, SceneNumbers& numbers) {
  const double largest = LargestOf(scene.question.moving);
  const double sizes[] = {largest,          0x1p-10 * largest, 0x1p-52 * largest,
                          0x1p20 * largest, 0x1p-1070,         std::numeric_limits<double>::max()};
  const double size =
      std::min(sizes[numbers.Below(std::size(sizes))], std::numeric_limits<double>::max());
  Coord3 offset{size * numbers.Unit(), size * numbers.Unit(), size * numbers.Unit()};
  if (numbers.Below(3) == 0) offset.x = 0.0;
  if (numbers.Below(3) == 0) offset.y = std::ldexp(1.0, std::ilogb(size));
  Scene shifted = scene;
  for (Coord3& p : shifted.question.moving)
    p = gsl_arithmetic::Add(p, offset);
  const Expected expected(shifted);
  gsl_sweep::Question asked = AskedOf(scene.question, expected.limit);
  asked.offset = offset;
  const Body moving = BodyOf(scene.question.moving);
  Told told = Ask(moving, BodyOf(scene.question.fixed), asked);
  // The body must not count triangles that only the offset moves out of range.
  told.skipped[0] = expected.verdict.skipped[0];
  return Judged(shifted.question, expected, told);
}

gsl_Matrix SomeMatrix(SceneNumbers& numbers, double largest) {
  gsl_Matrix matrix;
  if (numbers.Below(2) == 0) {
    // The matrix exchanges axes and turns some over.
    const std::size_t first = numbers.Below(3);
    for (std::size_t row = 0; row < 3; ++row) {
      for (std::size_t column = 0; column < 3; ++column) {
        const bool isOne = column == (row + first) % 3;
        matrix.m[row][column] = isOne ? (numbers.Below(2) == 0 ? 1.0 : -1.0) : 0.0;
      }
    }
  } else {
    for (std::size_t row = 0; row < 3; ++row) {
      for (std::size_t column = 0; column < 3; ++column)
        matrix.m[row][column] = numbers.Unit();
    }
  }
  for (std::size_t row = 0; row < 3; ++row)
    matrix.m[row][3] = numbers.Below(2) == 0 ? 0.0 : largest * numbers.Unit();
  matrix.isIdentity = 0;
  return matrix;
}

/// Compares the body that the library moves with the body whose corners are moved one by one.
std::string ComplaintOfMatrix(const Scene& scene, SceneNumbers& numbers) {
  const gsl_Matrix matrix = SomeMatrix(numbers, LargestOf(scene.question.moving));
  Scene moved = scene;
  for (Coord3& p : moved.question.moving) {
    gsl_Point point(p.x, p.y, p.z);
    matrix.Transform(point);
    p = point.Coords();
  }
  const Expected expected(moved);
  const gsl_sweep::Question asked = AskedOf(scene.question, expected.limit);
  const Body body = BodyOf(scene.question.moving);
  const Body fixed = BodyOf(scene.question.fixed);
  // A body that was asked has more data to move.
  if (numbers.Below(2) == 0) Ask(body, fixed, AskedOf(scene.question, 0.0));
  return Judged(moved.question, expected, Ask(body.Moved(matrix), fixed, asked));
}

/// Divides the fixed body into several bodies, which must have the same answer together.
std::string ComplaintOfSeveral(const Scene& scene, SceneNumbers& numbers,
                               const gsl_sweep::Question& asked, const Told& whole) {
  const std::vector<Coord3>& fixed = scene.question.fixed;
  const std::size_t count = fixed.size() / 3;
  std::vector<Body> bodies;
  std::vector<std::size_t> begin;
  for (std::size_t from = 0; from < count || bodies.empty();) {
    const std::size_t to = std::min(count, from + numbers.Below(count / 2 + 2));
    begin.push_back(from);
    bodies.push_back(BodyOf(fixed.data() + 3 * from, 3 * (to - from)));
    from = to;
  }
  const Pair pair(BodyOf(scene.question.moving), bodies, OnThreads(1));
  Told told;
  try {
    told.answer = pair.First(asked, OnThreads(1));
  } catch (const std::overflow_error&) {
    told.overflowed = true;
  }
  if (told.overflowed != whole.overflowed) return "several bodies: overflow\n";
  if (told.overflowed) return {};
  gsl_sweep::Contact& contact = told.answer.contact;
  contact.fixedTriangle += begin[contact.fixedBody];
  contact.fixedBody = 0;
  return AreSame(told.answer, whole.answer) ? std::string()
                                            : "several bodies: " + TextOf(told) + "\n";
}

/// Asks many questions in a batch, on a prepared pair.
std::string ComplaintOfBatch(const Scene& scene, const gsl_sweep::Question& asked,
                             const Told& single) {
  const Pair pair(BodyOf(scene.question.moving), {BodyOf(scene.question.fixed)}, OnThreads(2));
  const std::vector<gsl_sweep::Question> questions(5, asked);
  std::vector<Answer> answers(questions.size());
  bool overflowed = false;
  try {
    pair.First(questions.data(), questions.size(), answers.data(), OnThreads(3));
  } catch (const std::overflow_error&) {
    overflowed = true;
  }
  if (overflowed != single.overflowed) return "batch: overflow\n";
  if (overflowed) return {};
  for (const Answer& answer : answers) {
    if (!AreSame(answer, single.answer)) return "batch: another answer\n";
  }
  return {};
}

/// Asks a body that may leave what it touches at the start.
std::string ComplaintOfLeaving(const Scene& scene, RuleTally& tally) {
  const Expected expected(scene);
  expected.Count(tally.leaving);
  const gsl_sweep::Question asked = AskedOf(scene.question, expected.limit);
  const Told told = Ask(BodyOf(scene.question.moving), BodyOf(scene.question.fixed), asked);
  return Judged(scene.question, expected, told);
}

/// Asks for the last contact, within a limit that the numbers choose.
std::string ComplaintOfLast(const Scene& scene, SceneNumbers& numbers, RuleTally& tally) {
  const auto limit = static_cast<Limit>(numbers.Below(3) == 0 ? 0 : numbers.Below(6));
  const Expected expected(scene, limit);
  expected.Count(tally.last);
  const bool touches = expected.verdict.outcome != Outcome::None;
  tally.cut += touches && expected.travel == expected.limit ? 1 : 0;
  const gsl_sweep::Question asked = AskedOf(scene.question, expected.limit);
  const Body moving = BodyOf(scene.question.moving);
  const Body fixed = BodyOf(scene.question.fixed);
  const Told told = Ask(moving, fixed, asked, End::Last);
  const std::string complaint = Judged(scene.question, expected, told);
  if (!complaint.empty() || told.overflowed) return complaint;
  // A prepared pair has slabs.
  const Pair pair(moving, {fixed}, OnThreads(1));
  Answer again[2];
  const gsl_sweep::Question questions[2] = {asked, asked};
  pair.Last(questions, 2, again, OnThreads(1));
  for (const Answer& answer : again) {
    if (!AreSame(answer, told.answer)) return "batch: another last answer\n";
  }
  return {};
}

std::string ComplaintOfBox(const gsl_sweep::PatchSummary& summary, const Patch& expected,
                           const Rational& largest) {
  Rational error = largest;
  mpq_div_2exp(error.get_mpq_t(), error.get_mpq_t(), 51);
  error += UnitAt(0.0);
  std::string complaint;
  const auto check = [&](double told, const Rational& exact) {
    if (!std::isfinite(told) || abs(Rational(told) - exact) > error) complaint = "box of a patch\n";
  };
  check(summary.low.x, expected.low.x);
  check(summary.low.y, expected.low.y);
  check(summary.low.z, expected.low.z);
  check(summary.high.x, expected.high.x);
  check(summary.high.y, expected.high.y);
  check(summary.high.z, expected.high.z);
  return complaint;
}

std::string ComplaintOfPairs(const std::vector<gsl_sweep::Contact>& contacts, std::size_t written,
                             const Patch& expected, double travel) {
  for (std::size_t k = 0; k < contacts.size(); ++k) {
    const gsl_sweep::Contact& contact = contacts[k];
    if (k >= written) {
      if (contact.movingTriangle != kUntouched) return "patch: writes too much\n";
      continue;
    }
    if (std::make_pair(contact.movingTriangle, contact.fixedTriangle) != expected.pairs[k])
      return "patch: pair " + std::to_string(k) + "\n";
    if (!SameBits(contact.travel, travel)) return "patch: another travel\n";
  }
  return {};
}

/// Asks for all pairs of the first contact, with room for some of them.
std::string ComplaintOfPatch(const Scene& scene, SceneNumbers& numbers, RuleTally& tally) {
  const Expected first(scene);
  const std::size_t described = numbers.Below(1000);
  Patch expected;
  if (!first.limited) expected = JudgePatch(scene.question, described);
  const std::size_t count = expected.pairs.size();
  tally.patches += count > 1 ? 1 : 0;
  tally.patchPairs += count;
  const std::size_t rooms[] = {0, 1, count / 2, count, count + 3};
  const std::size_t capacity = rooms[numbers.Below(5)];
  gsl_sweep::Contact untouched;
  untouched.movingTriangle = kUntouched;
  std::vector<gsl_sweep::Contact> contacts(count + 4, untouched);
  const Body moving = BodyOf(scene.question.moving);
  const Body fixed = BodyOf(scene.question.fixed);
  const Pair pair(moving, {fixed}, OnThreads(1));
  const gsl_sweep::Question asked = AskedOf(scene.question, first.limit);
  const bool overflows = !first.limited && !std::isfinite(first.travel);
  gsl_sweep::PatchSummary summary;
  try {
    summary = pair.FindPatch(asked, contacts.data(), capacity, OnThreads(1));
  } catch (const std::overflow_error&) {
    return overflows ? "" : "patch: overflow\n";
  }
  if (overflows) return "patch: no overflow\n";
  if (summary.pairCount != count || pair.Patch(asked, nullptr, 0) != count) {
    return "patch: " + std::to_string(summary.pairCount) + " pairs, expected " +
           std::to_string(count) + "\n";
  }
  if (!AreSame(summary.first, pair.First(asked, OnThreads(1)))) return "patch: another first\n";
  const std::size_t written = std::min(count, capacity);
  const std::string complaint =
      ComplaintOfPairs(contacts, written, expected, summary.first.contact.travel);
  if (!complaint.empty() || count == 0) return complaint;
  const std::string ofBox = ComplaintOfBox(summary, expected, first.verdict.largest);
  if (!ofBox.empty() || described % count >= written) return ofBox;
  Told told = Ask(moving, fixed, asked);
  told.answer.contact = contacts[described % count];
  return Comparison(scene.question, expected.described, told).Run(false);
}

} // namespace

void RuleTally::Add(const RuleTally& other) {
  leaving.Add(other.leaving);
  last.Add(other.last);
  cut += other.cut;
  left += other.left;
  patches += other.patches;
  patchPairs += other.patchPairs;
}

std::string ComplaintOfRules(const Scene& scene, RuleTally& tally) {
  SceneNumbers numbers(scene);
  Scene leaving = scene;
  leaving.question.notLeaving = true;
  const bool isStart = Judge(scene.question).outcome == Outcome::Start;
  const bool staysStart = isStart && Judge(leaving.question).outcome == Outcome::Start;
  tally.left += isStart && !staysStart ? 1 : 0;
  const std::string ofLeaving = ComplaintOfLeaving(leaving, tally);
  if (!ofLeaving.empty()) return "leaving: " + ofLeaving;
  const Scene* const scenes[] = {&scene, &leaving};
  for (const Scene* asked : scenes) {
    const std::string name = asked == &scene ? "" : "leaving, ";
    const std::string ofLast = ComplaintOfLast(*asked, numbers, tally);
    if (!ofLast.empty()) return name + "last: " + ofLast;
    const std::string ofPatch = ComplaintOfPatch(*asked, numbers, tally);
    if (!ofPatch.empty()) return name + ofPatch;
  }
  return {};
}

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
  const gsl_sweep::Question asked = AskedOf(scene.question, expected.limit);
  const Told told = Ask(BodyOf(scene.question.moving), BodyOf(scene.question.fixed), asked);
  const std::string complaint = Judged(scene.question, expected, told);
  if (!complaint.empty()) return complaint;
  SceneNumbers numbers(scene);
  switch (numbers.Below(4)) {
  case 0:
    return ComplaintOfOffset(scene, numbers);
  case 1:
    return ComplaintOfMatrix(scene, numbers);
  case 2:
    return ComplaintOfSeveral(scene, numbers, asked, told);
  default:
    return ComplaintOfBatch(scene, asked, told);
  }
}

} // namespace reference
