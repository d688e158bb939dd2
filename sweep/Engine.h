#ifndef GSL_SWEEP_ENGINE_H
#define GSL_SWEEP_ENGINE_H

#include "StartSearch.h"

#include <memory>

namespace gsl_sweep {

/// What a question needs while it is answered; made once for each thread that asks.
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

/// Answers a question that RequireQuestion let pass. Cancelled when `watch` says false.
///
/// Errors     std::overflow_error, see Pair.
Answer AnswerQuestion(const SceneBodies& bodies, const Question& question, const Watch& watch,
                      Workspaces& workspaces);

/// How many triangles the question leaves out.
LeftOut CountLeftOut(const SceneBodies& bodies, const Question& question);

} // namespace gsl_sweep

#endif
