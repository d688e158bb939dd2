#include "support/MeshReport.h"

#include "support/AnswerJson.h"
#include "support/Report.h"
#include "support/VectorText.h"

#include <algorithm>
#include <cmath>

namespace gsl_tools {

namespace {

using gsl_arithmetic::Coord3;
using gsl_mesh::MeshFacts;
using gsl_sweep::Crossing;

/// Returns "1 edge" or "2 edges".
std::string Counted(std::size_t count, const std::string& one) {
  const bool isVertex = one == "vertex";
  return std::to_string(count) + " " + (count == 1 ? one : isVertex ? "vertices" : one + "s");
}

/// Adds a line for a kind of fault, with its first triangle, where there is any.
void AddCount(std::vector<std::string>& lines, std::size_t count, const std::string& one,
              const std::string& where, std::size_t first) {
  if (count == 0) return;
  lines.push_back(Counted(count, one) + where + (count == 1 ? ": " : ", the first ") + "triangle " +
                  std::to_string(first));
}

std::string PairText(const Crossing& crossing) {
  return "triangles " + std::to_string(crossing.first) + " and " + std::to_string(crossing.second);
}

Coord3 SizesOf(const MeshFacts& facts) {
  return {facts.high.x - facts.low.x, facts.high.y - facts.low.y, facts.high.z - facts.low.z};
}

Json NumberOrNull(double value) {
  return std::isfinite(value) ? Json(value) : Json(nullptr);
}

/// Returns a count, and the first triangle where the count is not zero.
Json CountAsJson(std::size_t count, std::size_t first) {
  Json json;
  json["count"] = count;
  json["first_triangle"] = count == 0 ? Json(nullptr) : Json(first);
  return json;
}

Json FaultsAsJson(const MeshReport& report) {
  const MeshFacts& facts = report.facts;
  Json json;
  json["not_finite"] = CountAsJson(facts.notFinite, facts.firstNotFinite);
  json["degenerate"] = CountAsJson(facts.degenerate, facts.firstDegenerate);
  json["duplicate"] = CountAsJson(facts.duplicate, facts.firstDuplicate);
  json["open_edges"] = CountAsJson(facts.openEdges, facts.firstAtOpenEdge);
  json["non_manifold_edges"] = CountAsJson(facts.nonManifoldEdges, facts.firstAtNonManifoldEdge);
  json["turned_edges"] = CountAsJson(facts.turnedEdges, facts.firstAtTurnedEdge);
  json["crossings"]["count"] = report.crossingCount;
  json["crossings"]["pairs"] = Json::array();
  for (const Crossing& crossing : report.crossings)
    json["crossings"]["pairs"].push_back({crossing.first, crossing.second});
  return json;
}

Json MeasuresAsJson(const MeshFacts& facts) {
  Json json;
  const bool hasBox = facts.vertices > 0;
  json["low"] = hasBox ? JsonOf(facts.low) : Json(nullptr);
  json["high"] = hasBox ? JsonOf(facts.high) : Json(nullptr);
  json["area"] = NumberOrNull(facts.area);
  json["volume"] = facts.isClosed ? NumberOrNull(facts.volume) : Json(nullptr);
  json["centroid"] =
      hasBox && gsl_mesh::IsFinite(facts.centroid) ? JsonOf(facts.centroid) : Json(nullptr);
  return json;
}

Json ReportAsJson(const MeshReport& report) {
  Json json;
  json["file"] = report.file;
  json["error"] = report.IsReadable() ? Json(nullptr) : Json(report.error);
  if (!report.IsReadable()) return json;
  const MeshFacts& facts = report.facts;
  const std::vector<std::string> findings = FindingsOf(report);
  json["sound"] = findings.empty();
  json["findings"] = findings;
  json["warnings"] = report.warnings;
  json["triangles"] = facts.triangles;
  json["vertices"] = facts.vertices;
  json["edges"] = facts.edges;
  json["components"] = facts.components;
  json["closed"] = facts.isClosed;
  json["oriented"] = facts.isOriented;
  json["faults"] = FaultsAsJson(report);
  json["measures"] = MeasuresAsJson(facts);
  const std::string unit = UnitGuess(facts);
  json["unit_guess"] = unit.empty() ? Json(nullptr) : Json(unit);
  return json;
}

std::string MeasuresAsText(const MeshFacts& facts) {
  std::string text = "  box         " + VectorText(facts.low) + " to " + VectorText(facts.high) +
                     ", size " + VectorText(SizesOf(facts)) + "\n";
  text += "  area        " + NumberText(facts.area) + "\n";
  if (facts.isClosed) text += "  volume      " + NumberText(facts.volume) + "\n";
  return text + "  centroid    " + VectorText(facts.centroid) +
         (facts.isClosed && facts.volume != 0.0 ? "\n" : " of the area\n");
}

} // namespace

std::vector<std::string> FindingsOf(const MeshReport& report) {
  const MeshFacts& facts = report.facts;
  std::vector<std::string> lines;
  AddCount(lines, facts.notFinite, "triangle", " with a NaN or infinite corner",
           facts.firstNotFinite);
  AddCount(lines, facts.degenerate, "triangle", " without area", facts.firstDegenerate);
  AddCount(lines, facts.duplicate, "triangle", " with the corners of an earlier one",
           facts.firstDuplicate);
  AddCount(lines, facts.openEdges, "open edge", ", which one triangle uses", facts.firstAtOpenEdge);
  AddCount(lines, facts.nonManifoldEdges, "non-manifold edge",
           ", which three or more triangles use", facts.firstAtNonManifoldEdge);
  AddCount(lines, facts.turnedEdges, "edge", " between triangles that face opposite ways",
           facts.firstAtTurnedEdge);
  if (report.crossingCount > 0) {
    lines.push_back(
        Counted(report.crossingCount, "pair") + " of triangles that cross or touch each other" +
        (report.crossingCount == 1 ? ": " : ", the first ") + PairText(report.crossings.front()));
  }
  // Where edges are wrong, the fault only repeats one of them.
  if (facts.isClosed && !report.fault.empty()) lines.push_back("not a solid: " + report.fault);
  if (facts.edges == 0) lines.push_back("no triangle has three different corners");
  return lines;
}

std::string UnitGuess(const MeshFacts& facts) {
  const Coord3 sizes = SizesOf(facts);
  const double longest = std::max({sizes.x, sizes.y, sizes.z});
  if (facts.vertices == 0 || longest == 0.0) return {};
  const std::string size = "the longest side of its box is " + NumberText(longest);
  if (longest < 0.5) return size + "; the unit may be the metre";
  if (longest > 20000.0) return size + "; the unit may be the micrometre";
  return {};
}

std::string MeshReportAsText(const MeshReport& report) {
  const MeshFacts& facts = report.facts;
  const std::vector<std::string> findings = FindingsOf(report);
  std::string text = NameInText(report.file) + ": " +
                     (findings.empty() ? "sound" : Counted(findings.size(), "finding")) + "\n";
  for (const std::string& finding : findings)
    text += "  finding     " + finding + "\n";
  text += "  mesh        " + Counted(facts.triangles, "triangle") + ", " +
          Counted(facts.vertices, "vertex") + ", " + Counted(facts.edges, "edge") + ", " +
          Counted(facts.components, "component") + "\n";
  text += std::string("  surface     ") + (facts.isClosed ? "closed" : "not closed") + ", " +
          (facts.isOriented ? "consistently oriented" : "not consistently oriented") + "\n";
  if (facts.vertices > 0) text += MeasuresAsText(facts);
  const std::string unit = UnitGuess(facts);
  if (!unit.empty()) text += "  unit        " + unit + "\n";
  return text;
}

std::string MeshReportsAsJson(const std::vector<MeshReport>& reports,
                              const std::string& toolVersion) {
  Json json;
  json["schema_version"] = 1;
  json["tool_version"] = toolVersion;
  json["meshes"] = Json::array();
  for (const MeshReport& report : reports)
    json["meshes"].push_back(ReportAsJson(report));
  return JsonText(json, 2) + "\n";
}

} // namespace gsl_tools
