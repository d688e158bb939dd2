#ifndef GSL_VIEW_CONTACT_PLACES_H
#define GSL_VIEW_CONTACT_PLACES_H

#include "gsl_Sweep.h"

namespace gsl_view {

/// Returns whether an answer has a contact, perhaps before any travel.
bool Touches(const gsl_sweep::Answer& answer);

/// Which bodies have a triangle and a point at the contact.
struct ContactPlaces {
  bool moving, fixed;
};

/// Returns the bodies that have a place: both where they touch, and the inner body where one body
/// is inside the other.
ContactPlaces PlacesOf(const gsl_sweep::Contact& contact);

/// Returns the bodies that have a place; none without a contact.
ContactPlaces PlacesOf(const gsl_sweep::Answer& answer);

} // namespace gsl_view

#endif
