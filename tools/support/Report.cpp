#include "support/Report.h"

#include "Printable.h"
#include "support/VectorText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace gsl_tools {

namespace {

using gsl_mesh::IsFinite;
using gsl_mesh::Printable;
using gsl_sweep::SweepStatus;
using Json = nlohmann::ordered_json;

constexpr int kSchemaVersion = 2;

const char* StatusName(SweepStatus status) {
  switch (status) {
  case SweepStatus::Contact:
    return "contact";
  case SweepStatus::Start:
    return "start";
  case SweepStatus::None:
  case SweepStatus::Cancelled:
    break;
  }
  return "none";
}

Json JsonOf(const Coord3& p) {
  return Json::array({p.x, p.y, p.z});
}

/// Where one body touches.
struct Place {
  std::size_t triangle;
  Coord3 point;
};

Place MovingPlace(const Answer& answer) {
  return {answer.contact.movingTriangle, answer.contact.movingPoint};
}

Place FixedPlace(const Answer& answer) {
  return {answer.contact.fixedTriangle, answer.contact.fixedPoint};
}

Json JsonOf(const BodyCounts& body, const std::string& file) {
  Json json;
  json["file"] = file;
  json["triangles"] = body.triangles;
  json["skipped"] = body.skipped;
  json["left_out"] = body.leftOut;
  return json;
}

Json JsonOf(const BodyCounts& body, const std::string& file, const Place& place, bool touches) {
  Json json = JsonOf(body, file);
  json["triangle"] = touches ? Json(place.triangle) : Json();
  json["point"] = touches ? JsonOf(place.point) : Json();
  return json;
}

/// Returns the fixed body that is met. Without a contact, several bodies have no such body: null.
Json FixedAsJson(const SweepReport& report) {
  const bool touches = report.answer.status != SweepStatus::None;
  if (!touches && report.fixed.size() > 1) return {};
  const FixedBody& body = report.fixed.at(touches ? report.answer.contact.fixedBody : 0);
  return JsonOf(body.counts, body.file, FixedPlace(report.answer), touches);
}

Json FixedBodiesAsJson(const SweepReport& report) {
  Json bodies = Json::array();
  for (const FixedBody& body : report.fixed)
    bodies.push_back(JsonOf(body.counts, body.file));
  return bodies;
}

/// Returns the first three rows of the matrix.
Json PoseAsJson(const std::optional<gsl_Matrix>& pose) {
  if (!pose) return {};
  Json rows = Json::array();
  for (const auto& row : {pose->m[0], pose->m[1], pose->m[2]})
    rows.push_back({row[0], row[1], row[2], row[3]});
  return rows;
}

Json QuestionAsJson(const SweepReport& report) {
  Json json;
  json["pose"] = PoseAsJson(report.pose);
  json["offset"] = JsonOf(report.offset);
  json["max_distance"] = std::isfinite(report.maxDistance) ? Json(report.maxDistance) : Json();
  json["one_sided"] = report.oneSided;
  return json;
}

/// Returns the names of the features for a sentence, the moving body's feature first.
std::string KindInWords(ContactKind kind) {
  if (kind == ContactKind::Overlap) return "they share a point";
  std::string words = KindName(kind);
  words.replace(words.find('-'), 1, " on ");
  return words;
}

std::string BodyLine(const char* role, const std::string& file, const BodyCounts& body,
                     const Place& place, bool touches) {
  const std::string count = std::to_string(body.triangles);
  const std::string what = touches ? "triangle " + std::to_string(place.triangle) + " of " + count +
                                         ", at " + VectorText(place.point)
                                   : count + " triangles";
  const std::string name = file == "-" ? "standard input" : Printable(file);
  return std::string("  ") + role + name + ", " + what + "\n";
}

std::string FirstLine(const SweepReport& report) {
  const Answer& answer = report.answer;
  const std::string along = " along " + VectorText(answer.unitDirection);
  switch (answer.status) {
  case SweepStatus::Contact:
    return "Contact after " + NumberText(answer.contact.travel) + along + ": " +
           KindInWords(answer.contact.kind) + ".\n";
  case SweepStatus::Start:
    return "In contact from the start: " + KindInWords(answer.contact.kind) + ".\n";
  case SweepStatus::None:
  case SweepStatus::Cancelled:
    break;
  }
  const bool limited = std::isfinite(report.maxDistance);
  return "No contact" + along + (limited ? " within " + NumberText(report.maxDistance) : "") +
         ".\n";
}

/// Returns the diagonal of the box around all finite triangles.
double SizeOf(const Body& body) {
  Coord3 low{}, high{};
  body.GetBounds(low, high);
  return std::hypot(high.x - low.x, high.y - low.y, high.z - low.z);
}

[[noreturn]] void FailRange(const std::string& cause, const std::string& name) {
  throw std::overflow_error(cause + " moves a corner of " + name + " beyond the range of double");
}

} // namespace

const char* KindName(ContactKind kind) {
  switch (kind) {
  case ContactKind::VertexVertex:
    return "vertex-vertex";
  case ContactKind::VertexEdge:
    return "vertex-edge";
  case ContactKind::EdgeVertex:
    return "edge-vertex";
  case ContactKind::VertexFace:
    return "vertex-face";
  case ContactKind::FaceVertex:
    return "face-vertex";
  case ContactKind::EdgeEdge:
    return "edge-edge";
  case ContactKind::Overlap:
    break;
  }
  return "overlap";
}

std::string ReportAsText(const SweepReport& report) {
  const bool touches = report.answer.status != SweepStatus::None;
  std::string text = FirstLine(report) + BodyLine("moving  ", report.movingFile, report.moving,
                                                  MovingPlace(report.answer), touches);
  const Place place = FixedPlace(report.answer);
  if (touches) {
    const FixedBody& met = report.fixed.at(report.answer.contact.fixedBody);
    return text + BodyLine("fixed   ", met.file, met.counts, place, true);
  }
  for (const FixedBody& body : report.fixed)
    text += BodyLine("fixed   ", body.file, body.counts, place, false);
  return text;
}

std::string ReportAsJson(const SweepReport& report) {
  const Answer& answer = report.answer;
  const bool touches = answer.status != SweepStatus::None;
  Json json;
  json["schema_version"] = kSchemaVersion;
  json["tool_version"] = report.toolVersion;
  json["question"] = QuestionAsJson(report);
  json["status"] = StatusName(answer.status);
  json["travel"] = touches ? Json(answer.contact.travel) : Json();
  json["direction"] = JsonOf(answer.unitDirection);
  json["kind"] = touches ? Json(KindName(answer.contact.kind)) : Json();
  json["normal"] = touches && answer.contact.hasNormal ? JsonOf(answer.contact.normal) : Json();
  json["moving"] = JsonOf(report.moving, report.movingFile, MovingPlace(answer), touches);
  json["fixed"] = FixedAsJson(report);
  json["fixed_body"] = touches ? Json(answer.contact.fixedBody) : Json();
  json["fixed_bodies"] = FixedBodiesAsJson(report);
  json["warnings"] = report.warnings;
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string SizeWarning(const std::string& movingFile, const Body& moving,
                        const std::string& fixedFile, const Body& fixed) {
  const double movingSize = SizeOf(moving);
  const double fixedSize = SizeOf(fixed);
  const double ratio = std::max(movingSize, fixedSize) / std::min(movingSize, fixedSize);
  for (const double factor : {25.4, 1000.0}) {
    if (!(std::fabs(ratio - factor) <= 0.1 * factor)) continue;
    return "the sizes of " + movingFile + " (" + NumberText(movingSize) + ") and " + fixedFile +
           " (" + NumberText(fixedSize) + ") differ by a factor of about " + NumberText(factor) +
           "; nothing was scaled; check that both are in the same unit";
  }
  return {};
}

std::string SkippedWarning(const std::string& file, const BodyCounts& body) {
  if (body.skipped == 0) return {};
  return file + ": skipped " + std::to_string(body.skipped) + " of " +
         std::to_string(body.triangles) + " triangles, which have a NaN or infinite corner";
}

void RequireOffsetInRange(const Body& body, const Coord3& offset, const std::string& name) {
  Coord3 low{}, high{};
  body.GetBounds(low, high);
  const bool isInRange =
      IsFinite(gsl_arithmetic::Add(low, offset)) && IsFinite(gsl_arithmetic::Add(high, offset));
  if (!isInRange) FailRange("--offset", name);
}

void Translate(Mesh& mesh, const Coord3& step, const std::string& cause) {
  for (Coord3& corner : mesh.corners) {
    const Coord3 moved = gsl_arithmetic::Add(corner, step);
    if (IsFinite(corner) && !IsFinite(moved)) FailRange(cause, mesh.file);
    corner = moved;
  }
}

Mesh MovedMesh(Mesh mesh, const Answer& answer) {
  Translate(mesh, gsl_arithmetic::Multiply(answer.unitDirection, answer.contact.travel),
            "the travel");
  return mesh;
}

} // namespace gsl_tools
