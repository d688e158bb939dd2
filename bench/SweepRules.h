#ifndef BENCH_SWEEP_RULES_H
#define BENCH_SWEEP_RULES_H

#include "SweepFamilies.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <vector>

/// The times of the questions about a contact, beside the first contact by Rule::Touch.
namespace sweep_rules {

/// Asks each question about a scene: with nothing prepared, and on a prepared pair along the
/// scene's direction and along `directions`. Questions about solids are left out for other bodies.
nlohmann::json RulesRecord(const sweep_families::Scene& scene,
                           const std::vector<gsl_sweep::Question>& directions,
                           const std::vector<std::size_t>& processors);

/// Measures patches of growing sizes.
nlohmann::json PatchRecord(const sweep_families::PatchFamily& family,
                           const std::vector<std::size_t>& processors);

} // namespace sweep_rules

#endif
