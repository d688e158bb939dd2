#include "ClearanceGuard.h"

#include "ClearanceJudge.h"

#include "gsl_Sweep.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace reference {

namespace {

using gsl_sweep::Answer;
using gsl_sweep::Body;
using gsl_sweep::ContactKind;
using gsl_sweep::Pair;
using gsl_sweep::SweepStatus;

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

double LargestOf(const std::vector<Coord3>& corners) {
  double largest = 0.0;
  for (const Coord3& p : corners)
    largest = std::max({largest, std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
  return largest;
}

Rational PowerOfTwo(int exponent) {
  Rational result(1);
  const auto bits = static_cast<mp_bitcnt_t>(std::abs(exponent));
  if (exponent >= 0) {
    mpq_mul_2exp(result.get_mpq_t(), result.get_mpq_t(), bits);
  } else {
    mpq_div_2exp(result.get_mpq_t(), result.get_mpq_t(), bits);
  }
  return result;
}

/// Four units in the last place of the greater of two numbers.
Rational Bound(double largest, double travel) {
  int exponent = 0;
  std::frexp(std::max(largest, travel), &exponent);
  return PowerOfTwo(std::max(exponent - 53, -1074)) * 4;
}

/// Returns the root of a square with a relative error below 2^-90, at most the root.
Rational RootBelow(const Rational& square) {
  const int size = static_cast<int>(mpz_sizeinbase(square.get_num_mpz_t(), 2)) -
                   static_cast<int>(mpz_sizeinbase(square.get_den_mpz_t(), 2));
  const int shift = 2 * ((200 - size) / 2);
  const Rational scaled = square * PowerOfTwo(shift);
  Whole root;
  const Whole whole = scaled.get_num() / scaled.get_den();
  mpz_sqrt(root.get_mpz_t(), whole.get_mpz_t());
  return Rational(root) * PowerOfTwo(-shift / 2);
}

/// Rounds a number to 100 bits, so that it stays short.
Rational Rounded(const Rational& number) {
  if (number == 0) return number;
  const int shift = 100 - static_cast<int>(mpz_sizeinbase(number.get_num_mpz_t(), 2)) +
                    static_cast<int>(mpz_sizeinbase(number.get_den_mpz_t(), 2));
  const Rational scaled = number * PowerOfTwo(shift);
  return Rational(Whole(scaled.get_num() / scaled.get_den())) * PowerOfTwo(-shift);
}

bool SameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

bool AreSame(const Answer& a, const Answer& b) {
  return a.status == b.status && a.isExact == b.isExact && SameBits(a.errorBound, b.errorBound) &&
         SameBits(a.contact.travel, b.contact.travel) && a.contact.kind == b.contact.kind &&
         a.contact.movingTriangle == b.contact.movingTriangle &&
         a.contact.fixedTriangle == b.contact.fixedTriangle &&
         SameBits(a.contact.movingPoint.x, b.contact.movingPoint.x) &&
         SameBits(a.contact.fixedPoint.z, b.contact.fixedPoint.z);
}

/// Judges one scene.
class Bench {
public:
  Bench(const ClearanceScene& scene, ClearanceTally& tally)
      : m_scene(scene), m_tally(tally), m_moved(scene.moving),
        m_squared(Rational(scene.clearance) * Rational(scene.clearance)) {
    for (Coord3& p : m_moved)
      p = gsl_arithmetic::Add(p, scene.offset);
    m_largest = std::max(LargestOf(m_moved), LargestOf(scene.fixed));
    const Coord3& d = scene.direction;
    m_length = RootBelow(Rational(d.x) * Rational(d.x) + Rational(d.y) * Rational(d.y) +
                         Rational(d.z) * Rational(d.z));
  }

  std::string Run() {
    gsl_sweep::Question question;
    question.direction = m_scene.direction;
    question.offset = m_scene.offset;
    question.clearance = m_scene.clearance;
    const Body moving = BodyOf(m_scene.moving.data(), m_scene.moving.size());
    const Body fixed = BodyOf(m_scene.fixed.data(), m_scene.fixed.size());
    const Pair pair(moving, {fixed});
    const Answer answer = pair.First(question);
    Require(!answer.isExact, "the answer says that it is exact");
    CheckWays(moving, pair, question, answer);
    switch (answer.status) {
    case SweepStatus::Start:
      ++m_tally.starts;
      CheckStart(answer);
      break;
    case SweepStatus::Contact:
      ++m_tally.contacts;
      ++m_tally.kinds[static_cast<int>(answer.contact.kind)];
      CheckContact(answer);
      break;
    case SweepStatus::None:
      ++m_tally.nones;
      CheckNone();
      break;
    case SweepStatus::Cancelled:
      Require(false, "cancelled");
      break;
    }
    return m_text;
  }

private:
  void Require(bool holds, const std::string& text) {
    if (!holds) m_text += text + "; ";
  }

  std::size_t MovingCount() const { return m_moved.size() / 3; }
  std::size_t FixedCount() const { return m_scene.fixed.size() / 3; }

  ClearancePair At(std::size_t i, std::size_t j) const {
    const auto triangle = [](const std::vector<Coord3>& corners, std::size_t k) {
      return std::array<Coord3, 3>{corners[3 * k], corners[3 * k + 1], corners[3 * k + 2]};
    };
    return {triangle(m_moved, i), triangle(m_scene.fixed, j), m_scene.direction};
  }

  /// Calls visit(i, j, pair) in the order of ties, until it returns false.
  template <class Visit>
  void EachPair(const Visit& visit) {
    for (std::size_t i = 0; i < MovingCount(); ++i) {
      for (std::size_t j = 0; j < FixedCount(); ++j)
        if (!visit(i, j, At(i, j))) return;
    }
  }

  /// The same answer comes from a prepared pair, from one body in two, and with a greatest distance
  /// that is the travel.
  void CheckWays(const Body& moving, const Pair& pair, gsl_sweep::Question question,
                 const Answer& answer) {
    const std::vector<gsl_sweep::Question> questions(3, question);
    std::vector<Answer> answers(3);
    pair.First(questions.data(), 3, answers.data());
    for (const Answer& again : answers)
      Require(AreSame(again, answer), "another answer in a batch");
    if (answer.status == SweepStatus::Contact) {
      question.maxDistance = answer.contact.travel;
      Require(AreSame(pair.First(question), answer), "another answer within its travel");
      question.maxDistance = std::nextafter(answer.contact.travel, 0.0);
      Require(pair.First(question).status == SweepStatus::None, "a contact beyond the limit");
      question.maxDistance = std::numeric_limits<double>::infinity();
    }
    const std::size_t half = FixedCount() / 2;
    const Coord3* corners = m_scene.fixed.data();
    const Pair several(
        moving, {BodyOf(corners, 3 * half), BodyOf(corners + 3 * half, 3 * (FixedCount() - half))});
    Answer joined = several.First(question);
    if (joined.contact.fixedBody == 1) joined.contact.fixedTriangle += half;
    Require(AreSame(joined, answer), "another answer for two bodies");
  }

  void CheckStart(const Answer& answer) {
    bool found = false;
    EachPair([&](std::size_t i, std::size_t j, const ClearancePair& pair) {
      found = pair.IsWithin(0, m_squared);
      if (found) {
        Require(i == answer.contact.movingTriangle && j == answer.contact.fixedTriangle,
                "start with another pair");
      }
      return !found;
    });
    Require(found, "start while the bodies are apart");
    Require(answer.contact.travel == 0.0, "start with a travel");
  }

  void CheckNone() {
    // Farther than any two corners are apart.
    const Rational end = Rational(m_largest) * 16 / m_length + 1;
    EachPair([&](std::size_t i, std::size_t j, const ClearancePair& pair) {
      RequireApart(i, j, pair, end);
      return true;
    });
  }

  /// Returns true when an axis keeps the pair clearly farther apart than the clearance.
  bool AreFar(std::size_t i, std::size_t j, const Rational& end) const {
    const std::array<Coord3, 3> moving = Triangle(m_moved, i);
    const std::array<Coord3, 3> fixed = Triangle(m_scene.fixed, j);
    const double multiple = end.get_d();
    const auto isFar = [&](double Coord3::*axis) {
      const double shift = multiple * (m_scene.direction.*axis);
      const auto [low, high] = std::minmax({moving[0].*axis, moving[1].*axis, moving[2].*axis});
      const auto [under, over] = std::minmax({fixed[0].*axis, fixed[1].*axis, fixed[2].*axis});
      const double gap =
          std::max(under - std::max(high, high + shift), std::min(low, low + shift) - over);
      return gap > m_scene.clearance + 1e-9 * (m_scene.clearance + m_largest + std::fabs(shift));
    };
    return isFar(&Coord3::x) || isFar(&Coord3::y) || isFar(&Coord3::z);
  }

  void RequireApart(std::size_t i, std::size_t j, const ClearancePair& pair, const Rational& end) {
    if (AreFar(i, j, end)) return;
    const std::optional<bool> within = pair.IsWithinBetween(0, end, m_squared);
    if (!within) ++m_tally.open;
    Require(!within || !*within, "pair " + std::to_string(i) + ", " + std::to_string(j) +
                                     " is within the clearance before");
  }

  void CheckContact(const Answer& answer) {
    const double travel = answer.contact.travel;
    const Rational bound = Bound(m_largest, travel);
    Require(Rational(answer.errorBound) == bound, "another error bound");
    const Rational before =
        std::max(Rational(0), Rounded(Rational((Rational(travel) - bound) / m_length)));
    const Rational after = Rounded(Rational((Rational(travel) + bound) / m_length));
    const std::size_t i = answer.contact.movingTriangle;
    const std::size_t j = answer.contact.fixedTriangle;
    const ClearancePair named = At(i, j);
    const std::optional<bool> within = named.IsWithinBetween(before, after, m_squared);
    if (!within) ++m_tally.open;
    Require(!within || *within, "the pair is not within the clearance at the travel");
    Require(travel > 0.0, "a contact without a travel");
    EachPair([&](std::size_t m, std::size_t f, const ClearancePair& pair) {
      if (before > 0) {
        RequireApart(m, f, pair, before);
      } else {
        Require(!pair.IsWithin(0, m_squared), "no start while a pair is within the clearance");
      }
      const bool isLower = m < i || (m == i && f < j);
      if (isLower && pair.IsWithin(after, m_squared) && named.IsWithin(after, m_squared))
        Require(IsLater(pair, named, before, after), "a lower pair is as early");
      return true;
    });
    CheckPoints(answer, bound);
    CheckKind(answer.contact, bound);
  }

  /// The points are on features of the named kind. A corner is told without error, but for
  /// coordinates below 2^-288 times the largest.
  void CheckKind(const gsl_sweep::Contact& contact, const Rational& bound) {
    const Rational tiny = Rational(m_largest) * PowerOfTwo(-288);
    const auto isOn = [&](int cornerCount, const Coord3& p, const std::array<Coord3, 3>& t) {
      const Rational error = cornerCount == 1 ? tiny : bound;
      for (std::size_t k = 0; k < 3; ++k) {
        const Coord3& end = t[cornerCount == 1 ? k : (k + 1) % 3];
        const Coord3& other = cornerCount == 3 ? t[(k + 2) % 3] : end;
        const ClearancePair toFeature({p, p, p}, {t[k], end, other}, {1, 0, 0});
        if (toFeature.IsWithin(0, error * error * 3)) return true;
      }
      return false;
    };
    const auto countOf = [](ContactKind kind) -> std::array<int, 2> {
      switch (kind) {
      case ContactKind::VertexVertex:
        return {1, 1};
      case ContactKind::VertexEdge:
        return {1, 2};
      case ContactKind::EdgeVertex:
        return {2, 1};
      case ContactKind::VertexFace:
        return {1, 3};
      case ContactKind::FaceVertex:
        return {3, 1};
      case ContactKind::EdgeEdge:
        return {2, 2};
      default:
        return {0, 0};
      }
    };
    const std::array<int, 2> count = countOf(contact.kind);
    Require(count[0] != 0, "a kind that names no features");
    if (count[0] == 0) return;
    Require(isOn(count[0], contact.movingPoint, Triangle(m_moved, contact.movingTriangle)) &&
                isOn(count[1], contact.fixedPoint, Triangle(m_scene.fixed, contact.fixedTriangle)),
            "the points are not on features of the named kind");
  }

  /// Returns true when one pair comes within the clearance later than another. Both are within it
  /// at the end.
  bool IsLater(const ClearancePair& one, const ClearancePair& other, Rational from,
               Rational to) const {
    if (one.IsWithin(from, m_squared) || other.IsWithin(from, m_squared)) return true;
    for (int step = 0; step < 50; ++step) {
      const Rational middle = (from + to) / 2;
      const bool isWithin = one.IsWithin(middle, m_squared);
      if (isWithin != other.IsWithin(middle, m_squared)) return !isWithin;
      (isWithin ? to : from) = middle;
    }
    return false;
  }

  void CheckPoints(const Answer& answer, const Rational& bound) {
    const gsl_sweep::Contact& contact = answer.contact;
    const Coord3& p = contact.movingPoint;
    const Coord3& q = contact.fixedPoint;
    const ClearancePair onMoving({p, p, p}, Triangle(m_moved, contact.movingTriangle), {1, 0, 0});
    const ClearancePair onFixed({q, q, q}, Triangle(m_scene.fixed, contact.fixedTriangle),
                                {1, 0, 0});
    const Rational squaredBound = bound * bound * 3;
    Require(onMoving.IsWithin(0, squaredBound), "the moving point is not on its triangle");
    Require(onFixed.IsWithin(0, squaredBound), "the fixed point is not on its triangle");
    const ClearancePair points({p, p, p}, {q, q, q}, m_scene.direction);
    const Rational square = points.At(Rational(contact.travel) / m_length).square;
    const Rational slack = bound * 6;
    const Rational most = Rational(m_scene.clearance) + slack;
    const Rational least = Rational(m_scene.clearance) - slack;
    Require(square <= most * most && (least <= 0 || square >= least * least),
            "the points are not at the clearance");
  }

  static std::array<Coord3, 3> Triangle(const std::vector<Coord3>& corners, std::size_t k) {
    return {corners[3 * k], corners[3 * k + 1], corners[3 * k + 2]};
  }

  const ClearanceScene& m_scene;
  ClearanceTally& m_tally;
  std::vector<Coord3> m_moved;
  Rational m_squared, m_length;
  double m_largest;
  std::string m_text;
};

} // namespace

std::string ClearanceComplaint(const ClearanceScene& scene, ClearanceTally& tally) {
  ++tally.scenes;
  const std::string text = Bench(scene, tally).Run();
  return text.empty() ? text : text + '\n' + Describe(scene);
}

} // namespace reference
