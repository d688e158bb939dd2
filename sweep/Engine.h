#ifndef GSL_SWEEP_ENGINE_H
#define GSL_SWEEP_ENGINE_H

#include "ClearanceSearch.h"
#include "LastContact.h"
#include "PatchSearch.h"
#include "SolidStart.h"
#include "StartSearch.h"

#include <memory>

namespace gsl_sweep {

/// The memory that a question needs while it is answered; each thread that asks makes one.
template <class Scalar>
struct Workspace {
  LeafCache<Scalar> movingLeaves, fixedLeaves;
  std::vector<NodePair<Scalar>> stack;
};

struct Workspaces {
  std::unique_ptr<Workspace<float>> single;
  std::unique_ptr<Workspace<double>> forDouble;
};

/// Errors     std::invalid_argument, see Pair.
void RequireQuestion(const Question& question);

/// Errors     std::invalid_argument when the question is about solids and a body is not a solid.
void RequireSolids(const SceneBodies& bodies, const Question& question);

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
