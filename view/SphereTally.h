#ifndef GSL_VIEW_SPHERE_TALLY_H
#define GSL_VIEW_SPHERE_TALLY_H

#include "gsl_Sweep.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace gsl_view {

/// What became of many directions.
struct SphereTally {
  std::size_t free = 0;                       ///< without a contact, or cancelled
  std::size_t contact = 0;                    ///< with a contact after a travel
  std::size_t start = 0;                      ///< in contact from the start
  double errorBound = 0.0;                    ///< the greatest of all
  std::optional<std::size_t> least, greatest; ///< numbers of answers with a travel; ties: the first

  /// Returns the number of the answer that is shown first: the greatest travel, else the first
  /// answer.
  std::size_t ShownFirst() const { return greatest.value_or(0); }
};

SphereTally TallyOf(const std::vector<gsl_sweep::Answer>& answers);

/// Returns the travels of the answers with a contact after a travel, in their order.
std::vector<double> TravelsOf(const std::vector<gsl_sweep::Answer>& answers);

} // namespace gsl_view

#endif
