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

Body BodyOf(const SolidScene& scene, const LatticeSolid& solid) {
  std::vector<double> vertices;
  for (const Coord3& p : CornersOf(scene, solid))
    vertices.insert(vertices.end(), {p.x, p.y, p.z});
  gsl_sweep::TriangleView view;
  view.vertices = vertices.data();
  view.vertexCount = vertices.size() / 3;
  view.triangleCount = vertices.size() / 9;
  return Body(view);
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
  if (complaints.Text().empty()) return {};
  return complaints.Text() + '\n' + Describe(scene);
}

} // namespace reference
