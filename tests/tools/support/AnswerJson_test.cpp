#include "support/AnswerJson.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace gsl_tools;
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
  EXPECT_EQ(JsonText(AnswerAsJson(Sample()), -1),
            R"({"status":"contact","travel":0.1,"direction":[0.0,0.0,-1.0],"kind":"edge-edge",)"
            R"("normal":[0.6,0.0,0.8],"moving":{"triangle":7,"point":[1.0,2.0,3.0]},)"
            R"("fixed":{"triangle":9,"point":[1.0,2.0,2.9]},"fixed_body":2})");
}

TEST(AnswerJson, IsNullWhereThereIsNoContact) {
  Answer answer = Sample();
  answer.status = SweepStatus::None;
  EXPECT_EQ(JsonText(AnswerAsJson(answer), -1),
            R"({"status":"none","travel":null,"direction":[0.0,0.0,-1.0],"kind":null,)"
            R"("normal":null,"moving":{"triangle":null,"point":null},)"
            R"("fixed":{"triangle":null,"point":null},"fixed_body":null})");
}

TEST(AnswerJson, StartIsNamed) {
  Answer answer = Sample();
  answer.status = SweepStatus::Start;
  answer.contact.hasNormal = false;
  const Json json = AnswerAsJson(answer);
  EXPECT_EQ(json["status"], "start");
  EXPECT_TRUE(json["normal"].is_null());
  EXPECT_EQ(json["fixed"]["triangle"], 9);
}

TEST(AnswerJson, DocumentsBeginAlike) {
  SceneReport scene;
  scene.toolVersion = "1.2.3";
  scene.maxDistance = 4.5;
  EXPECT_EQ(JsonText(SceneAsJson(scene), -1),
            R"({"schema_version":2,"tool_version":"1.2.3","question":{"pose":null,)"
            R"("offset":[0.0,0.0,0.0],"max_distance":4.5,"one_sided":false,"rule":"touch",)"
            R"("last":false}})");
  scene.rule = gsl_sweep::Rule::NotLeaving;
  scene.last = true;
  EXPECT_EQ(SceneAsJson(scene)["question"]["rule"], "not-leaving");
  EXPECT_EQ(SceneAsJson(scene)["question"]["last"], true);
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
