#include "PageSphere.h"

#include "ContactPlaces.h"

#include <algorithm>
#include <iterator>

namespace gsl_view {

using gsl_arithmetic::Coord3;
using gsl_sweep::Answer;
using gsl_sweep::Contact;

namespace {

/// Returns the place of a value in a list; 0 for a value that is not in it.
template <class Value, std::size_t kCount>
std::uint32_t PlaceIn(const Value (&list)[kCount], Value value) {
  const auto found = std::find(std::begin(list), std::end(list), value);
  return found == std::end(list) ? 0u : static_cast<std::uint32_t>(found - std::begin(list));
}

void Append(std::vector<double>& numbers, const Coord3& p) {
  numbers.insert(numbers.end(), {p.x, p.y, p.z});
}

std::uint32_t CodeOf(const Answer& answer) {
  const ContactPlaces places = PlacesOf(answer);
  std::uint32_t code = PlaceIn(PageSphere::kStatuses, answer.status);
  if (answer.isExact) code |= PageSphere::kIsExact;
  if (!Touches(answer)) return code;
  code |= PlaceIn(PageSphere::kKinds, answer.contact.kind) << PageSphere::kKindShift;
  if (answer.contact.hasNormal) code |= PageSphere::kHasNormal;
  if (answer.contact.overlapsAtStart) code |= PageSphere::kOverlapsAtStart;
  if (places.moving) code |= PageSphere::kMovingPlace;
  if (places.fixed) code |= PageSphere::kFixedPlace;
  return code;
}

} // namespace

PageSphere PageSphere::Of(const std::vector<Answer>& answers) {
  PageSphere sphere;
  for (const Answer& answer : answers) {
    Append(sphere.directions, answer.unitDirection);
    sphere.codes.push_back(CodeOf(answer));
    if (!Touches(answer)) continue;
    const Contact& contact = answer.contact;
    sphere.contacts.insert(sphere.contacts.end(), {contact.travel, answer.errorBound});
    Append(sphere.contacts, contact.movingPoint);
    Append(sphere.contacts, contact.fixedPoint);
    Append(sphere.contacts, contact.normal);
    for (const std::size_t number :
         {contact.movingTriangle, contact.fixedTriangle, contact.fixedBody})
      sphere.triangles.push_back(static_cast<std::uint32_t>(number));
  }
  return sphere;
}

} // namespace gsl_view
