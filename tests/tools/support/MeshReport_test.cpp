#include "support/MeshReport.h"

#include "SweepShapes.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>

namespace {

using namespace gsl_tools;
using nlohmann::json;

MeshReport OfBox() {
  MeshReport report;
  report.file = "box.stl";
  report.facts = FactsOf(sweep_shapes::Box({0, 0, 0}, {1, 2, 3}));
  return report;
}

TEST(MeshReport, TextOfASoundMesh) {
  EXPECT_TRUE(FindingsOf(OfBox()).empty());
  EXPECT_EQ(MeshReportAsText(OfBox()),
            "box.stl: sound\n"
            "  mesh        12 triangles, 8 vertices, 18 edges, 1 component\n"
            "  surface     closed, consistently oriented\n"
            "  box         (0, 0, 0) to (1, 2, 3), size (1, 2, 3)\n"
            "  area        22\n"
            "  volume      6\n"
            "  centroid    (0.5, 1, 1.5)\n");
}

TEST(MeshReport, NamesEachFault) {
  MeshReport report;
  report.file = "-";
  gsl_mesh::MeshFacts& facts = report.facts;
  facts.triangles = 30;
  facts.vertices = 9;
  facts.edges = 20;
  facts.notFinite = 1;
  facts.firstNotFinite = 3;
  facts.degenerate = 2;
  facts.firstDegenerate = 4;
  facts.duplicate = 1;
  facts.firstDuplicate = 5;
  facts.openEdges = 7;
  facts.firstAtOpenEdge = 6;
  facts.nonManifoldEdges = 1;
  facts.firstAtNonManifoldEdge = 7;
  facts.turnedEdges = 2;
  facts.firstAtTurnedEdge = 8;
  report.crossingCount = 2;
  report.crossings = {{1, 2}, {3, 4}};
  report.fault = "an edge is open";
  const std::vector<std::string> expected = {
      "1 triangle with a NaN or infinite corner: triangle 3",
      "2 triangles without area, the first triangle 4",
      "1 triangle with the corners of an earlier one: triangle 5",
      "7 open edges, which one triangle uses, the first triangle 6",
      "1 non-manifold edge, which three or more triangles use: triangle 7",
      "2 edges between triangles that face opposite ways, the first triangle 8",
      "2 pairs of triangles that cross or touch each other, the first triangles 1 and 2"};
  EXPECT_EQ(FindingsOf(report), expected);
  const std::string text = MeshReportAsText(report);
  EXPECT_EQ(text.substr(0, text.find('\n')), "standard input: 7 findings");
  EXPECT_NE(text.find("  finding     2 triangles without area, the first triangle 4\n"),
            std::string::npos);
}

TEST(MeshReport, AClosedSurfaceThatIsNoSolidSaysWhy) {
  MeshReport report = OfBox();
  report.fault = "a component is inside out";
  EXPECT_EQ(FindingsOf(report), std::vector<std::string>{"not a solid: a component is inside out"});
}

TEST(MeshReport, GuessesAtTheUnit) {
  gsl_mesh::MeshFacts facts;
  facts.vertices = 3;
  facts.high = {0.5, 0.1, 0.1};
  EXPECT_EQ(UnitGuess(facts), "");
  facts.high.x = std::nextafter(0.5, 0.0);
  EXPECT_NE(UnitGuess(facts).find("metre"), std::string::npos);
  facts.high.x = 20000.0;
  EXPECT_EQ(UnitGuess(facts), "");
  facts.high.x = 20001.0;
  EXPECT_EQ(UnitGuess(facts),
            "the longest side of its box is 20001; the unit may be the micrometre");
}

TEST(MeshReport, Json) {
  MeshReport broken;
  broken.file = "gone.stl";
  broken.error = "gone.stl: cannot open";
  MeshReport crossed = OfBox();
  crossed.crossingCount = 1;
  crossed.crossings = {{4, 9}};
  crossed.facts.area = std::numeric_limits<double>::infinity();
  const json document = json::parse(MeshReportsAsJson({OfBox(), broken, crossed}, "1.2.3"));
  EXPECT_EQ(document["tool_version"], "1.2.3");
  const json& box = document["meshes"][0];
  EXPECT_EQ(box["file"], "box.stl");
  EXPECT_TRUE(box["error"].is_null());
  EXPECT_EQ(box["sound"], true);
  EXPECT_EQ(box["measures"]["volume"], 6.0);
  EXPECT_EQ(box["measures"]["high"], json::array({1.0, 2.0, 3.0}));
  EXPECT_TRUE(box["faults"]["open_edges"]["first_triangle"].is_null());
  EXPECT_EQ(document["meshes"][1].size(), 2u);
  EXPECT_EQ(document["meshes"][1]["error"], "gone.stl: cannot open");
  EXPECT_EQ(document["meshes"][2]["sound"], false);
  EXPECT_TRUE(document["meshes"][2]["measures"]["area"].is_null());
  EXPECT_EQ(document["meshes"][2]["faults"]["crossings"]["pairs"], json::parse("[[4, 9]]"));
}

} // namespace
