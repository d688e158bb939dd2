#ifndef REFERENCE_SOLID_GUARD_H
#define REFERENCE_SOLID_GUARD_H

#include "SolidScenes.h"

#include <string>

/// Compares the answers of the sweep about solids with the judge of solids.
namespace reference {

/// The findings of the judge in scenes, which show what the scenes can test.
struct SolidTally {
  std::size_t scenes = 0;
  std::size_t outcomes[4] = {}; ///< by SolidOutcome
  std::size_t touching = 0;     ///< at the start
  std::size_t inside = 0;       ///< overlapping, and not touching
};

/// Asks the sweep about a scene, and again with the bodies in each other's place. Returns the
/// errors of the answers, or an empty text.
std::string SolidComplaint(const SolidScene& scene, SolidTally& tally);

} // namespace reference

#endif
