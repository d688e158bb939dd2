#ifndef REFERENCE_SWEEP_GUARD_H
#define REFERENCE_SWEEP_GUARD_H

#include "SweepScenes.h"

#include <string>

/// Holds the answers of the sweep against the rational judge.
namespace reference {

/// What the judge found in scenes: a measure of what they can show.
struct Tally {
  std::size_t scenes = 0, contacts = 0, starts = 0, nones = 0;
  std::size_t kinds[7] = {}; ///< by Kind
  std::size_t tied = 0;      ///< several pairs at the first travel
  std::size_t single = 0;    ///< the pair touches at one travel alone
  std::size_t limited = 0;   ///< out of reach by the limit alone
  std::size_t overflows = 0; ///< a travel beyond the range of double

  void Add(const Tally& other);
};

/// Asks the sweep about a scene, and in one more way that the name of the scene chooses: with an
/// offset, with a matrix, with the fixed body in several, in a batch. Returns what is wrong with
/// the answers, empty when all is right.
std::string Complaint(const Scene& scene, Tally& tally);

/// What the judge finds, without asking the sweep.
void Count(const Scene& scene, Tally& tally);

} // namespace reference

#endif
