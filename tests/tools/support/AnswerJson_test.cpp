#include "support/AnswerJson.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace gsl_tools;
using gsl_sweep::Rule;
using gsl_sweep::SweepStatus;

Answer Sample() {
  Answer answer;
  answer.status = SweepStatus::Contact;
  answer.unitDirection = {0.0, 0.0, -1.0};
  answer.contact.travel = 0.1;
  answer.contact.kind = ContactKind::EdgeEdge;
  answer.contact.fixedBody = 2;
  answer.contact.movingTriangle = 7;
  answer.contact.movingPoint = {1.0, 2.0, 3.0};
  answer.contact.fixedTriangle = 9;
  answer.contact.fixedPoint = {1.0, 2.0, 2.9};
  answer.contact.hasNormal = true;
  answer.contact.normal = {0.6, 0.0, 0.8};
  return answer;
}

TEST(AnswerJson, HasTheKeysOfAnAnswerInOrder) {
  EXPECT_EQ(
      JsonText(AnswerAsJson(Sample(), Rule::Touch), -1),
      R"({"status":"contact","travel":0.1,"exact":true,"error_bound":0.0,)"
      R"("direction":[0.0,0.0,-1.0],"kind":"edge-edge","normal":[0.6,0.0,0.8],"moving":{"triangle":7,"point":[1.0,2.0,3.0]},)"
      R"("fixed":{"triangle":9,"point":[1.0,2.0,2.9]},"fixed_body":2})");
}

TEST(AnswerJson, IsNullWhereThereIsNoContact) {
  Answer answer = Sample();
  answer.status = SweepStatus::None;
  EXPECT_EQ(
      JsonText(AnswerAsJson(answer, Rule::Touch), -1),
      R"({"status":"none","travel":null,"exact":true,"error_bound":null,)"
      R"("direction":[0.0,0.0,-1.0],"kind":null,"normal":null,"moving":{"triangle":null,"point":null},)"
      R"("fixed":{"triangle":null,"point":null},"fixed_body":null})");
}

TEST(AnswerJson, StartIsNamed) {
  Answer answer = Sample();
  answer.status = SweepStatus::Start;
  answer.contact.hasNormal = false;
  const Json json = AnswerAsJson(answer, Rule::Touch);
  EXPECT_EQ(json["status"], "start");
  EXPECT_TRUE(json["normal"].is_null());
  EXPECT_EQ(json["fixed"]["triangle"], 9);
}

TEST(AnswerJson, OfSolidsTellsTheTwoStartsApart) {
  Answer answer = Sample();
  EXPECT_FALSE(AnswerAsJson(answer, Rule::NotLeaving).contains("overlaps_at_start"));
  EXPECT_EQ(AnswerAsJson(answer, Rule::Solid)["overlaps_at_start"], false);
  answer.status = SweepStatus::Start;
  EXPECT_EQ(AnswerAsJson(answer, Rule::Solid)["overlaps_at_start"], false);
  answer.contact.overlapsAtStart = true;
  EXPECT_EQ(AnswerAsJson(answer, Rule::Solid)["overlaps_at_start"], true);
  // What the contact holds without a contact does not matter.
  answer.status = SweepStatus::None;
  EXPECT_EQ(AnswerAsJson(answer, Rule::Solid)["overlaps_at_start"], false);
}

TEST(AnswerJson, BodyAroundTheOtherHasNoTriangle) {
  Answer answer = Sample();
  answer.status = SweepStatus::Start;
  answer.contact.kind = ContactKind::Inside;
  answer.contact.overlapsAtStart = true;
  Json json = AnswerAsJson(answer, Rule::Solid);
  const Json none = Json::parse(R"({"triangle": null, "point": null})");
  EXPECT_EQ(json["kind"], "inside");
  EXPECT_EQ(json["moving"], none);
  EXPECT_EQ(json["fixed"]["triangle"], 9);
  answer.contact.movingIsInside = true;
  json = AnswerAsJson(answer, Rule::Solid);
  EXPECT_EQ(json["moving"]["triangle"], 7);
  EXPECT_EQ(json["fixed"], none);
  EXPECT_EQ(json["fixed_body"], 2);
}

TEST(AnswerJson, DocumentsBeginAlike) {
  SceneReport scene;
  scene.toolVersion = "1.2.3";
  scene.maxDistance = 4.5;
  EXPECT_EQ(JsonText(SceneAsJson(scene), -1),
            R"({"schema_version":2,"tool_version":"1.2.3","question":{"allowance":0.0,)"
            R"("pose":null,"offset":[0.0,0.0,0.0],"max_distance":4.5,"one_sided":false,)"
            R"("rule":"touch","clearance":0.0,"last":false}})");
  scene.rule = Rule::Solid;
  EXPECT_EQ(SceneAsJson(scene)["question"]["rule"], "solid");
  scene.rule = Rule::NotLeaving;
  scene.last = true;
  EXPECT_EQ(SceneAsJson(scene)["question"]["rule"], "not-leaving");
  EXPECT_EQ(SceneAsJson(scene)["question"]["last"], true);
}

TEST(AnswerJson, SaysWhatIsNotExact) {
  Answer answer = Sample();
  answer.isExact = false;
  answer.errorBound = 0x1p-40;
  Json json = AnswerAsJson(answer, Rule::Touch);
  EXPECT_EQ(json["exact"], false);
  EXPECT_EQ(json["error_bound"], 0x1p-40);
  answer.status = SweepStatus::None;
  json = AnswerAsJson(answer, Rule::Touch);
  EXPECT_EQ(json["exact"], false);
  EXPECT_TRUE(json["error_bound"].is_null());
}

TEST(AnswerJson, GrowingIsSaidWithItsDeviation) {
  SceneReport scene;
  scene.clearance = 0.25;
  EXPECT_FALSE(SceneAsJson(scene).contains("growing"));
  EXPECT_EQ(SceneAsJson(scene)["question"]["clearance"], 0.25);
  for (const double allowance : {1.5, -1e-4}) {
    scene.allowance = allowance;
    scene.deviation = 0x1p-50;
    EXPECT_EQ(SceneAsJson(scene)["question"]["allowance"], allowance);
    EXPECT_EQ(SceneAsJson(scene)["growing"],
              Json::parse(R"({"exact": false, "deviation": 8.881784197001252e-16})"));
  }
}

TEST(AnswerJson, PatchListsItsPairs) {
  PatchReport patch;
  EXPECT_EQ(JsonText(PatchAsJson(patch), -1), R"({"count":0,"low":null,"high":null,"pairs":[]})");
  patch.pairCount = 5;
  patch.low = {1.0, 2.0, 3.0};
  patch.high = {4.0, 5.0, 6.0};
  patch.listed = {Sample().contact};
  EXPECT_EQ(JsonText(PatchAsJson(patch), -1),
            R"({"count":5,"low":[1.0,2.0,3.0],"high":[4.0,5.0,6.0],"pairs":[{"kind":"edge-edge",)"
            R"("normal":[0.6,0.0,0.8],"moving":{"triangle":7,"point":[1.0,2.0,3.0]},)"
            R"("fixed":{"triangle":9,"point":[1.0,2.0,2.9]},"fixed_body":2}]})");
}

TEST(AnswerJson, BytesThatAreNotUtf8AreReplaced) {
  EXPECT_EQ(JsonText(Json("a\xff"), -1), "\"a\xef\xbf\xbd\"");
}

} // namespace
