#ifndef GSL_VIEW_ANSWER_NAMES_H
#define GSL_VIEW_ANSWER_NAMES_H

#include "gsl_Sweep.h"

/// The words in which documents name the parts of an answer.
namespace gsl_view {

/// Returns "vertex-face" and so on, moving body first; or "overlap" or "inside".
const char* KindName(gsl_sweep::ContactKind kind);

/// Returns "touch", "not-leaving" or "solid".
const char* RuleName(gsl_sweep::Rule rule);

/// Returns "contact", "start" or "none", which also names a cancelled answer.
const char* StatusName(gsl_sweep::SweepStatus status);

} // namespace gsl_view

#endif
