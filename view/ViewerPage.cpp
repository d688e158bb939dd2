#include "ViewerPage.h"

#include "AnswerNames.h"
#include "ContactPlaces.h"
#include "LittleEndian.h"
#include "OutputFile.h"
#include "PageBody.h"
#include "PageParts.h"
#include "PageSphere.h"
#include "SphereTally.h"
#include "TravelScale.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <optional>
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

/// Writes numbers of 32 or 64 bits, little-endian, in a block.
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

/// Returns the numbers of the triangles that are not drawn, from the lowest on.
std::vector<std::uint32_t> LeftOutOf(const PageBody& body) {
  std::vector<std::uint32_t> leftOut;
  for (std::size_t k = 0; k < body.numbers.size(); ++k) {
    if (body.numbers[k] == PageBody::kLeftOut) leftOut.push_back(static_cast<std::uint32_t>(k));
  }
  return leftOut;
}

/// Writes the surface of a body and what is marked on it, and returns its description.
Json WriteBody(const ViewScene& scene, const ViewBody& shown, const std::string& id,
               const std::size_t* fixedBody, const PageSink& sink) {
  const PageBody body = PageBody::Of(shown.triangles);
  WriteBlock(id + "-vertices", body.vertices, sink);
  WriteBlock(id + "-triangles", body.triangles, sink);
  const Marks marks = MarksOf(scene, body, fixedBody);
  WriteBlock(id + "-patch", marks.triangles, sink);
  WriteBlock(id + "-points", marks.points, sink);
  WriteBlock(id + "-left-out", LeftOutOf(body), sink);
  Json json;
  json["id"] = id;
  json["name"] = shown.name;
  json["triangles"] = shown.triangles.triangleCount;
  json["drawn"] = body.TriangleCount();
  json["centre"] = JsonOf(body.centre);
  json["scale"] = body.scale;
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

Json NumberOf(const std::optional<std::size_t>& k) {
  return k ? Json(*k) : Json();
}

std::string HexOf(const Colour& colour) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text = "#";
  const std::uint32_t pixel = PixelOf(colour);
  for (int shift = 20; shift >= 0; shift -= 4)
    text += kDigits[pixel >> shift & 15u];
  return text;
}

/// Writes the answers of a sphere, and returns their description.
Json WriteSphere(const std::vector<Answer>& answers, const PageSink& sink) {
  const PageSphere sphere = PageSphere::Of(answers);
  WriteBlock("sphere-directions", sphere.directions, sink);
  WriteBlock("sphere-codes", sphere.codes, sink);
  WriteBlock("sphere-contacts", sphere.contacts, sink);
  WriteBlock("sphere-triangles", sphere.triangles, sink);
  const SphereTally tally = TallyOf(answers);
  Json json;
  json["free"] = tally.free;
  json["contact"] = tally.contact;
  json["start"] = tally.start;
  json["least"] = NumberOf(tally.least);
  json["greatest"] = NumberOf(tally.greatest);
  json["shown"] = tally.ShownFirst();
  json["statuses"] = Json::array();
  for (const SweepStatus status : PageSphere::kStatuses)
    json["statuses"].push_back(StatusName(status));
  json["kinds"] = Json::array();
  for (const ContactKind kind : PageSphere::kKinds)
    json["kinds"].push_back(KindName(kind));
  const TravelScale scale = TravelScale::Of(TravelsOf(answers));
  json["scale"] = {{"low", scale.low}, {"high", scale.high}, {"cut", scale.isCut}};
  json["scale"]["logarithmic"] = scale.isLogarithmic;
  json["scale"]["ticks"] = scale.Ticks();
  json["colours"] = Json::array();
  for (const Colour& colour : kTravelColours)
    json["colours"].push_back(HexOf(colour));
  json["start_colours"] = {HexOf(kStartColour), HexOf(kStartDots)};
  json["free_colours"] = {HexOf(kFreeColour), HexOf(kFreeStripes)};
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

/// Makes the page of one answer, or of many.
void MakePage(const ViewScene& scene, const std::vector<Answer>* answers, const PageSink& sink) {
  WriteHead(sink);
  Json json;
  json["changes"] = scene.changes;
  json["version"] = scene.toolVersion;
  json["question"] = QuestionAsJson(scene);
  json["answer"] = AnswerAsJson(scene.answer);
  json["patch"] = PatchAsJson(scene);
  json["sphere"] = answers != nullptr ? WriteSphere(*answers, sink) : Json();
  json["moving"] = WriteBody(scene, scene.moving, "moving", nullptr, sink);
  json["fixed"] = Json::array();
  for (std::size_t k = 0; k < scene.fixed.size(); ++k)
    json["fixed"].push_back(
        WriteBody(scene, scene.fixed[k], "fixed-" + std::to_string(k), &k, sink));
  OpenBlock("scene", sink);
  sink(TextOf(json));
  sink("\n</script>\n<script>");
  Send(PageScript(), sink);
  sink("</script>\n</body>\n</html>\n");
}

/// Writes to a file what a maker of a page sends.
template <class Maker>
void WritePage(const std::string& path, bool force, const Maker& make) {
  gsl_mesh::OutputFile file(path, force);
  std::string kept;
  constexpr std::size_t kBlock = 1 << 16;
  const auto send = [&] {
    file.Write(kept.data(), kept.size());
    kept.clear();
  };
  make([&](std::string_view part) {
    kept += part;
    if (kept.size() >= kBlock) send();
  });
  send();
  file.Commit();
}

} // namespace

void MakeViewerPage(const ViewScene& scene, const PageSink& sink) {
  MakePage(scene, nullptr, sink);
}

void MakeSpherePage(const ViewScene& scene, const std::vector<Answer>& answers,
                    const PageSink& sink) {
  MakePage(scene, &answers, sink);
}

void WriteViewerPage(const std::string& path, const ViewScene& scene, bool force) {
  WritePage(path, force, [&](const PageSink& sink) { MakeViewerPage(scene, sink); });
}

void WriteSpherePage(const std::string& path, const ViewScene& scene,
                     const std::vector<Answer>& answers, bool force) {
  WritePage(path, force, [&](const PageSink& sink) { MakeSpherePage(scene, answers, sink); });
}

} // namespace gsl_view
