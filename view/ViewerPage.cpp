#include "ViewerPage.h"

#include "AnswerNames.h"
#include "ContactPlaces.h"
#include "LittleEndian.h"
#include "OutputFile.h"
#include "PageBody.h"
#include "PageParts.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace gsl_view {

namespace {

using gsl_arithmetic::Coord3;
using gsl_sweep::Answer;
using gsl_sweep::Contact;
using gsl_sweep::ContactKind;
using gsl_sweep::SweepStatus;
using Json = nlohmann::ordered_json;

Json JsonOf(const Coord3& p) {
  return Json::array({p.x, p.y, p.z});
}

/// Returns a document that can be a part of HTML.
std::string TextOf(const Json& json) {
  const std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
  // Only strings hold this character, which could begin a tag.
  std::string escaped;
  for (const char c : text) {
    if (c == '<') {
      escaped += "\\u003c";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

/// Returns the word of a policy that allows a part of the page by its hash.
std::string HashSource(const std::string& digits) {
  std::string bytes;
  for (std::size_t k = 0; k + 1 < digits.size(); k += 2)
    bytes += static_cast<char>(std::stoi(digits.substr(k, 2), nullptr, 16));
  return "'sha256-" + Base64Of(bytes) + "'";
}

void Send(const std::vector<std::string_view>& parts, const PageSink& sink) {
  for (const std::string_view part : parts)
    sink(part);
}

/// Opens a block of data, which no browser runs.
void OpenBlock(const std::string& id, const PageSink& sink) {
  sink("<script type=\"text/plain\" id=\"" + id + "\">\n");
}

/// Writes 32-bit numbers, little-endian, in a block.
template <class Number>
void WriteBlock(const std::string& id, const std::vector<Number>& numbers, const PageSink& sink) {
  OpenBlock(id, sink);
  Base64Writer writer(sink);
  SendBytes(numbers, [&](const std::string& bytes) { writer.Write(bytes.data(), bytes.size()); });
  writer.Finish();
  sink("</script>\n");
}

/// What is marked on one body.
struct Marks {
  std::vector<std::uint32_t> triangles; ///< of the patch, as PageBody numbers them
  std::vector<float> points;            ///< of the patch, as PageBody places them
};

void KeepEachOnce(std::vector<std::uint32_t>& numbers) {
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
}

/// Returns the marks of the moving body, or of a fixed body with its number.
Marks MarksOf(const ViewScene& scene, const PageBody& body, const std::size_t* fixedBody) {
  Marks marks;
  for (const Contact& contact : scene.patch) {
    if (fixedBody != nullptr && contact.fixedBody != *fixedBody) continue;
    const std::size_t triangle =
        fixedBody != nullptr ? contact.fixedTriangle : contact.movingTriangle;
    marks.triangles.push_back(body.NumberOf(triangle));
    if (fixedBody == nullptr) continue;
    float place[3];
    body.Place(contact.fixedPoint, place);
    marks.points.insert(marks.points.end(), place, place + 3);
  }
  KeepEachOnce(marks.triangles);
  return marks;
}

/// Writes the surface of a body and what is marked on it, and returns its description.
Json WriteBody(const ViewScene& scene, const ViewBody& shown, const std::string& id,
               const std::size_t* fixedBody, const std::size_t* triangle, const PageSink& sink) {
  const PageBody body = PageBody::Of(shown.triangles);
  WriteBlock(id + "-vertices", body.vertices, sink);
  WriteBlock(id + "-triangles", body.triangles, sink);
  const Marks marks = MarksOf(scene, body, fixedBody);
  WriteBlock(id + "-patch", marks.triangles, sink);
  WriteBlock(id + "-points", marks.points, sink);
  Json json;
  json["id"] = id;
  json["name"] = shown.name;
  json["triangles"] = shown.triangles.triangleCount;
  json["drawn"] = body.TriangleCount();
  json["centre"] = JsonOf(body.centre);
  json["scale"] = body.scale;
  // The number among the triangles that are drawn.
  json["touched"] = triangle != nullptr ? Json(body.NumberOf(*triangle)) : Json();
  return json;
}

Json PlaceAsJson(bool touches, std::size_t triangle, const Coord3& point) {
  if (!touches) return {};
  Json json;
  json["triangle"] = triangle;
  json["point"] = JsonOf(point);
  return json;
}

Json AnswerAsJson(const Answer& answer) {
  const bool touches = Touches(answer);
  const Contact& contact = answer.contact;
  const ContactPlaces places = PlacesOf(answer);
  Json json;
  json["status"] = StatusName(answer.status);
  json["travel"] = touches ? Json(contact.travel) : Json();
  json["exact"] = answer.isExact;
  json["error_bound"] = touches ? Json(answer.errorBound) : Json();
  json["direction"] = JsonOf(answer.unitDirection);
  json["kind"] = touches ? Json(KindName(contact.kind)) : Json();
  json["overlaps_at_start"] = touches && contact.overlapsAtStart;
  json["normal"] = touches && contact.hasNormal ? JsonOf(contact.normal) : Json();
  json["moving"] = PlaceAsJson(places.moving, contact.movingTriangle, contact.movingPoint);
  json["fixed"] = PlaceAsJson(places.fixed, contact.fixedTriangle, contact.fixedPoint);
  json["fixed_body"] = touches ? Json(contact.fixedBody) : Json();
  return json;
}

Json QuestionAsJson(const ViewScene& scene) {
  const gsl_sweep::Question& question = scene.question;
  Json json;
  json["max_distance"] = std::isfinite(question.maxDistance) ? Json(question.maxDistance) : Json();
  json["one_sided"] = question.oneSided;
  json["rule"] = RuleName(question.rule);
  json["clearance"] = question.clearance;
  json["last"] = scene.last;
  return json;
}

Json PatchAsJson(const ViewScene& scene) {
  if (scene.pairCount == 0) return {};
  Json json;
  json["count"] = scene.pairCount;
  json["listed"] = scene.patch.size();
  return json;
}

void WriteHead(const PageSink& sink) {
  sink("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
       "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; script-src ");
  sink(HashSource(PageScriptHash()) + "; style-src " + HashSource(PageStyleHash()));
  sink("; base-uri 'none'; form-action 'none'\">\n"
       "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
       "<meta name=\"color-scheme\" content=\"light dark\">\n"
       "<title>First contact</title>\n<style>");
  Send(PageStyle(), sink);
  sink("</style>\n</head>\n<body>\n");
  Send(PageMarkup(), sink);
}

} // namespace

void MakeViewerPage(const ViewScene& scene, const PageSink& sink) {
  WriteHead(sink);
  const Contact& contact = scene.answer.contact;
  const ContactPlaces places = PlacesOf(scene.answer);
  Json json;
  json["changes"] = scene.changes;
  json["version"] = scene.toolVersion;
  json["question"] = QuestionAsJson(scene);
  json["answer"] = AnswerAsJson(scene.answer);
  json["patch"] = PatchAsJson(scene);
  json["moving"] = WriteBody(scene, scene.moving, "moving", nullptr,
                             places.moving ? &contact.movingTriangle : nullptr, sink);
  json["fixed"] = Json::array();
  for (std::size_t k = 0; k < scene.fixed.size(); ++k) {
    const bool isMet = places.fixed && contact.fixedBody == k;
    json["fixed"].push_back(WriteBody(scene, scene.fixed[k], "fixed-" + std::to_string(k), &k,
                                      isMet ? &contact.fixedTriangle : nullptr, sink));
  }
  OpenBlock("scene", sink);
  sink(TextOf(json));
  sink("\n</script>\n<script>");
  Send(PageScript(), sink);
  sink("</script>\n</body>\n</html>\n");
}

void WriteViewerPage(const std::string& path, const ViewScene& scene, bool force) {
  gsl_mesh::OutputFile file(path, force);
  std::string kept;
  constexpr std::size_t kBlock = 1 << 16;
  const auto send = [&] {
    file.Write(kept.data(), kept.size());
    kept.clear();
  };
  MakeViewerPage(scene, [&](std::string_view part) {
    kept += part;
    if (kept.size() >= kBlock) send();
  });
  send();
  file.Commit();
}

} // namespace gsl_view
