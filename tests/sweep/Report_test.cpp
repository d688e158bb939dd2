#include "Report.h"

#include "SweepShapes.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>

namespace {

using namespace gsl_sweep;
using namespace sweep_shapes;

SweepReport SampleReport() {
  SweepReport report;
  report.movingFile = "bolt.stl";
  report.fixedFile = "bracket.stl";
  report.answer.status = SweepStatus::Contact;
  report.answer.travel = 0.1;
  report.answer.direction = {0.0, 0.0, -1.0};
  report.answer.kind = ContactKind::VertexFace;
  report.answer.moving = {12, 1, 0, 7, {1.0, 2.0, 1.0 / 3.0}};
  report.answer.fixed = {34, 0, 0, 9, {1.0, 2.0, 0.25}};
  return report;
}

TEST(Report, TextOfAContact) {
  EXPECT_EQ(ReportAsText(SampleReport()),
            "Contact after 0.1 along (0, 0, -1): vertex on face.\n"
            "  moving  bolt.stl, triangle 7 of 12, at (1, 2, 0.3333333333333333)\n"
            "  fixed   bracket.stl, triangle 9 of 34, at (1, 2, 0.25)\n");
}

TEST(Report, TextOfAStart) {
  SweepReport report = SampleReport();
  report.answer.status = SweepStatus::Start;
  report.answer.travel = 0.0;
  report.answer.kind = ContactKind::Overlap;
  EXPECT_EQ(ReportAsText(report).substr(0, 45), "In contact from the start: they share a point");
}

TEST(Report, TextWithoutContactNamesTheLimit) {
  SweepReport report = SampleReport();
  report.answer.status = SweepStatus::None;
  const std::string bodies = "  moving  bolt.stl, 12 triangles\n"
                             "  fixed   bracket.stl, 34 triangles\n";
  EXPECT_EQ(ReportAsText(report), "No contact along (0, 0, -1).\n" + bodies);
  report.maxDistance = 12.5;
  EXPECT_EQ(ReportAsText(report), "No contact along (0, 0, -1) within 12.5.\n" + bodies);
}

TEST(Report, TextNamesStandardInput) {
  SweepReport report = SampleReport();
  report.fixedFile = "-";
  EXPECT_NE(ReportAsText(report).find("  fixed   standard input, triangle 9"), std::string::npos);
}

TEST(Report, TextKeepsControlCharactersOfFileNamesOut) {
  SweepReport report = SampleReport();
  report.movingFile = "a\n\x1b[2Jb.stl";
  EXPECT_NE(ReportAsText(report).find("  moving  a??[2Jb.stl, triangle"), std::string::npos);
}

TEST(Report, JsonHasExactlyTheDocumentedKeysInOrder) {
  const auto json = nlohmann::ordered_json::parse(ReportAsJson(SampleReport()));
  std::vector<std::string> keys;
  for (const auto& [key, value] : json.items())
    keys.push_back(key);
  EXPECT_EQ(keys, (std::vector<std::string>{"schema_version", "status", "travel", "direction",
                                            "kind", "moving", "fixed", "warnings"}));
  keys.clear();
  for (const auto& [key, value] : json["moving"].items())
    keys.push_back(key);
  EXPECT_EQ(keys, (std::vector<std::string>{"file", "triangles", "skipped", "triangle", "point"}));
  EXPECT_EQ(json["schema_version"], 1);
  EXPECT_EQ(json["status"], "contact");
  EXPECT_EQ(json["kind"], "vertex-face");
  EXPECT_EQ(json["moving"]["file"], "bolt.stl");
  EXPECT_EQ(json["moving"]["triangles"], 12);
  EXPECT_EQ(json["moving"]["skipped"], 1);
  EXPECT_EQ(json["moving"]["triangle"], 7);
  EXPECT_EQ(json["fixed"]["triangle"], 9);
  EXPECT_TRUE(json["warnings"].is_array());
}

TEST(Report, JsonNumbersReadBackAsTheSameDoubles) {
  SweepReport report = SampleReport();
  const double values[] = {0.1,
                           1.0 / 3.0,
                           5e-324,
                           1.7976931348623157e308,
                           1e23,
                           123456789012345680.0,
                           2.2250738585072011e-308};
  for (const double value : values) {
    report.answer.travel = value;
    report.answer.moving.point = {-value, value, 0.0};
    const auto json = nlohmann::json::parse(ReportAsJson(report));
    EXPECT_EQ(json["travel"].get<double>(), value);
    EXPECT_EQ(json["moving"]["point"][0].get<double>(), -value);
  }
}

TEST(Report, JsonIsNullWhereThereIsNoContact) {
  SweepReport report = SampleReport();
  report.answer.status = SweepStatus::None;
  const auto json = nlohmann::json::parse(ReportAsJson(report));
  EXPECT_EQ(json["status"], "none");
  EXPECT_TRUE(json["travel"].is_null());
  EXPECT_TRUE(json["kind"].is_null());
  for (const char* body : {"moving", "fixed"}) {
    EXPECT_TRUE(json[body]["triangle"].is_null());
    EXPECT_TRUE(json[body]["point"].is_null());
    EXPECT_TRUE(json[body]["triangles"].is_number());
  }
}

TEST(Report, JsonOfAStartHasTravelZero) {
  SweepReport report = SampleReport();
  report.answer.status = SweepStatus::Start;
  report.answer.travel = 0.0;
  const auto json = nlohmann::json::parse(ReportAsJson(report));
  EXPECT_EQ(json["status"], "start");
  EXPECT_EQ(json["travel"], 0.0);
}

TEST(Report, JsonSurvivesFileNamesThatAreNotUtf8) {
  SweepReport report = SampleReport();
  report.movingFile = "a\xff\"\n.stl";
  report.warnings = {"\xc3\x28"};
  const auto json = nlohmann::json::parse(ReportAsJson(report));
  EXPECT_EQ(json["moving"]["file"], "a\xef\xbf\xbd\"\n.stl");
}

TEST(Report, EveryKindHasItsName) {
  EXPECT_STREQ(KindName(ContactKind::VertexVertex), "vertex-vertex");
  EXPECT_STREQ(KindName(ContactKind::VertexEdge), "vertex-edge");
  EXPECT_STREQ(KindName(ContactKind::EdgeVertex), "edge-vertex");
  EXPECT_STREQ(KindName(ContactKind::VertexFace), "vertex-face");
  EXPECT_STREQ(KindName(ContactKind::FaceVertex), "face-vertex");
  EXPECT_STREQ(KindName(ContactKind::EdgeEdge), "edge-edge");
  EXPECT_STREQ(KindName(ContactKind::Overlap), "overlap");
}

Mesh NamedCube(const char* file, double side) {
  Mesh mesh = Box({0.0, 0.0, 0.0}, {side, side, side});
  mesh.file = file;
  return mesh;
}

TEST(Report, SizesThatDifferByAUnitAreNamed) {
  const Mesh one = NamedCube("one.stl", 1.0);
  EXPECT_NE(SizeWarning(one, NamedCube("inch.stl", 25.4)).find("25.4"), std::string::npos);
  const std::string metre = SizeWarning(NamedCube("metre.stl", 1000.0), one);
  EXPECT_NE(metre.find("metre.stl (1732.0508"), std::string::npos) << metre;
  EXPECT_NE(metre.find("one.stl (1.732"), std::string::npos) << metre;
  EXPECT_NE(metre.find("1000"), std::string::npos) << metre;
  EXPECT_EQ(metre.find('\n'), std::string::npos);
}

TEST(Report, OtherSizesAreNotNamed) {
  const Mesh one = NamedCube("one.stl", 1.0);
  for (const double side : {1.0, 2.54, 10.0, 22.8, 28.0, 100.0, 890.0, 1110.0, 25400.0}) {
    EXPECT_EQ(SizeWarning(one, NamedCube("other.stl", side)), "") << side;
  }
  EXPECT_NE(SizeWarning(one, NamedCube("other.stl", 23.0)), "");
  EXPECT_NE(SizeWarning(one, NamedCube("other.stl", 1099.0)), "");
  EXPECT_EQ(SizeWarning(one, NamedCube("point.stl", 0.0)), "");
  EXPECT_EQ(SizeWarning(one, Mesh{}), "");
}

TEST(Report, SkippedTrianglesAreNamed) {
  SweptBody body;
  body.triangles = 10;
  EXPECT_EQ(SkippedWarning("a.stl", body), "");
  body.skipped = 2;
  EXPECT_EQ(SkippedWarning("a.stl", body),
            "a.stl: skipped 2 of 10 triangles, which have a NaN or infinite corner");
}

TEST(Report, MovedMeshIsAdvancedByTheTravel) {
  SweepAnswer answer;
  answer.travel = 2.5;
  answer.direction = {0.0, -1.0, 0.0};
  const Mesh moved = MovedMesh(NamedCube("one.stl", 1.0), answer);
  EXPECT_EQ(moved.corners[0].y, -2.5);
  EXPECT_EQ(moved.corners[0].x, 0.0);
  EXPECT_EQ(moved.corners.size(), 36u);
}

} // namespace
