#ifndef GSL_SWEEP_OUTPUTS_H
#define GSL_SWEEP_OUTPUTS_H

#include "gsl_Coordinates.h"
#include "kernel/SweepContacts.h"

/// Writes the contacts that a sweep found, with their identities: a vertex's uid for a vertex, a
/// fresh one for a computed point. `inputs` are the vertices by their source.
inline void WriteContacts(const gsl_kernel::SweepContacts& found, const gsl_Point* const* inputs,
                          gsl_Point* contacts) {
  // All identities are taken before anything is written: a contact may be one of the inputs.
  cls_Uid identity[2];
  for (int k = 0; k < 2; ++k) {
    const int source = found.point[k].source;
    if (!found.written[k]) {
      identity[k] = contacts[k].uid;
    } else if (source == gsl_kernel::kComputed) {
      identity[k] = cls_Uid::AllocateUid();
    } else {
      identity[k] = source == gsl_kernel::kFirstContact ? identity[0] : inputs[source]->uid;
    }
  }
  for (int k = 0; k < 2; ++k) {
    if (!found.written[k]) continue;
    contacts[k].x = found.point[k].c.x;
    contacts[k].y = found.point[k].c.y;
    contacts[k].z = found.point[k].c.z;
    contacts[k].uid = identity[k];
  }
}

#endif
