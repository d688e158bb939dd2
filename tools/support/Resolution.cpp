#include "support/Resolution.h"

#include "support/VectorText.h"

#include <algorithm>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <limits>

namespace gsl_tools {

namespace {

using gsl_arithmetic::Coord3;

double LargestOf(const Coord3& p) {
  return std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
}

/// Returns the largest coordinate of a body after an offset.
double LargestOf(const gsl_sweep::Body& body, const Coord3& offset) {
  Coord3 low{}, high{};
  body.GetBounds(low, high);
  return std::max(LargestOf(gsl_arithmetic::Add(low, offset)),
                  LargestOf(gsl_arithmetic::Add(high, offset)));
}

/// Returns true when single precision holds the number exactly, or when the shortest decimal that
/// reads as the number has so few digits that it may stand for a number of single precision.
bool MayBeSingle(double number) {
  // The conversion of a number beyond the range is not defined.
  if (std::fabs(number) > static_cast<double>(FLT_MAX)) return false;
  if (static_cast<double>(static_cast<float>(number)) == number) return true;
  char decimal[32];
  const auto end =
      std::to_chars(decimal, decimal + sizeof decimal, number, std::chars_format::scientific).ptr;
  const auto digits = std::count_if(decimal, std::find(decimal, end, 'e'),
                                    [](char c) { return c >= '0' && c <= '9'; });
  return digits <= std::numeric_limits<float>::max_digits10;
}

bool MayBeSingle(const Coord3& p) {
  return MayBeSingle(p.x) && MayBeSingle(p.y) && MayBeSingle(p.z);
}

double SpacingOf(const gsl_mesh::Mesh& mesh) {
  bool isSingle = mesh.precision != gsl_mesh::Precision::Double;
  const bool isKnown = mesh.precision != gsl_mesh::Precision::Unknown;
  double largest = 0.0;
  for (std::size_t k = 0; k < mesh.TriangleCount(); ++k) {
    const Coord3* const corner = mesh.corners.data() + 3 * k;
    if (!std::all_of(corner, corner + 3, gsl_mesh::IsFinite)) continue;
    for (std::size_t c = 0; c < 3; ++c) {
      largest = std::max(largest, LargestOf(corner[c]));
      isSingle = isSingle && (isKnown || MayBeSingle(corner[c]));
    }
  }
  return SpacingAt(largest, isSingle);
}

/// Returns the length of the longest of the first three columns.
double StretchOf(const gsl_Matrix& pose) {
  double longest = 0.0;
  for (int c = 0; c < 3; ++c)
    longest = std::max(longest, std::hypot(pose.m[0][c], pose.m[1][c], pose.m[2][c]));
  return longest;
}

} // namespace

double SpacingAt(double magnitude, bool isSingle) {
  const int digits = isSingle ? FLT_MANT_DIG : DBL_MANT_DIG;
  const int lowest = isSingle ? FLT_MIN_EXP : DBL_MIN_EXP; // of the numbers of full precision
  int exponent = lowest;
  if (magnitude > 0.0) std::frexp(magnitude, &exponent);
  return std::ldexp(1.0, std::max(exponent, lowest) - digits);
}

Resolution::Resolution(const gsl_mesh::Mesh& mesh, const gsl_sweep::Body& placed,
                       const std::optional<gsl_Matrix>& pose, const Coord3& offset, bool isGrown)
    : m_mesh(&mesh), m_stretch(pose ? StretchOf(*pose) : 1.0),
      m_least(SpacingAt(
          std::max(LargestOf(placed, Coord3{0.0, 0.0, 0.0}), LargestOf(placed, offset)), false)),
      m_most(pose || isGrown
                 ? std::numeric_limits<double>::infinity()
                 : std::max(m_least, SpacingAt(LargestOf(placed, Coord3{0.0, 0.0, 0.0}), true))) {}

double Resolution::Get() {
  if (!m_distance) m_distance = std::max(SpacingOf(*m_mesh) * m_stretch, m_least);
  return *m_distance;
}

bool Resolution::Reaches(double travel) {
  return travel <= m_most && travel <= Get();
}

std::string ResolutionWarning(const gsl_sweep::Answer& answer, Resolution& moving,
                              Resolution& fixed) {
  const double travel = answer.contact.travel;
  if (answer.status != gsl_sweep::SweepStatus::Contact) return {};
  if (!moving.Reaches(travel) && !fixed.Reaches(travel)) return {};
  Resolution& coarser = moving.Get() >= fixed.Get() ? moving : fixed;
  return "the travel " + NumberText(travel) + " is within the resolution of " + coarser.File() +
         ", " + NumberText(coarser.Get()) +
         " (the distance between neighbouring coordinates); the bodies may be " +
         (answer.isExact ? "in contact" : "within the clearance") + " from the start";
}

std::string AllowanceWarning(double allowance, Resolution& moving, std::vector<Resolution>& fixed) {
  const double length = std::fabs(allowance) * moving.Stretch();
  Resolution* coarsest = &moving;
  bool reaches = moving.Reaches(length);
  for (Resolution& body : fixed) {
    if (!body.Reaches(length)) continue;
    reaches = true;
    if (body.Get() > coarsest->Get()) coarsest = &body;
  }
  if (!reaches) return {};
  return "the allowance " + NumberText(allowance) + " is within the resolution of " +
         coarsest->File() + ", " + NumberText(coarsest->Get()) +
         " (the distance between neighbouring coordinates); it may be less than the rounding of "
         "the "
         "coordinates";
}

} // namespace gsl_tools
