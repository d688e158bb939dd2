#include "Determinant.h"

namespace gsl_exact {

namespace {

// Each term has three differences, three products and three sums: at most nine roundings of 2^-53.
// The bound itself has as many roundings.
constexpr double kRelativeBound = 10.0 * 0x1p-53;

struct ExactVector {
  DoubleDouble x, y, z;
};

ExactVector Exactly(const VectorBetween& a) {
  return {TwoDifference(a.to->x, a.from->x), TwoDifference(a.to->y, a.from->y),
          TwoDifference(a.to->z, a.from->z)};
}

/// Returns a * d - b * c.
Expansion<16> Minor(const DoubleDouble& a, const DoubleDouble& b, const DoubleDouble& c,
                    const DoubleDouble& d) {
  return Sum(Product(Expand(a), d), Minus(Product(Expand(b), c)));
}

} // namespace

Estimate EstimateDeterminant(const VectorBetween& u, const VectorBetween& v,
                             const VectorBetween& w) {
  const Coord3 a = u.Rounded();
  const Coord3 b = v.Rounded();
  const Coord3 c = w.Rounded();
  const double byCz = b.y * c.z;
  const double bzCy = b.z * c.y;
  const double bzCx = b.z * c.x;
  const double bxCz = b.x * c.z;
  const double bxCy = b.x * c.y;
  const double byCx = b.y * c.x;
  const double value = a.x * (byCz - bzCy) + a.y * (bzCx - bxCz) + a.z * (bxCy - byCx);
  const double terms = std::fabs(a.x) * (std::fabs(byCz) + std::fabs(bzCy)) +
                       std::fabs(a.y) * (std::fabs(bzCx) + std::fabs(bxCz)) +
                       std::fabs(a.z) * (std::fabs(bxCy) + std::fabs(byCx));
  return {value, kRelativeBound * terms};
}

ExactCross ExactCrossProduct(const VectorBetween& u, const VectorBetween& v) {
  const ExactVector a = Exactly(u);
  const ExactVector b = Exactly(v);
  return {Minor(a.y, a.z, b.y, b.z), Minor(a.z, a.x, b.z, b.x), Minor(a.x, a.y, b.x, b.y)};
}

Expansion<192> ExactDeterminant(const VectorBetween& u, const VectorBetween& v,
                                const VectorBetween& w) {
  const ExactVector a = Exactly(u);
  const ExactCross cross = ExactCrossProduct(v, w);
  const Expansion<64> x = Product(cross.x, a.x);
  const Expansion<64> y = Product(cross.y, a.y);
  const Expansion<64> z = Product(cross.z, a.z);
  return Sum(Sum(x, y), z);
}

int DeterminantSign(const VectorBetween& u, const VectorBetween& v, const VectorBetween& w) {
  const Estimate estimate = EstimateDeterminant(u, v, w);
  if (estimate.IsCertain()) return estimate.Sign();
  return ExactDeterminant(u, v, w).Sign();
}

} // namespace gsl_exact
