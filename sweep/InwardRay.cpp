#include "InwardRay.h"

#include <cmath>

namespace gsl_sweep {

using gsl_exact::DeterminantSign;
using gsl_exact::Estimate;
using gsl_exact::EstimateDeterminant;
using gsl_exact::ExactDeterminant;
using gsl_exact::Expansion;
using gsl_exact::VectorBetween;

namespace {

const Coord3 kOrigin{0.0, 0.0, 0.0};
const Coord3 kAxes[3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};

VectorBetween AxisVector(int axis) {
  return {&kOrigin, &kAxes[axis]};
}

/// Returns the exact sign of det[u, v, y - p], where y is the beginning of the ray from a face.
//
// Four times the determinant is the sum of the determinants with the corners, that of the first
// taken twice. The estimate adds two sums, each off by 2^-53 of a number that is at most the sum of
// magnitudes and its own rounding; 2^-51 covers both, and the bound's own roundings.
int WeighedSign(const VectorBetween& u, const VectorBetween& v, const Coord3& p,
                const SurfaceTriangle& face) {
  const Estimate parts[3] = {EstimateDeterminant(u, v, {&p, &face.corner[0]}),
                             EstimateDeterminant(u, v, {&p, &face.corner[1]}),
                             EstimateDeterminant(u, v, {&p, &face.corner[2]})};
  const double value = 2.0 * parts[0].value + parts[1].value + parts[2].value;
  const double magnitudes =
      2.0 * std::fabs(parts[0].value) + std::fabs(parts[1].value) + std::fabs(parts[2].value);
  const double bounds = 2.0 * parts[0].bound + parts[1].bound + parts[2].bound;
  const Estimate sum{value, bounds * (1.0 + 0x1p-50) + magnitudes * 0x1p-51};
  if (sum.IsCertain()) return sum.Sign();
  Expansion<192> first = ExactDeterminant(u, v, {&p, &face.corner[0]});
  for (int k = 0; k < first.count; ++k)
    first.component[k] *= 2.0;
  return Sum(Sum(first, ExactDeterminant(u, v, {&p, &face.corner[1]})),
             ExactDeterminant(u, v, {&p, &face.corner[2]}))
      .Sign();
}

} // namespace

/// Chooses the axis that is most nearly along the normal. Its sign is exact, so the ray is on the
/// inner side.
InwardRay::InwardRay(const SurfaceTriangle& face) : m_face(face), m_axis(0), m_sense(0) {
  double largest = -1.0;
  for (int axis = 0; axis < 3; ++axis) {
    const VectorBetween u{&face.corner[0], &face.corner[1]};
    const VectorBetween v{&face.corner[0], &face.corner[2]};
    const double estimate = std::fabs(EstimateDeterminant(AxisVector(axis), u, v).value);
    if (!(estimate > largest)) continue;
    const int sign = DeterminantSign(AxisVector(axis), u, v);
    if (sign == 0) continue;
    largest = estimate;
    m_axis = axis;
    m_sense = -sign;
  }
}

/// Returns the side of an edge on which the ray passes. The ray is along (1, e, e^2) with an
/// infinitely small e, the axis being the first coordinate. So components count in turn.
int InwardRay::Side(const Coord3& from, const Coord3& to) const {
  for (int k = 0; k < 3; ++k) {
    const int sign = WeighedSign(AxisVector((m_axis + k) % 3), {&from, &to}, from, m_face);
    if (sign != 0) return sign;
  }
  return 0;
}

int InwardRay::Crossing(const SurfaceTriangle& t) const {
  const Coord3* p = t.corner;
  // Where all three are zero, the ray begins on the line of the edge. Then it begins on the
  // triangle or misses it.
  const int side = Side(p[0], p[1]);
  if (side == 0 || Side(p[1], p[2]) != side || Side(p[2], p[0]) != side) return 0;
  // The sides are those of the triangle as it faces, so n . direction has this sign.
  const int along = side * m_sense;
  const int height = WeighedSign({&p[0], &p[1]}, {&p[0], &p[2]}, p[0], m_face);
  return height * along < 0 ? along : 0;
}

} // namespace gsl_sweep
