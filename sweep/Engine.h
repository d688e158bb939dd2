#ifndef GSL_SWEEP_ENGINE_H
#define GSL_SWEEP_ENGINE_H

#include "ClearanceSearch.h"
#include "LastContact.h"
#include "PatchSearch.h"
#include "SolidStart.h"
#include "StartSearch.h"

#include <memory>

namespace gsl_sweep {

/// The finding about solids before any travel. It is the same along every direction, so it is kept
/// for the next question with the same bodies and the same offset.
struct SolidsAtRest {
  bool isKnown = false;
  SceneBodies bodies;
  Coord3 offset{0.0, 0.0, 0.0};
  SolidState state = SolidState::Apart;
  FoundTriangles first; ///< of Overlapping; how they face is of an earlier direction
  Contact inside;       ///< of Inside

  bool IsOf(const SceneBodies& asked, const Coord3& askedOffset) const;
};

/// The memory that a question needs while it is answered; each thread that asks makes one. It is
/// used for the bodies of one pair, which outlive it.
template <class Scalar>
struct Workspace {
  LeafCache<Scalar> movingLeaves, fixedLeaves;
  std::vector<NodePair<Scalar>> stack;
  SolidsAtRest solids;
};

struct Workspaces {
  Team* team = nullptr; ///< helps while a question is answered; null where all threads have work
  std::unique_ptr<Workspace<float>> single;
  std::unique_ptr<Workspace<double>> forDouble;
};

/// Errors     std::invalid_argument, see Pair.
void RequireQuestion(const Question& question);

/// Decides of each body whether it is a solid, on several threads at a time. Each body is there
/// once.
void DecideSolids(const std::vector<const PreparedBody*>& bodies, Team& team);

/// Errors     std::invalid_argument when the question is about solids and a body is not a solid.
void RequireSolids(const SceneBodies& bodies, const Question& question);

/// Returns the bodies of a pair, each once.
std::vector<const PreparedBody*> AllBodies(const SceneBodies& bodies);

/// Answers a question that RequireQuestion accepted. The answer is Cancelled when `watch` returns
/// false.
///
/// Errors     std::overflow_error, see Pair.
Answer AnswerQuestion(const SceneBodies& bodies, const Question& question, const Watch& watch,
                      Workspaces& workspaces);

/// Does the same for the last contact.
Answer AnswerLast(const SceneBodies& bodies, const Question& question, const Watch& watch,
                  Workspaces& workspaces);

/// Answers a question and finds all pairs of its contact, see Pair::FindPatch. The first answer is
/// Cancelled when `watch` returns false.
PatchSummary AnswerPatch(const SceneBodies& bodies, const Question& question, Contact* out,
                         std::size_t capacity, const Watch& watch, Workspaces& workspaces);

/// Returns how many triangles the question leaves out.
LeftOut CountLeftOut(const SceneBodies& bodies, const Question& question);

} // namespace gsl_sweep

#endif
