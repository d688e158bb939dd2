#include "support/Sphere.h"

#include "JsonDocuments.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace {

using namespace gsl_tools;
using gsl_sweep::SweepStatus;
using nlohmann::json;

Answer AnswerOf(SweepStatus status, double travel, double x, std::size_t fixedBody) {
  Answer answer;
  answer.status = status;
  answer.unitDirection = {x, 0.0, 0.0};
  answer.contact.travel = travel;
  answer.contact.fixedBody = fixedBody;
  answer.contact.kind = ContactKind::VertexFace;
  return answer;
}

SphereReport Sample() {
  SphereReport report;
  report.toolVersion = "1.2.3";
  report.movingFile = "bolt.stl";
  report.moving = {12, 1, 0};
  report.fixed = {{"floor.stl", {2, 0, 0}}, {"-", {4, 3, 0}}};
  report.warnings = {"one"};
  report.answers = {
      AnswerOf(SweepStatus::None, 0.0, 0.5, 0),       AnswerOf(SweepStatus::Contact, 3.0, 0.25, 0),
      AnswerOf(SweepStatus::Contact, 1.5, 0.125, 1),  AnswerOf(SweepStatus::Contact, 3.0, -0.25, 1),
      AnswerOf(SweepStatus::Contact, 1.5, -0.125, 0), AnswerOf(SweepStatus::None, 0.0, -0.5, 0)};
  return report;
}

json JsonOf(const SphereReport& report) {
  const std::string document = SphereAsJson(report);
  json_documents::Keep(document);
  return json::parse(document);
}

TEST(Sphere, TextCountsAndNamesTheLeastAndTheGreatestTravel) {
  EXPECT_EQ(SphereAsText(Sample()),
            "6 directions: 2 free, 4 with contact after a travel, 0 in contact from the start.\n"
            "  least     1.5 along (0.125, 0, 0), onto standard input\n"
            "  greatest  3 along (0.25, 0, 0), onto floor.stl\n"
            "  moving  bolt.stl, 12 triangles\n"
            "  fixed   floor.stl, 2 triangles\n"
            "  fixed   standard input, 4 triangles\n");
}

TEST(Sphere, TextWithoutATravel) {
  SphereReport report = Sample();
  report.answers = {AnswerOf(SweepStatus::None, 0.0, 1.0, 0)};
  report.maxDistance = 2.5;
  EXPECT_EQ(SphereAsText(report), "1 direction: 1 free within 2.5, 0 with contact after a travel, "
                                  "0 in contact from the start.\n"
                                  "  moving  bolt.stl, 12 triangles\n"
                                  "  fixed   floor.stl, 2 triangles\n"
                                  "  fixed   standard input, 4 triangles\n");
  report.answers = {AnswerOf(SweepStatus::Start, 0.0, 1.0, 0)};
  EXPECT_EQ(SphereAsText(report).substr(0, 89),
            "1 direction: 0 free within 2.5, 0 with contact after a travel, "
            "1 in contact from the star");
  EXPECT_EQ(SphereAsText(report).find("least"), std::string::npos);
}

TEST(Sphere, TextOfAClearanceHasTheGreatestErrorBound) {
  SphereReport report = Sample();
  report.clearance = 0.25;
  report.maxDistance = 9.0;
  for (std::size_t k = 0; k < report.answers.size(); ++k) {
    report.answers[k].isExact = false;
    if (Touches(report.answers[k])) report.answers[k].errorBound = k == 2 ? 0x1p-10 : 0x1p-20;
  }
  EXPECT_EQ(SphereAsText(report),
            "6 directions: 2 free up to a travel of 9, 4 within 0.25 after a travel, "
            "0 within 0.25 from the start.\n"
            "  least     1.5 along (0.125, 0, 0), to standard input\n"
            "  greatest  3 along (0.25, 0, 0), to floor.stl\n"
            "  moving  bolt.stl, 12 triangles\n"
            "  fixed   floor.stl, 2 triangles\n"
            "  fixed   standard input, 4 triangles\n"
            "  error   not exact: each travel and each coordinate are off by at most "
            "0.0009765625\n");
  EXPECT_EQ(JsonOf(report)["answers"][2]["error_bound"], 0x1p-10);
}

TEST(Sphere, SaysThatTheBodyIsGrown) {
  SphereReport report = Sample();
  report.allowance = 0.5;
  report.deviation = 0x1p-10;
  const std::string text = SphereAsText(report);
  EXPECT_NE(text.find("\n  grown   bolt.stl by 0.5: planes are off by at most "
                      "0.0009765625; the answer for the grown body is exact\n"),
            std::string::npos)
      << text;
  EXPECT_EQ(JsonOf(report)["growing"],
            json::parse(R"({"exact": false, "deviation": 0.0009765625})"));
}

TEST(Sphere, JsonHasEveryAnswer) {
  const json document = JsonOf(Sample());
  EXPECT_EQ(document["schema_version"], 2);
  EXPECT_EQ(document["tool_version"], "1.2.3");
  EXPECT_EQ(document["directions"], 6);
  EXPECT_EQ(document["free"], 2);
  EXPECT_EQ(document["contact"], 4);
  EXPECT_EQ(document["start"], 0);
  EXPECT_EQ(document["least"], 2);
  EXPECT_EQ(document["greatest"], 1);
  EXPECT_EQ(document["moving"], json::parse(R"({"file":"bolt.stl","triangles":12,"skipped":1})"));
  EXPECT_EQ(document["fixed_bodies"][1], json::parse(R"({"file":"-","triangles":4,"skipped":3})"));
  EXPECT_EQ(document["warnings"], json::array({"one"}));
  ASSERT_EQ(document["answers"].size(), 6u);
  EXPECT_EQ(document["answers"][2]["travel"], 1.5);
  EXPECT_EQ(document["answers"][2]["fixed_body"], 1);
  EXPECT_EQ(document["answers"][5]["status"], "none");
}

TEST(Sphere, JsonOfSolidsTellsTheTwoStartsApart) {
  SphereReport report = Sample();
  report.rule = gsl_sweep::Rule::Solid;
  report.answers[4].status = SweepStatus::Start;
  report.answers[4].contact.travel = 0.0;
  report.answers[4].contact.overlapsAtStart = true;
  const json document = JsonOf(report);
  EXPECT_EQ(document["question"]["rule"], "solid");
  EXPECT_EQ(document["answers"][3]["overlaps_at_start"], false);
  EXPECT_EQ(document["answers"][4]["overlaps_at_start"], true);
  EXPECT_FALSE(JsonOf(Sample())["answers"][4].contains("overlaps_at_start"));
}

TEST(Sphere, JsonWithoutATravel) {
  SphereReport report = Sample();
  report.answers = {AnswerOf(SweepStatus::Start, 0.0, 1.0, 0)};
  const json document = JsonOf(report);
  EXPECT_EQ(document["start"], 1);
  EXPECT_TRUE(document["least"].is_null());
  EXPECT_TRUE(document["greatest"].is_null());
}

} // namespace
