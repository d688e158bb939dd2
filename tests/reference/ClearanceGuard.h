#ifndef REFERENCE_CLEARANCE_GUARD_H
#define REFERENCE_CLEARANCE_GUARD_H

#include "ClearanceScenes.h"

/// Compares the answers of the sweep about a clearance with the judge of clearances.
namespace reference {

/// What the scenes can test.
struct ClearanceTally {
  std::size_t scenes = 0;
  std::size_t contacts = 0, starts = 0, nones = 0;
  std::size_t kinds[7] = {}; ///< of the contacts that the sweep names, by ContactKind
  std::size_t open = 0;      ///< pairs of which the judge could not tell whether they graze
};

/// Asks the sweep about a scene: alone, in a batch, and with several fixed bodies. Returns the
/// errors of the answers, or an empty text.
std::string ClearanceComplaint(const ClearanceScene& scene, ClearanceTally& tally);

} // namespace reference

#endif
