#include "SolidGuard.h"

#include "gsl_Sweep.h"

#include <cmath>
#include <limits>
#include <utility>

namespace reference {

namespace {

using gsl_sweep::Answer;
using gsl_sweep::Body;
using gsl_sweep::ContactKind;
using gsl_sweep::Pair;
using gsl_sweep::SweepStatus;

constexpr double infinity = std::numeric_limits<double>::infinity();

Body BodyOf(const Coord3* corners, std::size_t count) {
  std::vector<double> vertices;
  for (std::size_t k = 0; k < count; ++k)
    vertices.insert(vertices.end(), {corners[k].x, corners[k].y, corners[k].z});
  gsl_sweep::TriangleView view;
  view.vertices = vertices.data();
  view.vertexCount = count;
  view.triangleCount = count / 3;
  return Body(view);
}

/// Returns the body of a solid, moved along x.
Body BodyOf(const SolidScene& scene, const LatticeSolid& solid, double x = 0.0) {
  std::vector<Coord3> corners = CornersOf(scene, solid);
  for (Coord3& p : corners)
    p.x += x;
  return BodyOf(corners.data(), corners.size());
}

/// The travel of a verdict in the units of the scene, correctly rounded.
double TravelOf(const SolidScene& scene, const SolidVerdict& verdict) {
  Rational square = 0;
  for (const std::int64_t c : scene.question.direction)
    square += Rational(Whole(c)) * c;
  return NearestRoot(square * verdict.travel * verdict.travel) * scene.unit;
}

bool AreNearlyEqual(double a, double b) {
  return a == b || a == std::nextafter(b, 0.0) || a == std::nextafter(b, infinity);
}

class Complaints {
public:
  Complaints(const SolidScene& scene, const SolidVerdict& verdict)
      : m_scene(scene), m_verdict(verdict) {}

  void Check(const Answer& answer) {
    switch (m_verdict.outcome) {
    case SolidOutcome::None:
      Require(answer.status == SweepStatus::None, "a contact where there is none");
      break;
    case SolidOutcome::Contact:
      Require(answer.status == SweepStatus::Contact, "no contact after a travel");
      if (answer.status != SweepStatus::Contact) break;
      Require(AreNearlyEqual(answer.contact.travel, TravelOf(m_scene, m_verdict)),
              "another travel: " + std::to_string(answer.contact.travel) + ", expected " +
                  std::to_string(TravelOf(m_scene, m_verdict)));
      CheckPair(answer);
      break;
    case SolidOutcome::OverlapAfterStart:
      Require(answer.status == SweepStatus::Start, "no start where they overlap at once");
      Require(!answer.contact.overlapsAtStart, "an overlap before any travel");
      CheckPair(answer);
      break;
    case SolidOutcome::OverlapAtStart:
      Require(answer.status == SweepStatus::Start, "no start where they overlap");
      Require(answer.contact.overlapsAtStart, "no overlap before any travel");
      Require(m_verdict.touches || answer.contact.kind == ContactKind::Inside,
              "not inside, and they do not touch");
      break;
    }
    if (answer.status == SweepStatus::Start) {
      Require(answer.contact.travel == 0.0, "a start after a travel");
    }
  }

  void Require(bool holds, const std::string& text) {
    if (!holds) m_text += text + "; ";
  }

  const std::string& Text() const { return m_text; }

private:
  void CheckPair(const Answer& answer) {
    Require(answer.contact.movingTriangle == m_verdict.moving &&
                answer.contact.fixedTriangle == m_verdict.fixed,
            "the pair " + std::to_string(answer.contact.movingTriangle) + ", " +
                std::to_string(answer.contact.fixedTriangle) + ", expected " +
                std::to_string(m_verdict.moving) + ", " + std::to_string(m_verdict.fixed));
  }

  const SolidScene& m_scene;
  const SolidVerdict& m_verdict;
  std::string m_text;
};

gsl_sweep::Question Asked(const SolidScene& scene, double sense) {
  const LatticePoint& d = scene.question.direction;
  gsl_sweep::Question question;
  question.rule = gsl_sweep::Rule::Solid;
  question.direction = {sense * static_cast<double>(d[0]), sense * static_cast<double>(d[1]),
                        sense * static_cast<double>(d[2])};
  return question;
}

/// Asks again with a greatest distance at the travel and beside it.
void CheckLimits(const Pair& pair, gsl_sweep::Question question, const Answer& answer,
                 Complaints& complaints) {
  const double travel = answer.contact.travel;
  question.maxDistance = std::nextafter(travel, 0.0);
  complaints.Require(pair.First(question).status == SweepStatus::None,
                     "a contact beyond the limit");
  question.maxDistance = std::nextafter(travel, infinity);
  complaints.Require(pair.First(question).status == SweepStatus::Contact,
                     "no contact within the limit");
}

bool AreEqual(const Coord3& p, const Coord3& q) {
  return p.x == q.x && p.y == q.y && p.z == q.z;
}

/// Requires the same answer, with numbers of fixed triangles that count through all bodies.
void CheckSame(const Answer& answer, const Answer& expected, std::size_t trianglesBefore,
               const std::string& text, Complaints& complaints) {
  complaints.Require(answer.status == expected.status, text + ": another status");
  const gsl_sweep::Contact& one = answer.contact;
  const gsl_sweep::Contact& other = expected.contact;
  complaints.Require(one.travel == other.travel && one.kind == other.kind &&
                         one.overlapsAtStart == other.overlapsAtStart &&
                         one.movingIsInside == other.movingIsInside &&
                         AreEqual(one.movingPoint, other.movingPoint) &&
                         AreEqual(one.fixedPoint, other.fixedPoint),
                     text + ": another contact");
  const bool isMovingInside = one.kind == ContactKind::Inside && one.movingIsInside;
  const std::size_t before = isMovingInside ? 0 : trianglesBefore;
  complaints.Require(one.movingTriangle == other.movingTriangle &&
                         one.fixedTriangle + before == other.fixedTriangle,
                     text + ": the pair " + std::to_string(one.movingTriangle) + ", " +
                         std::to_string(one.fixedTriangle + before) + ", expected " +
                         std::to_string(other.movingTriangle) + ", " +
                         std::to_string(other.fixedTriangle));
}

/// Several fixed bodies answer as one body that holds them all.
void CheckSeveral(const SolidScene& scene, const Body& moving, const Answer& expected,
                  Complaints& complaints) {
  const std::vector<Coord3> corners = CornersOf(scene, scene.question.fixed);
  std::vector<Body> bodies;
  std::vector<std::size_t> before{0};
  for (const std::size_t count : scene.fixedBodies) {
    bodies.push_back(BodyOf(&corners[3 * before.back()], 3 * count));
    before.push_back(before.back() + count);
  }
  const Answer answer = Pair(moving, bodies).First(Asked(scene, 1.0));
  CheckSame(answer, expected, before[answer.contact.fixedBody], "several bodies", complaints);
}

/// An offset that rounds answers as a body that was moved before.
void CheckOffset(const SolidScene& scene, Complaints& complaints) {
  const double far = 0x1.8p52 * scene.unit;
  const Body fixed = BodyOf(scene, scene.question.fixed, far);
  const Body moved = BodyOf(scene, scene.question.moving, far);
  const Body moving = BodyOf(scene.beforeOffset.data(), scene.beforeOffset.size());
  if (!moving.IsSolid() || !moved.IsSolid()) return;
  gsl_sweep::Question question = Asked(scene, 1.0);
  const Answer expected = Pair(moved, {fixed}).First(question);
  complaints.Check(expected);
  question.offset = {far, 0.0, 0.0};
  const Answer answer = Pair(moving, {fixed}).First(question);
  CheckSame(answer, expected, 0, "after an offset", complaints);
  question.direction = {-question.direction.x, -question.direction.y, -question.direction.z};
  question.offset = {};
  const Answer swapped = Pair(fixed, {moved}).First(question);
  complaints.Require(swapped.status == answer.status, "after an offset: another status, swapped");
}

} // namespace

std::string SolidComplaint(const SolidScene& scene, SolidTally& tally) {
  const SolidVerdict verdict = JudgeSolids(scene.question);
  ++tally.scenes;
  ++tally.outcomes[static_cast<int>(verdict.outcome)];
  tally.touching += verdict.touches ? 1 : 0;
  const bool isInside = verdict.outcome == SolidOutcome::OverlapAtStart && !verdict.touches;
  tally.inside += isInside ? 1 : 0;
  Complaints complaints(scene, verdict);
  const Body moving = BodyOf(scene, scene.question.moving);
  const Body fixed = BodyOf(scene, scene.question.fixed);
  const gsl_sweep::Question question = Asked(scene, 1.0);
  const Pair pair(moving, {fixed});
  const Answer answer = pair.First(question);
  complaints.Check(answer);
  if (answer.status == SweepStatus::Contact) CheckLimits(pair, question, answer, complaints);
  // Whichever body moves, the same happens.
  const Answer swapped = Pair(fixed, {moving}).First(Asked(scene, -1.0));
  complaints.Require(swapped.status == answer.status &&
                         swapped.contact.travel == answer.contact.travel &&
                         swapped.contact.overlapsAtStart == answer.contact.overlapsAtStart,
                     "another answer with the bodies in each other's place");
  if (!scene.fixedBodies.empty()) CheckSeveral(scene, moving, answer, complaints);
  if (!scene.beforeOffset.empty()) CheckOffset(scene, complaints);
  if (complaints.Text().empty()) return {};
  return complaints.Text() + '\n' + Describe(scene);
}

} // namespace reference
