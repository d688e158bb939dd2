#include "support/Report.h"

#include "JsonDocuments.h"
#include "SweepShapes.h"
#include "support/MeshView.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace gsl_sweep;
using namespace gsl_tools;
using namespace sweep_shapes;

SweepReport SampleReport() {
  SweepReport report;
  report.toolVersion = "1.2.3";
  report.movingFile = "bolt.stl";
  report.answer.status = SweepStatus::Contact;
  report.answer.contact.travel = 0.1;
  report.answer.unitDirection = {0.0, 0.0, -1.0};
  report.answer.contact.kind = ContactKind::VertexFace;
  report.moving = {12, 1, 0};
  report.answer.contact.movingTriangle = 7;
  report.answer.contact.movingPoint = {1.0, 2.0, 1.0 / 3.0};
  report.fixed = {{"bracket.stl", {34, 0, 5}}};
  report.answer.contact.fixedTriangle = 9;
  report.answer.contact.fixedPoint = {1.0, 2.0, 0.25};
  report.answer.contact.hasNormal = true;
  report.answer.contact.normal = {0.6, 0.0, 0.8};
  return report;
}

/// The JSON of a report, which is held against its schema.
nlohmann::ordered_json JsonOf(const SweepReport& report) {
  const std::string document = ReportAsJson(report);
  json_documents::Keep(document);
  return nlohmann::ordered_json::parse(document);
}

std::vector<std::string> KeysOf(const nlohmann::ordered_json& json) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : json.items())
    keys.push_back(key);
  return keys;
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
  report.answer.contact.travel = 0.0;
  report.answer.contact.kind = ContactKind::Overlap;
  EXPECT_EQ(ReportAsText(report).substr(0, 45), "In contact from the start: they share a point");
}

TEST(Report, TextOfSolidsTellsTheTwoStartsApart) {
  SweepReport report = SampleReport();
  report.rule = Rule::Solid;
  EXPECT_EQ(ReportAsText(report).substr(0, 18), "Contact after 0.1 ");
  report.answer.status = SweepStatus::Start;
  report.answer.contact.travel = 0.0;
  const std::string bodies = "  moving  bolt.stl, triangle 7 of 12, at (1, 2, 0.3333333333333333)\n"
                             "  fixed   bracket.stl, triangle 9 of 34, at (1, 2, 0.25)\n";
  EXPECT_EQ(ReportAsText(report), "In contact from the start (the solids overlap at every small "
                                  "positive travel): vertex on face.\n" +
                                      bodies);
  EXPECT_EQ(JsonOf(report)["overlaps_at_start"], false);
  report.answer.contact.overlapsAtStart = true;
  EXPECT_EQ(ReportAsText(report), "In contact from the start (the solids overlap before any "
                                  "travel): vertex on face.\n" +
                                      bodies);
  EXPECT_EQ(JsonOf(report)["overlaps_at_start"], true);
}

TEST(Report, BodyAroundTheOtherHasNoTriangle) {
  SweepReport report = SampleReport();
  report.rule = Rule::Solid;
  report.answer.status = SweepStatus::Start;
  report.answer.contact.travel = 0.0;
  report.answer.contact.kind = ContactKind::Inside;
  report.answer.contact.hasNormal = false;
  report.answer.contact.overlapsAtStart = true;
  EXPECT_EQ(ReportAsText(report), "In contact from the start (the solids overlap before any "
                                  "travel): one is inside the other.\n"
                                  "  moving  bolt.stl, 12 triangles\n"
                                  "  fixed   bracket.stl, triangle 9 of 34, at (1, 2, 0.25)\n");
  EXPECT_EQ(JsonOf(report)["moving"]["triangles"], 12);
  report.answer.contact.movingIsInside = true;
  const std::string text = ReportAsText(report);
  EXPECT_EQ(text.substr(text.find('\n') + 1),
            "  moving  bolt.stl, triangle 7 of 12, at (1, 2, 0.3333333333333333)\n"
            "  fixed   bracket.stl, 34 triangles\n");
  EXPECT_TRUE(JsonOf(report)["fixed"]["triangle"].is_null());
}

/// A report about a clearance.
SweepReport ClearanceReport() {
  SweepReport report = SampleReport();
  report.clearance = 0.25;
  report.answer.isExact = false;
  report.answer.errorBound = 0x1p-40;
  return report;
}

TEST(Report, TextOfAClearanceBoundsItsError) {
  SweepReport report = ClearanceReport();
  const std::string places = "  moving  bolt.stl, triangle 7 of 12, at (1, 2, 0.3333333333333333)\n"
                             "  fixed   bracket.stl, triangle 9 of 34, at (1, 2, 0.25)\n";
  const std::string bound = " off by at most 9.094947017729282e-13\n";
  EXPECT_EQ(ReportAsText(report),
            "Within 0.25 after 0.1 along (0, 0, -1): vertex to face.\n" + places +
                "  error   not exact: the travel and each coordinate are" + bound);
  const std::string rest = places + "  error   not exact: each coordinate is" + bound;
  EXPECT_EQ(JsonOf(report)["error_bound"], 0x1p-40);
  EXPECT_EQ(JsonOf(report)["question"]["clearance"], 0.25);
  report.answer.status = SweepStatus::Start;
  report.answer.contact.travel = 0.0;
  EXPECT_EQ(ReportAsText(report), "Within 0.25 from the start: vertex to face.\n" + rest);
  report.answer.contact.kind = ContactKind::Overlap;
  EXPECT_EQ(ReportAsText(report), "Within 0.25 from the start: they share a point.\n" + rest);
}

TEST(Report, TextWithoutAClearanceThatIsReached) {
  SweepReport report = ClearanceReport();
  report.answer.status = SweepStatus::None;
  report.answer.errorBound = 0.0;
  const std::string bodies = "  moving  bolt.stl, 12 triangles\n"
                             "  fixed   bracket.stl, 34 triangles\n";
  EXPECT_EQ(ReportAsText(report), "Not within 0.25 along (0, 0, -1).\n" + bodies);
  EXPECT_EQ(JsonOf(report)["exact"], false);
  report.maxDistance = 12.5;
  EXPECT_EQ(ReportAsText(report),
            "Not within 0.25 along (0, 0, -1) up to a travel of 12.5.\n" + bodies);
}

TEST(Report, TextOfAGrownBodySaysWhatIsExact) {
  SweepReport report = SampleReport();
  report.movingFile = "-";
  report.allowance = -0.5;
  report.deviation = 0x1p-30;
  const std::string line = "  grown   standard input by -0.5: planes are off by at "
                           "most 9.313225746154785e-10";
  const std::string exact = "; the answer for the grown body is exact\n";
  const auto ends = [](const std::string& text, const std::string& end) {
    return text.size() > end.size() && text.substr(text.size() - end.size()) == end;
  };
  EXPECT_TRUE(ends(ReportAsText(report), ", 0.25)\n" + line + exact)) << ReportAsText(report);
  EXPECT_EQ(JsonOf(report)["growing"]["deviation"], 0x1p-30);
  report.answer.status = SweepStatus::None;
  EXPECT_TRUE(ends(ReportAsText(report), " 34 triangles\n" + line + exact));
  report.pose = gsl_Matrix();
  EXPECT_NE(ReportAsText(report).find(" by -0.5, before the pose: planes are off by"),
            std::string::npos);
  // With a clearance the answer has an error of its own.
  SweepReport near = ClearanceReport();
  near.movingFile = "-";
  near.allowance = -0.5;
  near.deviation = 0x1p-30;
  EXPECT_TRUE(ends(ReportAsText(near), "e-13\n" + line + "\n")) << ReportAsText(near);
  JsonOf(near);
}

TEST(Report, TextNamesTheLastContact) {
  SweepReport report = SampleReport();
  report.last = true;
  EXPECT_EQ(ReportAsText(report).substr(0, 23), "Last contact after 0.1 ");
  report.answer.status = SweepStatus::Start;
  EXPECT_EQ(ReportAsText(report).substr(0, 40), "Last contact at the start: vertex on fac");
}

TEST(Report, PatchHasALineAndAKey) {
  SweepReport report = SampleReport();
  EXPECT_FALSE(JsonOf(report).contains("patch"));
  report.patch = PatchReport{12, {1.0, 2.0, 0.25}, {3.5, 2.0, 0.25}, {report.answer.contact}};
  const std::string text = ReportAsText(report);
  EXPECT_NE(text.find("\n  patch   12 pairs of triangles, from (1, 2, 0.25) to (3.5, 2, 0.25)\n"),
            std::string::npos)
      << text;
  EXPECT_EQ(JsonOf(report)["patch"]["count"], 12);
  EXPECT_EQ(JsonOf(report)["patch"]["pairs"][0]["moving"]["triangle"], 7);
  report.patch->pairCount = 1;
  EXPECT_NE(ReportAsText(report).find("patch   1 pair of triangles,"), std::string::npos);
  // Without a contact the text has no such line.
  report.answer.status = SweepStatus::None;
  report.patch = PatchReport();
  EXPECT_EQ(ReportAsText(report).find("patch"), std::string::npos);
  EXPECT_EQ(JsonOf(report)["patch"]["count"], 0);
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
  report.fixed[0].file = "-";
  EXPECT_NE(ReportAsText(report).find("  fixed   standard input, triangle 9"), std::string::npos);
}

TEST(Report, TextKeepsControlCharactersOfFileNamesOut) {
  SweepReport report = SampleReport();
  report.movingFile = "a\n\x1b[2Jb.stl";
  EXPECT_NE(ReportAsText(report).find("  moving  a??[2Jb.stl, triangle"), std::string::npos);
}

TEST(Report, JsonHasExactlyTheDocumentedKeysInOrder) {
  const auto json = JsonOf(SampleReport());
  EXPECT_EQ(KeysOf(json), (std::vector<std::string>{
                              "schema_version", "tool_version", "question", "status", "travel",
                              "exact", "error_bound", "direction", "kind", "normal", "moving",
                              "fixed", "fixed_body", "fixed_bodies", "warnings"}));
  EXPECT_EQ(KeysOf(json["question"]),
            (std::vector<std::string>{"allowance", "pose", "offset", "max_distance", "one_sided",
                                      "rule", "clearance", "last"}));
  for (const char* body : {"moving", "fixed"}) {
    EXPECT_EQ(KeysOf(json[body]), (std::vector<std::string>{"file", "triangles", "skipped",
                                                            "left_out", "triangle", "point"}));
  }
  EXPECT_EQ(json["schema_version"], 2);
  EXPECT_EQ(json["tool_version"], "1.2.3");
  EXPECT_EQ(json["status"], "contact");
  EXPECT_EQ(json["kind"], "vertex-face");
  EXPECT_EQ(json["normal"], nlohmann::ordered_json::parse("[0.6, 0.0, 0.8]"));
  EXPECT_EQ(json["moving"]["file"], "bolt.stl");
  EXPECT_EQ(json["moving"]["triangles"], 12);
  EXPECT_EQ(json["moving"]["skipped"], 1);
  EXPECT_EQ(json["moving"]["left_out"], 0);
  EXPECT_EQ(json["moving"]["triangle"], 7);
  EXPECT_EQ(json["fixed"]["left_out"], 5);
  EXPECT_EQ(json["fixed"]["triangle"], 9);
  EXPECT_TRUE(json["warnings"].is_array());
}

/// A report with three fixed bodies; the last is met.
SweepReport ReportOfThree() {
  SweepReport report = SampleReport();
  report.fixed = {{"floor.stl", {2, 0, 1}}, {"wall.stl", {4, 3, 0}}, {"-", {34, 0, 5}}};
  report.answer.contact.fixedBody = 2;
  return report;
}

TEST(Report, SeveralFixedBodiesNameTheBodyThatIsMet) {
  const SweepReport report = ReportOfThree();
  EXPECT_NE(
      ReportAsText(report).find("\n  fixed   standard input, triangle 9 of 34, at (1, 2, 0.25)\n"),
      std::string::npos);
  EXPECT_EQ(ReportAsText(report).find("floor"), std::string::npos);
  const auto json = JsonOf(report);
  EXPECT_EQ(json["fixed"]["file"], "-");
  EXPECT_EQ(json["fixed"]["triangles"], 34);
  EXPECT_EQ(json["fixed"]["triangle"], 9);
  EXPECT_EQ(json["fixed_body"], 2);
  EXPECT_EQ(json["fixed_bodies"], nlohmann::ordered_json::parse(R"([
    {"file": "floor.stl", "triangles": 2, "skipped": 0, "left_out": 1},
    {"file": "wall.stl", "triangles": 4, "skipped": 3, "left_out": 0},
    {"file": "-", "triangles": 34, "skipped": 0, "left_out": 5}])"));
}

TEST(Report, SeveralFixedBodiesWithoutContactAreAllListed) {
  SweepReport report = ReportOfThree();
  report.answer.status = SweepStatus::None;
  EXPECT_EQ(ReportAsText(report), "No contact along (0, 0, -1).\n"
                                  "  moving  bolt.stl, 12 triangles\n"
                                  "  fixed   floor.stl, 2 triangles\n"
                                  "  fixed   wall.stl, 4 triangles\n"
                                  "  fixed   standard input, 34 triangles\n");
  const auto json = JsonOf(report);
  EXPECT_TRUE(json["fixed"].is_null());
  EXPECT_TRUE(json["fixed_body"].is_null());
  EXPECT_EQ(json["fixed_bodies"].size(), 3u);
}

TEST(Report, JsonRepeatsTheQuestion) {
  SweepReport report = SampleReport();
  auto question = JsonOf(report)["question"];
  EXPECT_TRUE(question["pose"].is_null());
  EXPECT_EQ(question["offset"], nlohmann::ordered_json::parse("[0.0, 0.0, 0.0]"));
  EXPECT_TRUE(question["max_distance"].is_null());
  EXPECT_EQ(question["one_sided"], false);
  report.offset = {1.5, -2.0, 1e300};
  report.maxDistance = 0.25;
  report.oneSided = true;
  report.pose.emplace();
  for (int k = 0; k < 12; ++k)
    report.pose->m[k / 4][k % 4] = 0.5 * k;
  question = JsonOf(report)["question"];
  EXPECT_EQ(question["pose"],
            nlohmann::ordered_json::parse("[[0.0, 0.5, 1.0, 1.5], [2.0, 2.5, 3.0, 3.5], "
                                          "[4.0, 4.5, 5.0, 5.5]]"));
  EXPECT_EQ(question["offset"], nlohmann::ordered_json::parse("[1.5, -2.0, 1e300]"));
  EXPECT_EQ(question["max_distance"], 0.25);
  EXPECT_EQ(question["one_sided"], true);
}

TEST(Report, JsonNormalIsNullWithoutANormal) {
  SweepReport report = SampleReport();
  report.answer.contact.hasNormal = false;
  EXPECT_TRUE(JsonOf(report)["normal"].is_null());
  report.answer.contact.hasNormal = true;
  report.answer.status = SweepStatus::None;
  EXPECT_TRUE(JsonOf(report)["normal"].is_null());
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
    report.answer.contact.travel = value;
    report.answer.contact.movingPoint = {-value, value, 0.0};
    const auto json = JsonOf(report);
    EXPECT_EQ(json["travel"].get<double>(), value);
    EXPECT_EQ(json["moving"]["point"][0].get<double>(), -value);
  }
}

TEST(Report, JsonIsNullWithoutAContact) {
  SweepReport report = SampleReport();
  report.answer.status = SweepStatus::None;
  const auto json = JsonOf(report);
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
  report.answer.contact.travel = 0.0;
  report.warnings = {"one", "two"};
  const auto json = JsonOf(report);
  EXPECT_EQ(json["status"], "start");
  EXPECT_EQ(json["travel"], 0.0);
}

TEST(Report, JsonSurvivesFileNamesThatAreNotUtf8) {
  SweepReport report = SampleReport();
  report.movingFile = "a\xff\"\n.stl";
  report.warnings = {"\xc3\x28"};
  const auto json = JsonOf(report);
  EXPECT_EQ(json["moving"]["file"], "a\xef\xbf\xbd\"\n.stl");
}

Mesh NamedCube(const char* file, double side) {
  Mesh mesh = Box({0.0, 0.0, 0.0}, {side, side, side});
  mesh.file = file;
  return mesh;
}

std::string SizeWarningOf(const Mesh& moving, const Mesh& fixed) {
  return SizeWarning(moving.file, Body(ViewOf(moving)), fixed.file, Body(ViewOf(fixed)));
}

TEST(Report, SizesThatDifferByAUnitAreNamed) {
  const Mesh one = NamedCube("one.stl", 1.0);
  EXPECT_NE(SizeWarningOf(one, NamedCube("inch.stl", 25.4)).find("25.4"), std::string::npos);
  const std::string metre = SizeWarningOf(NamedCube("metre.stl", 1000.0), one);
  EXPECT_NE(metre.find("metre.stl (1732.0508"), std::string::npos) << metre;
  EXPECT_NE(metre.find("one.stl (1.732"), std::string::npos) << metre;
  EXPECT_NE(metre.find("1000"), std::string::npos) << metre;
  EXPECT_EQ(metre.find('\n'), std::string::npos);
}

TEST(Report, PartsOfDifferentSizesInMetresAndMillimetresAreNamed) {
  const std::string warning =
      SizeWarningOf(NamedCube("peg.stl", 0.04), NamedCube("plate.stl", 57.0));
  EXPECT_NE(warning.find("differ by a factor of about 1425;"), std::string::npos) << warning;
}

TEST(Report, OtherSizesAreNotNamed) {
  const Mesh one = NamedCube("one.stl", 1.0);
  for (const double side : {1.0, 2.54, 10.0, 22.8, 28.0, 100.0, 399.0, 10001.0, 25400.0}) {
    EXPECT_EQ(SizeWarningOf(one, NamedCube("other.stl", side)), "") << side;
  }
  EXPECT_NE(SizeWarningOf(one, NamedCube("other.stl", 23.0)), "");
  EXPECT_NE(SizeWarningOf(one, NamedCube("other.stl", 401.0)), "");
  EXPECT_NE(SizeWarningOf(one, NamedCube("other.stl", 9999.0)), "");
  EXPECT_EQ(SizeWarningOf(one, NamedCube("point.stl", 0.0)), "");
  EXPECT_EQ(SizeWarningOf(one, Mesh{}), "");
}

TEST(Report, SkippedTrianglesAreNamed) {
  BodyCounts body;
  body.triangles = 10;
  EXPECT_EQ(SkippedWarning("a.stl", body), "");
  body.skipped = 2;
  EXPECT_EQ(SkippedWarning("a.stl", body),
            "a.stl: skipped 2 of 10 triangles, which have a NaN or infinite corner");
}

TEST(Report, MovedMeshIsAdvancedByTheTravel) {
  Answer answer;
  answer.contact.travel = 2.5;
  answer.unitDirection = {0.0, -1.0, 0.0};
  const Mesh moved = MovedMesh(NamedCube("one.stl", 1.0), answer);
  EXPECT_EQ(moved.corners[0].y, -2.5);
  EXPECT_EQ(moved.corners[0].x, 0.0);
  EXPECT_EQ(moved.corners.size(), 36u);
}

TEST(Report, MovedMeshStaysInTheRangeOfDouble) {
  Answer answer;
  answer.contact.travel = 1e308;
  answer.unitDirection = {0.0, 0.0, 1.0};
  Mesh mesh = NamedCube("one.stl", 1.0);
  mesh.corners[0].x = std::numeric_limits<double>::infinity();
  EXPECT_EQ(MovedMesh(mesh, answer).corners[0].z, 1e308); // was not finite before
  mesh.corners[5].z = 1e308;
  EXPECT_THROW(MovedMesh(mesh, answer), std::overflow_error);
}

/// The matrix that turns every coordinate round.
gsl_Matrix Mirror() {
  gsl_Matrix mirror;
  for (int k = 0; k < 3; ++k)
    mirror.m[k][k] = -1.0;
  mirror.isIdentity = 0;
  return mirror;
}

TEST(Report, OffsetStaysInTheRangeOfDouble) {
  Mesh mesh = NamedCube("one.stl", 1e308);
  AddTriangle(mesh, {std::numeric_limits<double>::infinity(), 0, 0}, {0, 0, 0}, {0, 1, 0});
  const Body body(ViewOf(mesh));
  const double most = std::numeric_limits<double>::max();
  RequireOffsetInRange(body, {-most, 0.0, -1e308}, "one.stl");
  RequireOffsetInRange(body, {0.0, most - 1e308, 0.0}, "one.stl");
  for (const Coord3& offset : {Coord3{1e308, 0, 0}, {0, 1e308, 0}, {0, 0, 1e308}}) {
    try {
      RequireOffsetInRange(body, offset, "one.stl");
      ADD_FAILURE() << "not refused";
    } catch (const std::overflow_error& e) {
      EXPECT_STREQ(e.what(), "--offset moves a corner of one.stl beyond the range of double");
    }
  }
  const Body below = body.Moved(Mirror());
  for (const Coord3& offset : {Coord3{-1e308, 0, 0}, {0, -1e308, 0}, {0, 0, -1e308}})
    EXPECT_THROW(RequireOffsetInRange(below, offset, "one.stl"), std::overflow_error);
}

TEST(Report, TranslateNamesWhatMovesTooFar) {
  Mesh mesh = NamedCube("one.stl", 1.0);
  Translate(mesh, {1.5, -2.0, 0.25}, "--offset");
  EXPECT_EQ(mesh.corners[0].x, 1.5);
  EXPECT_EQ(mesh.corners[0].y, -2.0);
  EXPECT_EQ(mesh.corners[0].z, 0.25);
  Translate(mesh, {1e308, 0.0, 0.0}, "--offset");
  try {
    Translate(mesh, {1e308, 0.0, 0.0}, "--offset");
    ADD_FAILURE() << "not refused";
  } catch (const std::overflow_error& e) {
    EXPECT_STREQ(e.what(), "--offset moves a corner of one.stl beyond the range of double");
  }
}

} // namespace
