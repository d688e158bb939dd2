#include "ClearanceJudge.h"

#include <algorithm>

namespace reference {

namespace {

RationalPoint operator+(const RationalPoint& a, const RationalPoint& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
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

RationalPoint Exact(const Coord3& p) {
  return {Rational(p.x), Rational(p.y), Rational(p.z)};
}

/// Keeps the shorter of two vectors.
struct Shortest {
  RationalPoint vector;
  Rational square;
  bool any = false;

  void Take(const RationalPoint& v) {
    const Rational length = Dot(v, v);
    if (any && length >= square) return;
    vector = v;
    square = length;
    any = true;
  }
};

/// Takes the vectors from p to the corners and edges of a triangle, and to its face.
void TakeFromPoint(const RationalPoint& p, const RationalTriangle& t, const Rational& sign,
                   Shortest& best) {
  bool isOverFace = true;
  const RationalPoint normal = Cross(t[1] - t[0], t[2] - t[0]);
  for (std::size_t k = 0; k < 3; ++k) {
    const RationalPoint edge = t[Next(k)] - t[k];
    const RationalPoint r = p - t[k];
    best.Take((t[k] - p) * sign);
    const Rational along = Dot(edge, r);
    const Rational whole = Dot(edge, edge);
    if (along > 0 && along < whole) best.Take((edge * Rational(along / whole) - r) * sign);
    isOverFace = isOverFace && Dot(normal, Cross(edge, r)) > 0;
  }
  if (isOverFace) best.Take(normal * Rational(sign * Dot(normal, t[0] - p) / Dot(normal, normal)));
}

/// Takes the vector between the insides of two segments, where the shortest is between them.
void TakeBetween(const RationalPoint& a, const RationalPoint& e, const RationalPoint& b,
                 const RationalPoint& f, Shortest& best) {
  const RationalPoint normal = Cross(e, f);
  const Rational whole = Dot(normal, normal);
  if (whole == 0) return;
  const RationalPoint w = b - a;
  const Rational onE = Dot(Cross(w, f), normal);
  const Rational onF = Dot(Cross(w, e), normal);
  if (onE < 0 || onE > whole || onF < 0 || onF > whole) return;
  best.Take(normal * Rational(Dot(w, normal) / whole));
}

/// Returns true when an edge of one triangle goes through the inside of the other.
bool DoesCross(const RationalTriangle& edges, const RationalTriangle& face) {
  const RationalPoint normal = Cross(face[1] - face[0], face[2] - face[0]);
  for (std::size_t k = 0; k < 3; ++k) {
    const RationalPoint& a = edges[k];
    const RationalPoint& b = edges[Next(k)];
    const Rational atA = Dot(normal, a - face[0]);
    const Rational atB = Dot(normal, b - face[0]);
    if (atA * atB > 0 || atA == atB) continue;
    const RationalPoint p = a + (b - a) * Rational(atA / (atA - atB));
    bool isIn = true;
    for (std::size_t j = 0; j < 3; ++j)
      isIn = isIn && Dot(normal, Cross(face[Next(j)] - face[j], p - face[j])) >= 0;
    if (isIn) return true;
  }
  return false;
}

} // namespace

ClearancePair::ClearancePair(const std::array<Coord3, 3>& moving,
                             const std::array<Coord3, 3>& fixed, const Coord3& direction)
    : m_moving{Exact(moving[0]), Exact(moving[1]), Exact(moving[2])}, m_fixed{Exact(fixed[0]),
                                                                              Exact(fixed[1]),
                                                                              Exact(fixed[2])},
      m_direction(Exact(direction)) {}

RationalPoint ClearancePair::Nearest(const Rational& multiple) const {
  const RationalPoint shift = m_direction * multiple;
  const RationalTriangle moved{m_moving[0] + shift, m_moving[1] + shift, m_moving[2] + shift};
  if (DoesCross(moved, m_fixed) || DoesCross(m_fixed, moved)) return {0, 0, 0};
  Shortest best;
  for (std::size_t i = 0; i < 3; ++i) {
    TakeFromPoint(moved[i], m_fixed, 1, best);
    TakeFromPoint(m_fixed[i], moved, -1, best);
    for (std::size_t j = 0; j < 3; ++j)
      TakeBetween(moved[i], moved[Next(i)] - moved[i], m_fixed[j], m_fixed[Next(j)] - m_fixed[j],
                  best);
  }
  return best.vector;
}

bool ClearancePair::IsWithin(const Rational& multiple, const Rational& squaredClearance) const {
  const RationalPoint nearest = Nearest(multiple);
  return Dot(nearest, nearest) <= squaredClearance;
}

/// Returns the slope of the squared distance.
Rational ClearancePair::Slope(const RationalPoint& nearest) const {
  return -2 * Dot(nearest, m_direction);
}

std::optional<bool> ClearancePair::IsWithinBetween(const Rational& from, const Rational& to,
                                                   const Rational& squaredClearance) const {
  struct End {
    Rational at, square, slope;
  };
  const auto endAt = [this](const Rational& at) {
    const RationalPoint nearest = Nearest(at);
    return End{at, Dot(nearest, nearest), Slope(nearest)};
  };
  End low = endAt(from);
  if (low.square <= squaredClearance) return true;
  if (low.slope >= 0) return false;
  End high = endAt(to);
  if (high.square <= squaredClearance) return true;
  if (high.slope <= 0) return false;
  for (int step = 0; step < 40; ++step) {
    // The lines along both slopes are below the squared distance.
    const Rational meet = (low.square - high.square + high.slope * high.at - low.slope * low.at) /
                          (high.slope - low.slope);
    if (low.square + low.slope * (meet - low.at) > squaredClearance) return false;
    // Where one parabola joins the ends, its least value is where the slope is zero.
    Rational middle = (low.at + high.at) / 2;
    if (step % 2 == 0) middle = low.at - low.slope * (high.at - low.at) / (high.slope - low.slope);
    const End end = endAt(middle);
    if (end.square <= squaredClearance) return true;
    if (end.slope == 0) return false;
    (end.slope < 0 ? low : high) = end;
  }
  return std::nullopt;
}

Rational ClearancePair::First(Rational from, Rational to, const Rational& squaredClearance,
                              int bits) const {
  Rational error(1);
  mpq_div_2exp(error.get_mpq_t(), error.get_mpq_t(), static_cast<mp_bitcnt_t>(bits));
  while (to - from > error) {
    const Rational middle = (from + to) / 2;
    (IsWithin(middle, squaredClearance) ? to : from) = middle;
  }
  return to;
}

} // namespace reference
