#include "support/Report.h"

#include "Printable.h"
#include "support/AnswerJson.h"
#include "support/VectorText.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace gsl_tools {

namespace {

using gsl_mesh::IsFinite;
using gsl_mesh::Printable;
using gsl_sweep::SweepStatus;

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

/// Puts what is known of a body before the place where it touches.
void DescribeBody(Json& place, const BodyCounts& body, const std::string& file) {
  Json json = JsonOf(body, file);
  json.update(place);
  place = std::move(json);
}

Json FixedBodiesAsJson(const SceneReport& report) {
  Json bodies = Json::array();
  for (const FixedBody& body : report.fixed)
    bodies.push_back(JsonOf(body.counts, body.file));
  return bodies;
}

/// Returns the names of the features for a sentence, the moving body's feature first. `relation`
/// is between them.
std::string KindInWords(ContactKind kind, const char* relation) {
  if (kind == ContactKind::Overlap) return "they share a point";
  if (kind == ContactKind::Inside) return "one is inside the other";
  std::string words = KindName(kind);
  words.replace(words.find('-'), 1, relation);
  return words;
}

std::string BodyLine(const char* role, const std::string& file, const std::string& what) {
  return std::string("  ") + role + NameInText(file) + ", " + what + "\n";
}

std::string TouchingLine(const char* role, const std::string& file, const BodyCounts& body,
                         const Place& place) {
  return BodyLine(role, file,
                  "triangle " + std::to_string(place.triangle) + " of " +
                      std::to_string(body.triangles) + ", at " + VectorText(place.point));
}

std::string CountLine(const char* role, const std::string& file, const BodyCounts& body) {
  return BodyLine(role, file, std::to_string(body.triangles) + " triangles");
}

/// Returns how a contact at the start is named in a sentence.
std::string StartInWords(const SweepReport& report) {
  if (report.last) return "Last contact at the start";
  std::string start = "In contact from the start";
  if (report.rule != gsl_sweep::Rule::Solid) return start;
  return start + (report.answer.contact.overlapsAtStart
                      ? " (the solids overlap before any travel)"
                      : " (the solids overlap at every small positive travel)");
}

/// Returns the line about the travel at which the bodies are as near as the clearance.
std::string ClearanceLine(const SweepReport& report) {
  const Answer& answer = report.answer;
  const std::string within = "ithin " + NumberText(report.clearance);
  const std::string along = " along " + VectorText(answer.unitDirection);
  const std::string kind = ": " + KindInWords(answer.contact.kind, " to ") + ".\n";
  if (answer.status == SweepStatus::Start) return "W" + within + " from the start" + kind;
  if (answer.status == SweepStatus::Contact) {
    return "W" + within + " after " + NumberText(answer.contact.travel) + along + kind;
  }
  const bool limited = std::isfinite(report.maxDistance);
  return "Not w" + within + along +
         (limited ? " up to a travel of " + NumberText(report.maxDistance) : "") + ".\n";
}

std::string FirstLine(const SweepReport& report) {
  if (report.clearance > 0.0) return ClearanceLine(report);
  const Answer& answer = report.answer;
  const std::string along = " along " + VectorText(answer.unitDirection);
  switch (answer.status) {
  case SweepStatus::Contact:
    return (report.last ? "Last contact after " : "Contact after ") +
           NumberText(answer.contact.travel) + along + ": " +
           KindInWords(answer.contact.kind, " on ") + ".\n";
  case SweepStatus::Start:
    return StartInWords(report) + ": " + KindInWords(answer.contact.kind, " on ") + ".\n";
  case SweepStatus::None:
  case SweepStatus::Cancelled:
    break;
  }
  const bool limited = std::isfinite(report.maxDistance);
  return "No contact" + along + (limited ? " within " + NumberText(report.maxDistance) : "") +
         ".\n";
}

/// Returns the line about a patch with pairs.
std::string PatchLine(const PatchReport& patch) {
  return "  patch   " + std::to_string(patch.pairCount) +
         (patch.pairCount == 1 ? " pair" : " pairs") + " of triangles, from " +
         VectorText(patch.low) + " to " + VectorText(patch.high) + "\n";
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

std::string NameInText(const std::string& file) {
  return file == "-" ? "standard input" : Printable(file);
}

std::string BodiesAsText(const SceneReport& report) {
  std::string text = CountLine("moving  ", report.movingFile, report.moving);
  for (const FixedBody& body : report.fixed)
    text += CountLine("fixed   ", body.file, body.counts);
  return text;
}

std::string ErrorsAsText(const SceneReport& report, const char* what, double errorBound) {
  std::string text;
  if (errorBound > 0.0) {
    text += std::string("  error   not exact: ") + what + " off by at most " +
            NumberText(errorBound) + "\n";
  }
  if (report.allowance != 0.0) {
    text += "  grown   " + NameInText(report.movingFile) + " by " + NumberText(report.allowance) +
            (report.pose ? ", before the pose" : "") + ": planes are off by at most " +
            NumberText(report.deviation) +
            (report.clearance > 0.0 ? "\n" : "; the answer for the grown body is exact\n");
  }
  return text;
}

std::string ReportAsText(const SweepReport& report) {
  const Answer& answer = report.answer;
  // A travel of zero is decided exactly.
  const bool isStart = answer.status == SweepStatus::Start;
  const std::string errors =
      ErrorsAsText(report, isStart ? "each coordinate is" : "the travel and each coordinate are",
                   answer.errorBound);
  if (!Touches(answer)) return FirstLine(report) + BodiesAsText(report) + errors;
  const FixedBody& met = report.fixed.at(answer.contact.fixedBody);
  std::string moving =
      TouchingLine("moving  ", report.movingFile, report.moving, MovingPlace(answer));
  std::string fixed = TouchingLine("fixed   ", met.file, met.counts, FixedPlace(answer));
  if (answer.contact.kind == ContactKind::Inside) {
    if (answer.contact.movingIsInside) {
      fixed = CountLine("fixed   ", met.file, met.counts);
    } else {
      moving = CountLine("moving  ", report.movingFile, report.moving);
    }
  }
  return FirstLine(report) + moving + fixed + (report.patch ? PatchLine(*report.patch) : "") +
         errors;
}

std::string ReportAsJson(const SweepReport& report) {
  const bool touches = Touches(report.answer);
  Json json = SceneAsJson(report);
  json.update(AnswerAsJson(report.answer, report.rule));
  DescribeBody(json["moving"], report.moving, report.movingFile);
  if (touches || report.fixed.size() == 1) {
    const FixedBody& body = report.fixed.at(touches ? report.answer.contact.fixedBody : 0);
    DescribeBody(json["fixed"], body.counts, body.file);
  } else {
    json["fixed"] = nullptr; // none of several bodies is met
  }
  if (report.patch) json["patch"] = PatchAsJson(*report.patch);
  json["fixed_bodies"] = FixedBodiesAsJson(report);
  json["warnings"] = report.warnings;
  return JsonText(json, 2) + "\n";
}

std::string SizeWarning(const std::string& movingFile, const Body& moving,
                        const std::string& fixedFile, const Body& fixed) {
  const double movingSize = SizeOf(moving);
  const double fixedSize = SizeOf(fixed);
  const double ratio = std::max(movingSize, fixedSize) / std::min(movingSize, fixedSize);
  // Many assemblies have parts that differ by 25, so only the same part in inches is noticed. Few
  // have parts that differ by 1000, so parts of somewhat different sizes are noticed too.
  const bool inches = ratio >= 0.9 * 25.4 && ratio <= 1.1 * 25.4;
  const bool metres = ratio >= 400.0 && ratio <= 10000.0;
  if (!inches && !metres) return {};
  std::string warning = "the sizes of " + movingFile + " (" + NumberText(movingSize) + ") and ";
  warning += fixedFile + " (" + NumberText(fixedSize) + ") differ by a factor of about " +
             NumberText(std::round(ratio * 10.0) / 10.0) +
             "; nothing was scaled; check that both are in the same unit";
  return warning;
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
