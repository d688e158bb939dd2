#include "ContactPlaces.h"

namespace gsl_view {

using gsl_sweep::Answer;
using gsl_sweep::Contact;
using gsl_sweep::ContactKind;
using gsl_sweep::SweepStatus;

bool Touches(const Answer& answer) {
  return answer.status == SweepStatus::Contact || answer.status == SweepStatus::Start;
}

ContactPlaces PlacesOf(const Contact& contact) {
  const bool isInside = contact.kind == ContactKind::Inside;
  return {!isInside || contact.movingIsInside, !isInside || !contact.movingIsInside};
}

ContactPlaces PlacesOf(const Answer& answer) {
  if (!Touches(answer)) return {false, false};
  return PlacesOf(answer.contact);
}

} // namespace gsl_view
