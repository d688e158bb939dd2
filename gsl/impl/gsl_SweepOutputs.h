#ifndef GSL_SWEEP_OUTPUTS_H
#define GSL_SWEEP_OUTPUTS_H

#include "gsl_FromCoordinates.h"
#include "kernel/SweepContacts.h"

/// Writes what a sweep found: the distance, and the contacts with their identities. A vertex has
/// its own uid, a computed point a fresh uid. Outputs without a result stay as they are. `inputs`
/// are the vertices by their source.
inline void WriteOutputs(const gsl_kernel::SweepContacts& found, const gsl_Point* const* inputs,
                         gsl_Point* contacts, double& distance) {
  if (!(found.written[0] | found.written[1])) return;
  // All identities are taken before anything is written: a contact may be one of the inputs. A
  // vertex or a fresh uid is chosen without a branch, because no branch could be predicted.
  cls_Uid identity[2];
  for (int k = 0; k < 2; ++k) {
    if (!found.written[k]) continue;
    const int source = found.point[k].source;
    if (source == gsl_kernel::kFirstContact) {
      identity[k] = found.written[0] ? identity[0] : contacts[0].uid;
      continue;
    }
    const cls_Uid fresh = cls_Uid::AllocateUid();
    const int isComputed = source == gsl_kernel::kComputed ? 1 : 0;
    const cls_Uid* const choices[2] = {&inputs[source & (isComputed - 1)]->uid, &fresh};
    identity[k] = *choices[isComputed];
  }
  for (int k = 0; k < 2; ++k) {
    if (!found.written[k]) continue;
    contacts[k].x = found.point[k].c.x;
    contacts[k].y = found.point[k].c.y;
    contacts[k].z = found.point[k].c.z;
    contacts[k].uid = identity[k];
  }
  // The first contact is written whenever the distance falls.
  if (found.written[0]) distance = found.distance;
}

#endif
