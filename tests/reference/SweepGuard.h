#ifndef REFERENCE_SWEEP_GUARD_H
#define REFERENCE_SWEEP_GUARD_H

#include "SweepScenes.h"

#include <string>

/// Compares the answers of the sweep with the rational judge.
namespace reference {

/// The findings of the judge in scenes, which show what the scenes can test.
struct Tally {
  std::size_t scenes = 0, contacts = 0, starts = 0, nones = 0;
  std::size_t kinds[7] = {}; ///< by Kind
  std::size_t tied = 0;      ///< several pairs at the first travel
  std::size_t single = 0;    ///< the pair touches at one travel alone
  std::size_t limited = 0;   ///< out of reach by the limit alone
  std::size_t overflows = 0; ///< a travel beyond the range of double

  void Add(const Tally& other);
};

/// Asks the sweep about a scene, and again in a way that the name of the scene chooses: with an
/// offset, with a matrix, with several fixed bodies, or in a batch. Returns the errors of the
/// answers, or an empty text.
std::string Complaint(const Scene& scene, Tally& tally);

/// Returns the findings of the judge, without the sweep.
void Count(const Scene& scene, Tally& tally);

} // namespace reference

#endif
