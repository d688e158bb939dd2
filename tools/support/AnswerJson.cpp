#include "support/AnswerJson.h"

#include <cmath>
#include <utility>

namespace gsl_tools {

namespace {

using gsl_view::StatusName;

constexpr int kSchemaVersion = 2;

/// Returns where one body touches.
Json PlaceAsJson(std::size_t triangle, const Coord3& point, bool touches) {
  Json json;
  json["triangle"] = touches ? Json(triangle) : Json();
  json["point"] = touches ? JsonOf(point) : Json();
  return json;
}

/// Adds the features that meet and where they meet. The body that is around the other has no place.
void AddContact(Json& json, const gsl_sweep::Contact& contact, bool touches) {
  const bool isInside = contact.kind == ContactKind::Inside;
  const bool movingTouches = touches && !(isInside && !contact.movingIsInside);
  const bool fixedTouches = touches && !(isInside && contact.movingIsInside);
  json["kind"] = touches ? Json(KindName(contact.kind)) : Json();
  json["normal"] = touches && contact.hasNormal ? JsonOf(contact.normal) : Json();
  json["moving"] = PlaceAsJson(contact.movingTriangle, contact.movingPoint, movingTouches);
  json["fixed"] = PlaceAsJson(contact.fixedTriangle, contact.fixedPoint, fixedTouches);
  json["fixed_body"] = touches ? Json(contact.fixedBody) : Json();
}

/// Returns the first three rows of the matrix.
Json PoseAsJson(const std::optional<gsl_Matrix>& pose) {
  if (!pose) return {};
  Json rows = Json::array();
  for (const auto& row : {pose->m[0], pose->m[1], pose->m[2]})
    rows.push_back({row[0], row[1], row[2], row[3]});
  return rows;
}

Json QuestionAsJson(const SceneReport& report) {
  Json json;
  json["allowance"] = report.allowance;
  json["pose"] = PoseAsJson(report.pose);
  json["offset"] = JsonOf(report.offset);
  json["max_distance"] = std::isfinite(report.maxDistance) ? Json(report.maxDistance) : Json();
  json["one_sided"] = report.oneSided;
  json["rule"] = RuleName(report.rule);
  json["clearance"] = report.clearance;
  json["last"] = report.last;
  return json;
}

} // namespace

Json JsonOf(const Coord3& p) {
  return Json::array({p.x, p.y, p.z});
}

Json AnswerAsJson(const Answer& answer, gsl_sweep::Rule rule) {
  const bool touches = Touches(answer);
  Json json;
  json["status"] = StatusName(answer.status);
  json["travel"] = touches ? Json(answer.contact.travel) : Json();
  json["exact"] = answer.isExact;
  json["error_bound"] = touches ? Json(answer.errorBound) : Json();
  json["direction"] = JsonOf(answer.unitDirection);
  AddContact(json, answer.contact, touches);
  if (rule == gsl_sweep::Rule::Solid) {
    json["overlaps_at_start"] = touches && answer.contact.overlapsAtStart;
  }
  return json;
}

Json PatchAsJson(const PatchReport& patch) {
  const bool isEmpty = patch.pairCount == 0;
  Json json;
  json["count"] = patch.pairCount;
  json["low"] = isEmpty ? Json() : JsonOf(patch.low);
  json["high"] = isEmpty ? Json() : JsonOf(patch.high);
  json["pairs"] = Json::array();
  for (const gsl_sweep::Contact& contact : patch.listed) {
    Json pair;
    AddContact(pair, contact, true);
    json["pairs"].push_back(std::move(pair));
  }
  return json;
}

Json GrowingAsJson(double deviation) {
  Json json;
  json["exact"] = false;
  json["deviation"] = deviation;
  return json;
}

Json SceneAsJson(const SceneReport& report) {
  Json json;
  json["schema_version"] = kSchemaVersion;
  json["tool_version"] = report.toolVersion;
  json["question"] = QuestionAsJson(report);
  if (report.allowance != 0.0) json["growing"] = GrowingAsJson(report.deviation);
  return json;
}

std::string JsonText(const Json& json, int indent) {
  return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

} // namespace gsl_tools
