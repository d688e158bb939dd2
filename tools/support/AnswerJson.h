#ifndef GSL_TOOLS_ANSWER_JSON_H
#define GSL_TOOLS_ANSWER_JSON_H

#include "support/Report.h"

#include <nlohmann/json.hpp>

#include <string>

/// The parts that the JSON documents of gsl-sweep share; docs/gsl-sweep.md describes them.
namespace gsl_tools {

using gsl_view::RuleName;

using Json = nlohmann::ordered_json;

/// Returns three numbers.
Json JsonOf(const Coord3& p);

/// Returns the keys of one answer: status, travel, exact, error_bound, direction, kind, normal,
/// moving, fixed and fixed_body, and overlaps_at_start under Rule::Solid. moving and fixed have the
/// triangle and the point.
Json AnswerAsJson(const Answer& answer, gsl_sweep::Rule rule);

/// Returns count, low, high and pairs. Each pair has the keys of an answer from kind on.
Json PatchAsJson(const PatchReport& patch);

/// Returns what is said of growing by an allowance: that it is not exact, and the greatest
/// deviation.
Json GrowingAsJson(double deviation);

/// Returns the keys with which a document begins: schema_version, tool_version and question, and
/// growing with an allowance.
Json SceneAsJson(const SceneReport& report);

/// Returns strict JSON without a newline at its end; in one line when `indent` is negative. Bytes
/// that are not UTF-8 become U+FFFD.
std::string JsonText(const Json& json, int indent);

} // namespace gsl_tools

#endif
