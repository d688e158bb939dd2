#include "support/Sphere.h"

#include "SphereTally.h"
#include "support/AnswerJson.h"
#include "support/VectorText.h"

#include <cmath>
#include <optional>

namespace gsl_tools {

namespace {

using gsl_view::SphereTally;
using gsl_view::TallyOf;

std::string TravelLine(const char* name, const SphereReport& report, std::size_t k) {
  const Answer& answer = report.answers[k];
  const std::string& file = report.fixed.at(answer.contact.fixedBody).file;
  return std::string("  ") + name + NumberText(answer.contact.travel) + " along " +
         VectorText(answer.unitDirection) + (report.clearance > 0.0 ? ", to " : ", onto ") +
         NameInText(file) + "\n";
}

Json BodyAsJson(const std::string& file, const BodyCounts& body) {
  Json json;
  json["file"] = file;
  json["triangles"] = body.triangles;
  json["skipped"] = body.skipped;
  return json;
}

Json NumberOf(const std::optional<std::size_t>& k) {
  return k ? Json(*k) : Json();
}

/// Returns everything but the answers.
Json SummaryAsJson(const SphereReport& report) {
  const SphereTally tally = TallyOf(report.answers);
  Json json = SceneAsJson(report);
  json["directions"] = report.answers.size();
  json["free"] = tally.free;
  json["contact"] = tally.contact;
  json["start"] = tally.start;
  json["least"] = NumberOf(tally.least);
  json["greatest"] = NumberOf(tally.greatest);
  json["moving"] = BodyAsJson(report.movingFile, report.moving);
  json["fixed_bodies"] = Json::array();
  for (const FixedBody& body : report.fixed)
    json["fixed_bodies"].push_back(BodyAsJson(body.file, body.counts));
  json["warnings"] = report.warnings;
  return json;
}

} // namespace

std::string SphereAsText(const SphereReport& report) {
  const SphereTally tally = TallyOf(report.answers);
  const std::size_t count = report.answers.size();
  const std::string limit = std::isfinite(report.maxDistance)
                                ? (report.clearance > 0.0 ? " up to a travel of " : " within ") +
                                      NumberText(report.maxDistance)
                                : "";
  const std::string near =
      report.clearance > 0.0 ? "within " + NumberText(report.clearance) : std::string();
  std::string text = std::to_string(count) + (count == 1 ? " direction: " : " directions: ") +
                     std::to_string(tally.free) + " free" + limit + ", " +
                     std::to_string(tally.contact) + " " + (near.empty() ? "with contact" : near) +
                     " after a travel, " + std::to_string(tally.start) + " " +
                     (near.empty() ? "in contact" : near) + " from the start.\n";
  if (tally.least) text += TravelLine("least     ", report, *tally.least);
  if (tally.greatest) text += TravelLine("greatest  ", report, *tally.greatest);
  return text + BodiesAsText(report) +
         ErrorsAsText(report, "each travel and each coordinate are", tally.errorBound);
}

std::string SphereAsJson(const SphereReport& report) {
  // The answers are written one by one, because documents of many answers take much memory.
  std::string text = JsonText(SummaryAsJson(report), 2);
  text.erase(text.size() - 2); // the last newline and brace
  text += ",\n  \"answers\": [";
  const char* separator = "\n    ";
  for (const Answer& answer : report.answers) {
    text += separator + JsonText(AnswerAsJson(answer, report.rule), -1);
    separator = ",\n    ";
  }
  return text + "\n  ]\n}\n";
}

} // namespace gsl_tools
