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

/// The findings of the judge about the other questions, which the rules and the ends ask.
struct RuleTally {
  Tally leaving;              ///< of the first contact of a body that may leave
  Tally last;                 ///< of last contacts under both rules
  std::size_t cut = 0;        ///< last contacts at the limit
  std::size_t left = 0;       ///< in contact from the start only because of pairs that part there
  std::size_t patches = 0;    ///< patches with more than one pair
  std::size_t patchPairs = 0; ///< pairs of all patches

  void Add(const RuleTally& other);
};

/// Asks the sweep about a scene under the rule that lets a body leave, about its last contact under
/// both rules, and about all pairs of both first contacts. Returns the errors of the answers, or an
/// empty text.
std::string ComplaintOfRules(const Scene& scene, RuleTally& tally);

/// Returns the findings of the judge, without the sweep.
void Count(const Scene& scene, Tally& tally);

} // namespace reference

#endif
