#include "SphereTally.h"

#include <algorithm>

namespace gsl_view {

using gsl_sweep::Answer;
using gsl_sweep::SweepStatus;

SphereTally TallyOf(const std::vector<Answer>& answers) {
  SphereTally tally;
  const auto travel = [&](std::size_t k) { return answers[k].contact.travel; };
  for (std::size_t k = 0; k < answers.size(); ++k) {
    tally.errorBound = std::max(tally.errorBound, answers[k].errorBound);
    if (answers[k].status == SweepStatus::Start) {
      ++tally.start;
    } else if (answers[k].status != SweepStatus::Contact) {
      ++tally.free;
    } else {
      ++tally.contact;
      if (!tally.least || travel(k) < travel(*tally.least)) tally.least = k;
      if (!tally.greatest || travel(k) > travel(*tally.greatest)) tally.greatest = k;
    }
  }
  return tally;
}

std::vector<double> TravelsOf(const std::vector<Answer>& answers) {
  std::vector<double> travels;
  for (const Answer& answer : answers) {
    if (answer.status == SweepStatus::Contact) travels.push_back(answer.contact.travel);
  }
  return travels;
}

} // namespace gsl_view
