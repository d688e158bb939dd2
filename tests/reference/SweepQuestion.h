#ifndef REFERENCE_SWEEP_QUESTION_H
#define REFERENCE_SWEEP_QUESTION_H

#include "gsl_Arithmetic.h"

#include <vector>

/// A question about two bodies, without the rationals that judge the answer.
namespace reference {

using gsl_arithmetic::Coord3;

/// Each triangle has three corners.
struct Question {
  std::vector<Coord3> moving, fixed;
  Coord3 direction;
  bool oneSided = false;
  bool notLeaving = false; ///< leaves out pairs whose interval ends at zero
};

} // namespace reference

#endif
