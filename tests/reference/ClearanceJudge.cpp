#include "ClearanceJudge.h"

#include <algorithm>
#include <cmath>

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

std::size_t Next(std::size_t k) {
  return k == 2 ? 0 : k + 1;
}

/// Keeps the shortest of vectors, each a whole vector over a divisor. The squares of their lengths
/// are given as quotients.
struct Shortest {
  WholePoint vector;
  Whole divisor, over, under;
  bool any = false;

  void Take(const WholePoint& v, const Whole& by, const Whole& squareOver,
            const Whole& squareUnder) {
    if (any && squareOver * under >= over * squareUnder) return;
    vector = v;
    divisor = by;
    over = squareOver;
    under = squareUnder;
    any = true;
  }
};

/// Takes the vectors from p to the corners and edges of a triangle, and to its face, times a sign.
void TakeFromPoint(const WholePoint& p, const WholeTriangle& t, int sign, Shortest& best) {
  bool isOverFace = true;
  const WholePoint normal = Cross(t[1] - t[0], t[2] - t[0]);
  for (std::size_t k = 0; k < 3; ++k) {
    const WholePoint edge = t[Next(k)] - t[k];
    const WholePoint r = p - t[k];
    best.Take(r * -sign, 1, Dot(r, r), 1);
    const Whole along = Dot(edge, r);
    const Whole whole = Dot(edge, edge);
    if (along > 0 && along < whole) {
      const WholePoint across = Cross(edge, r);
      best.Take((edge * along - r * whole) * sign, whole, Dot(across, across), whole);
    }
    isOverFace = isOverFace && Dot(normal, Cross(edge, r)) > 0;
  }
  if (!isOverFace) return;
  const Whole height = Dot(normal, t[0] - p);
  const Whole whole = Dot(normal, normal);
  best.Take(normal * (height * sign), whole, height * height, whole);
}

/// Takes the vector between two segments, where the shortest is between their insides.
void TakeBetween(const WholePoint& a, const WholePoint& e, const WholePoint& b, const WholePoint& f,
                 Shortest& best) {
  const WholePoint normal = Cross(e, f);
  const Whole whole = Dot(normal, normal);
  if (whole == 0) return;
  const WholePoint w = b - a;
  const Whole onE = Dot(Cross(w, f), normal);
  const Whole onF = Dot(Cross(w, e), normal);
  if (onE < 0 || onE > whole || onF < 0 || onF > whole) return;
  const Whole height = Dot(w, normal);
  best.Take(normal * height, whole, height * height, whole);
}

/// Returns true when an edge of one triangle goes through the other.
bool DoesCross(const WholeTriangle& edges, const WholeTriangle& face) {
  const WholePoint normal = Cross(face[1] - face[0], face[2] - face[0]);
  for (std::size_t k = 0; k < 3; ++k) {
    const WholePoint& a = edges[k];
    const WholePoint& b = edges[Next(k)];
    const Whole atA = Dot(normal, a - face[0]);
    const Whole atB = Dot(normal, b - face[0]);
    if (sgn(atA) * sgn(atB) > 0 || atA == atB) continue;
    // The point on the plane, times `whole`, which is made positive.
    const Whole whole = abs(atA - atB);
    const WholePoint p = a * whole + (b - a) * (atA > atB ? atA : Whole(-atA));
    bool isIn = true;
    for (std::size_t j = 0; j < 3; ++j)
      isIn = isIn && Dot(normal, Cross(face[Next(j)] - face[j], p - face[j] * whole)) >= 0;
    if (isIn) return true;
  }
  return false;
}

/// Returns the exponent of the lowest bit of a double other than zero.
int LowestBit(double c) {
  int exponent = 0;
  const Whole bits(std::ldexp(std::frexp(c, &exponent), 53));
  return exponent - 53 + static_cast<int>(mpz_scan1(bits.get_mpz_t(), 0));
}

/// Returns c / 2^unit.
Whole WholeOf(double c, int unit) {
  int exponent = 0;
  const Whole bits(std::ldexp(std::frexp(c, &exponent), 53));
  const int shift = exponent - 53 - unit;
  if (shift >= 0) return bits << static_cast<mp_bitcnt_t>(shift);
  return bits >> static_cast<mp_bitcnt_t>(-shift);
}

Rational TimesPower(Rational value, int exponent) {
  if (exponent >= 0) {
    mpq_mul_2exp(value.get_mpq_t(), value.get_mpq_t(), static_cast<mp_bitcnt_t>(exponent));
  } else {
    mpq_div_2exp(value.get_mpq_t(), value.get_mpq_t(), static_cast<mp_bitcnt_t>(-exponent));
  }
  return value;
}

} // namespace

ClearancePair::ClearancePair(const std::array<Coord3, 3>& moving,
                             const std::array<Coord3, 3>& fixed, const Coord3& direction) {
  m_unit = 1000;
  const auto cover = [this](const Coord3& p) {
    for (const double c : {p.x, p.y, p.z})
      if (c != 0.0) m_unit = std::min(m_unit, LowestBit(c));
  };
  std::for_each(moving.begin(), moving.end(), cover);
  std::for_each(fixed.begin(), fixed.end(), cover);
  cover(direction);
  const auto whole = [this](const Coord3& p) {
    return WholePoint{WholeOf(p.x, m_unit), WholeOf(p.y, m_unit), WholeOf(p.z, m_unit)};
  };
  for (std::size_t k = 0; k < 3; ++k) {
    m_moving[k] = whole(moving[k]);
    m_fixed[k] = whole(fixed[k]);
  }
  m_direction = whole(direction);
}

Nearness ClearancePair::At(const Rational& multiple) const {
  // Everything times the divisor of the multiple.
  const Whole& by = multiple.get_den();
  const WholePoint shift = m_direction * multiple.get_num();
  WholeTriangle moved;
  WholeTriangle fixed;
  for (std::size_t k = 0; k < 3; ++k) {
    moved[k] = m_moving[k] * by + shift;
    fixed[k] = m_fixed[k] * by;
  }
  Nearness result{multiple, 0, 0};
  if (DoesCross(moved, fixed) || DoesCross(fixed, moved)) return result;
  Shortest best;
  for (std::size_t i = 0; i < 3; ++i) {
    TakeFromPoint(moved[i], fixed, 1, best);
    TakeFromPoint(fixed[i], moved, -1, best);
    for (std::size_t j = 0; j < 3; ++j) {
      TakeBetween(moved[i], moved[Next(i)] - moved[i], fixed[j], fixed[Next(j)] - fixed[j], best);
    }
  }
  result.square = TimesPower(Rational(best.over, best.under * by * by), 2 * m_unit);
  result.square.canonicalize();
  result.slope =
      TimesPower(Rational(-2 * Dot(best.vector, m_direction), best.divisor * by), 2 * m_unit);
  result.slope.canonicalize();
  return result;
}

bool ClearancePair::IsWithin(const Rational& multiple, const Rational& squaredClearance) const {
  return At(multiple).square <= squaredClearance;
}

std::optional<bool> ClearancePair::IsWithinBetween(const Rational& from, const Rational& to,
                                                   const Rational& squaredClearance) const {
  Nearness low = At(from);
  if (low.square <= squaredClearance) return true;
  if (low.slope >= 0) return false;
  Nearness high = At(to);
  if (high.square <= squaredClearance) return true;
  if (high.slope <= 0) return false;
  for (int step = 0; step < 40; ++step) {
    // The lines along both slopes are below the squared distance.
    const Rational meet = (low.square - high.square + high.slope * high.at - low.slope * low.at) /
                          (high.slope - low.slope);
    if (low.square + low.slope * (meet - low.at) > squaredClearance) return false;
    // Where one parabola joins the ends, its least value is where the slope is zero.
    Rational middle = (low.at + high.at) / 2;
    if (step % 4 == 3) middle = low.at - low.slope * (high.at - low.at) / (high.slope - low.slope);
    const Nearness end = At(middle);
    if (end.square <= squaredClearance) return true;
    if (end.slope == 0) return false;
    (end.slope < 0 ? low : high) = end;
  }
  return std::nullopt;
}

} // namespace reference
