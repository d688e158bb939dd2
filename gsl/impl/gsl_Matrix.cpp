#include "gsl_Matrix.h"

#include "gsl_FromCoordinates.h"
#include "gsl_Settings.h"
#include "kernel/Matrix.h"

#include <cstring>

using gsl_kernel::Coord3;

namespace {

constexpr std::int32_t kIsIdentity = 1;
constexpr std::int32_t kIsNotIdentity = 0;
constexpr std::int32_t kNotKnown = -1;

/// The addresses make the library export the inline operations, for hosts that link their names.
[[gnu::used]] void (gsl_Matrix::*const kFillIdentity)() = &gsl_Matrix::FillIdentity;
[[gnu::used]] void (gsl_Matrix::*const kTransformPoint)(gsl_Point&) const = &gsl_Matrix::Transform;
[[gnu::used]] void (gsl_Matrix::*const kTransformVector)(gsl_Vector&) const =
    &gsl_Matrix::Transform;

} // namespace

bool gsl_Matrix::operator==(const gsl_Matrix& o) const {
  if (this == &o) return true;
  for (int c = 0; c < 4; ++c) {
    for (int r = 0; r < 4; ++r) {
      if (!gsl_kernel::WithinBand(m[r][c], o.m[r][c], gsl_kernel::kMatrixEqualTolerance)) {
        return false;
      }
    }
  }
  return true;
}

void gsl_Matrix::Concatenate(const gsl_Matrix& o) {
  double product[4][4];
  gsl_kernel::Product(o.m, m, product);
  std::memcpy(m, product, sizeof m);
  isIdentity = kNotKnown;
}

bool gsl_Matrix::IsIdentity() const {
  if (isIdentity != kNotKnown) return isIdentity == kIsIdentity;
  for (int c = 0; c < 4; ++c) {
    // identity-test-rewrites-the-matrix: three rows decide about four.
    for (int r = 0; r < 3; ++r) {
      const double exact = r == c ? 1.0 : 0.0;
      const bool near = m[r][c] >= exact - gsl_kernel::kIdentityTolerance &&
                        m[r][c] <= exact + gsl_kernel::kIdentityTolerance;
      if (!near) {
        isIdentity = kIsNotIdentity;
        return false;
      }
    }
  }
  const gsl_Matrix exact;
  // identity-test-rewrites-the-matrix: a matrix near the identity becomes the identity.
  std::memcpy(m, exact.m, sizeof m);
  isIdentity = kIsIdentity;
  return true;
}

void gsl_Matrix::SetTranslation(const gsl_Vector& t) {
  SetColumn(3, t);
}

void gsl_Matrix::GetTranslation(gsl_Vector& t) const {
  t = Column(3);
}

void gsl_Matrix::SetRow(unsigned int r, const gsl_Vector& v) {
  m[r][0] = v.x;
  m[r][1] = v.y;
  m[r][2] = v.z;
  isIdentity = kNotKnown;
}

void gsl_Matrix::SetColumn(unsigned int c, const gsl_Vector& v) {
  m[0][c] = v.x;
  m[1][c] = v.y;
  m[2][c] = v.z;
  isIdentity = kNotKnown;
}

void gsl_Matrix::SetRotationVectors(const gsl_Vector& x, const gsl_Vector& y, const gsl_Vector& z) {
  const gsl_Vector* const axes[3] = {&x, &y, &z};
  for (int c = 0; c < 3; ++c) {
    const Coord3 unit = gsl_kernel::UnitComponents(axes[c]->Measured());
    m[0][c] = unit.x;
    m[1][c] = unit.y;
    m[2][c] = unit.z;
  }
  isIdentity = kNotKnown;
}

void gsl_Matrix::GetRotationAngles(double& a, double& b, double& c) const {
  const double cy = std::sqrt(m[0][0] * m[0][0] + m[1][0] * m[1][0]);
  const bool locked = !(cy > gsl_kernel::kGimbalLockCosine);
  const double aboutX = locked ? std::atan2(-m[1][2], m[1][1]) : std::atan2(m[2][1], m[2][2]);
  const double aboutY = std::atan2(-m[2][0], cy);
  const double aboutZ = locked ? 0.0 : std::atan2(m[1][0], m[0][0]);
  // The angles may be entries of this matrix, so they are written last.
  a = aboutX;
  b = aboutY;
  c = aboutZ;
}

gsl_Matrix gsl_Matrix::InverseRigidTransform() const {
  gsl_Matrix inverse;
  if (isIdentity == kIsIdentity) return inverse;
  gsl_kernel::InverseRigid(m, inverse.m);
  inverse.isIdentity = kNotKnown;
  return inverse;
}

void gsl_Matrix::AxisRotation(const gsl_Point& p, const gsl_Vector& axis, double angle) {
  gsl_kernel::Measured3 unit = axis.Measured();
  const Coord3 fixed = p.Coords();
  if (!gsl_arithmetic::Normalize(unit, Settings().linearTolerance)) {
    FillIdentity();
    return;
  }
  gsl_kernel::RotationAbout(fixed, unit.c, std::cos(angle), std::sin(angle), m);
  isIdentity = kNotKnown;
}

void gsl_Matrix::GetAxisRotation(gsl_Point& p, gsl_Vector& axis, double& angle) const {
  gsl_kernel::Quaternion q = gsl_kernel::QuaternionOfRotation(m);
  if (m[3][3] != 1.0) {
    const double scale = 1.0 / std::sqrt(m[3][3]);
    q = {static_cast<float>(q.x * scale), static_cast<float>(q.y * scale),
         static_cast<float>(q.z * scale), static_cast<float>(q.w * scale)};
  }
  const float sh = std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z);
  // rotation-point-is-the-translation: the image of the origin need not lie on the axis.
  AcceptComputed(p, {m[0][3], m[1][3], m[2][3]});
  const double turn = 2.0 * std::atan2(static_cast<double>(sh), static_cast<double>(q.w));
  axis = turn > Settings().cosineTolerance
             ? gsl_Vector(static_cast<double>(q.x / sh), static_cast<double>(q.y / sh),
                          static_cast<double>(q.z / sh))
             : gsl_Vector(0.0, 0.0, 0.0);
  // It may be an entry of this matrix, so it is written last.
  angle = turn;
}

void gsl_Matrix::AsArray(double (*const out)[4]) const {
  // `out` may be the array itself.
  std::memmove(out, m, sizeof m);
}
