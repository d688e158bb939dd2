#include "JsonDocuments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace {

using json_documents::ErrorsOf;
using Json = nlohmann::json;
using testing::Each;
using testing::Ne;

/// A document of each status, as the description of the program shows them.
Json Contact() {
  return Json::parse(R"({
    "schema_version": 2, "tool_version": "0.1.0",
    "question": {"allowance": 0.0, "pose": null, "offset": [0.0, 0.0, 0.0], "max_distance": null,
                 "one_sided": false, "rule": "touch", "clearance": 0.0, "last": false},
    "status": "contact", "travel": 30.0, "exact": true, "error_bound": 0.0, "direction": [0.0, 0.0, -1.0],
    "kind": "vertex-face", "normal": [0.0, 0.0, 1.0],
    "moving": {"file": "a", "triangles": 9, "skipped": 0, "left_out": 0, "triangle": 1,
               "point": [1.0, 2.0, 3.0]},
    "fixed": {"file": "-", "triangles": 9, "skipped": 0, "left_out": 0, "triangle": 0,
              "point": [1.0, 2.0, 3.0]},
    "fixed_body": 0,
    "fixed_bodies": [{"file": "-", "triangles": 9, "skipped": 0, "left_out": 0}],
    "warnings": []})");
}

Json None() {
  Json json = Contact();
  json["status"] = "none";
  for (const char* key : {"travel", "error_bound", "kind", "normal", "fixed_body"})
    json[key] = nullptr;
  for (const char* body : {"moving", "fixed"}) {
    json[body]["triangle"] = nullptr;
    json[body]["point"] = nullptr;
  }
  return json;
}

Json Start() {
  Json json = Contact();
  json["status"] = "start";
  json["travel"] = 0.0;
  json["kind"] = "overlap";
  json["normal"] = nullptr;
  return json;
}

/// A contact with all its pairs.
Json Patch() {
  Json json = Contact();
  json["patch"] = Json::parse(R"({
    "count": 7, "low": [1.0, 2.0, 3.0], "high": [1.0, 2.5, 3.0],
    "pairs": [{"kind": "vertex-face", "normal": [0.0, 0.0, 1.0],
               "moving": {"triangle": 1, "point": [1.0, 2.0, 3.0]},
               "fixed": {"triangle": 0, "point": [1.0, 2.0, 3.0]}, "fixed_body": 0}]})");
  return json;
}

/// The last contact, where the greatest distance cuts it.
Json CutLast() {
  Json json = Contact();
  json["question"]["last"] = true;
  json["kind"] = "overlap";
  json["normal"] = nullptr;
  return json;
}

/// A contact of solids.
Json Solids() {
  Json json = Contact();
  json["question"]["rule"] = "solid";
  json["overlaps_at_start"] = false;
  return json;
}

/// A solid of the moving body inside the other.
Json Inside() {
  Json json = Start();
  json["question"]["rule"] = "solid";
  json["kind"] = "inside";
  json["overlaps_at_start"] = true;
  json["fixed"]["triangle"] = nullptr;
  json["fixed"]["point"] = nullptr;
  return json;
}

/// A travel up to a clearance.
Json Near() {
  Json json = Contact();
  json["question"]["clearance"] = 0.25;
  json["exact"] = false;
  json["error_bound"] = 2.8e-14;
  return json;
}

Json NeverNear() {
  Json json = None();
  json["question"]["clearance"] = 0.25;
  json["exact"] = false;
  return json;
}

/// Makes the answer one for a grown body.
Json Grown(Json json) {
  json["question"]["allowance"] = -1e-4;
  json["growing"] = {{"exact", false}, {"deviation", 0.0}};
  return json;
}

/// A matrix as the question shows it.
Json Pose(std::size_t rows, std::size_t columns) {
  return Json(std::vector<std::vector<double>>(rows, std::vector<double>(columns, 0.5)));
}

/// An answer to a line, with a contact or without.
Json Line(Json answer) {
  for (const char* key : {"schema_version", "tool_version", "question", "fixed_bodies"})
    answer.erase(key);
  for (const char* body : {"moving", "fixed"}) {
    for (const char* key : {"file", "triangles", "skipped", "left_out"})
      answer[body].erase(key);
  }
  answer["line"] = 1;
  return answer;
}

/// An answer among those of many directions.
Json Member(const Json& answer) {
  Json json = Line(answer);
  json.erase("line");
  json.erase("warnings");
  return json;
}

Json Sphere() {
  Json json = Json::parse(R"({
    "schema_version": 2, "tool_version": "0.1.0",
    "question": {"allowance": 0.0, "pose": null, "offset": [0.0, 0.0, 0.0], "max_distance": null,
                 "one_sided": false, "rule": "not-leaving", "clearance": 0.0, "last": true},
    "directions": 2, "free": 1, "contact": 1, "start": 0, "least": 0, "greatest": 0,
    "moving": {"file": "a", "triangles": 9, "skipped": 0},
    "fixed_bodies": [{"file": "-", "triangles": 9, "skipped": 0}],
    "warnings": []})");
  json["answers"] = {Member(Contact()), Member(None())};
  return json;
}

Json SphereOfSolids() {
  Json json = Sphere();
  json["question"]["rule"] = "solid";
  json["question"]["last"] = false;
  json["answers"] = {Member(Solids()), Member(Inside())};
  return json;
}

Json SphereOfClearance() {
  Json json = Sphere();
  json["question"]["rule"] = "touch";
  json["question"]["last"] = false;
  json["question"]["clearance"] = 0.25;
  json["answers"] = {Member(Near()), Member(NeverNear())};
  return json;
}

const Json errorLine = Json::parse(R"({"line": 3, "error": "a direction must be X,Y,Z"})");

std::vector<std::string> Texts(const std::vector<Json>& documents) {
  std::vector<std::string> texts;
  for (const Json& document : documents)
    texts.push_back(document.dump());
  return texts;
}

void ExpectInvalid(const std::vector<Json>& documents) {
  const std::vector<std::string> errors = ErrorsOf(Texts(documents));
  for (std::size_t k = 0; k < documents.size(); ++k)
    EXPECT_NE(errors[k], "") << documents[k];
}

/// A document with another value at a place such as "/moving/file".
Json With(Json json, const char* place, const Json& value) {
  json[Json::json_pointer(place)] = value;
  return json;
}

Json Without(Json json, const char* place) {
  const Json::json_pointer pointer(place);
  json[pointer.parent_pointer()].erase(pointer.back());
  return json;
}

TEST(JsonDocuments, OutputOfTheProgramIsValid) {
  const std::vector<Json> documents = {Contact(),
                                       None(),
                                       Start(),
                                       With(Contact(), "/normal", nullptr),
                                       With(Contact(), "/question/max_distance", 0.0),
                                       With(Contact(), "/question/pose", Pose(3, 4)),
                                       With(Contact(), "/question/rule", "not-leaving"),
                                       Patch(),
                                       CutLast(),
                                       Line(CutLast()),
                                       Solids(),
                                       Inside(),
                                       Line(Solids()),
                                       Line(Inside()),
                                       SphereOfSolids(),
                                       Near(),
                                       NeverNear(),
                                       Line(Near()),
                                       SphereOfClearance(),
                                       Grown(Contact()),
                                       Grown(Near()),
                                       Grown(Solids()),
                                       Grown(Sphere()),
                                       Line(Grown(None())),
                                       With(Contact(), "/warnings", Json::array({"one", "two"})),
                                       Line(Contact()),
                                       Line(None()),
                                       Line(Start()),
                                       errorLine,
                                       Sphere(),
                                       With(Sphere(), "/least", nullptr)};
  EXPECT_THAT(ErrorsOf(Texts(documents)), Each(""));
}

TEST(JsonDocuments, InvalidJsonIsNoticed) {
  const std::string text = Contact().dump();
  const std::size_t number = text.find("30.0");
  ASSERT_NE(number, text.npos);
  EXPECT_THAT(ErrorsOf({text.substr(1), text + "{}", std::string(text).replace(number, 4, "NaN")}),
              Each(Ne("")));
}

TEST(JsonDocuments, KeysTooFewOrTooManyAreNoticed) {
  ExpectInvalid({Without(Contact(), "/normal"),
                 Without(Contact(), "/question"),
                 Without(Contact(), "/question/one_sided"),
                 Without(Contact(), "/question/pose"),
                 Without(Contact(), "/question/rule"),
                 Without(Contact(), "/question/last"),
                 Without(Patch(), "/patch/low"),
                 Without(Patch(), "/patch/pairs/0/fixed_body"),
                 With(Patch(), "/patch/pairs/0/travel", 1.0),
                 With(Line(Contact()), "/patch", Patch()["patch"]),
                 Without(Contact(), "/tool_version"),
                 Without(Contact(), "/fixed/left_out"),
                 With(Contact(), "/threads", 2),
                 With(Contact(), "/question/threads", 2),
                 With(Contact(), "/moving/name", "a"),
                 With(Contact(), "/line", 1),
                 Without(Line(Contact()), "/line"),
                 Without(Line(Contact()), "/warnings"),
                 Without(Line(None()), "/status"),
                 With(Line(Contact()), "/moving/file", "a"),
                 With(errorLine, "/status", "none"),
                 Without(errorLine, "/line"),
                 Without(Sphere(), "/answers"),
                 Without(Sphere(), "/least"),
                 Without(Sphere(), "/moving"),
                 With(Sphere(), "/status", "none"),
                 With(Sphere(), "/moving/left_out", 0),
                 With(Sphere(), "/answers/1/line", 1),
                 Without(Contact(), "/exact"),
                 Without(Contact(), "/error_bound"),
                 Without(Contact(), "/question/allowance"),
                 Without(Contact(), "/question/clearance"),
                 Without(Grown(Contact()), "/growing"),
                 Without(Grown(Contact()), "/growing/exact"),
                 Without(Grown(Contact()), "/growing/deviation"),
                 With(Grown(Contact()), "/growing/by", 1.0),
                 Without(Grown(Sphere()), "/growing"),
                 Without(Solids(), "/overlaps_at_start"),
                 With(Contact(), "/overlaps_at_start", false),
                 Without(Line(Inside()), "/overlaps_at_start"),
                 Without(SphereOfSolids(), "/answers/0/overlaps_at_start"),
                 With(Sphere(), "/answers/0/overlaps_at_start", false)});
}

TEST(JsonDocuments, WrongValuesAreNoticed) {
  ExpectInvalid({With(Contact(), "/schema_version", 1),
                 With(Contact(), "/status", "touch"),
                 With(Contact(), "/travel", "30"),
                 With(Contact(), "/travel", -1.0),
                 With(Contact(), "/kind", "face-face"),
                 With(Contact(), "/moving/file", ""),
                 With(Contact(), "/moving/triangle", 1.5),
                 With(Contact(), "/fixed/skipped", -1),
                 With(Contact(), "/direction", Json::array({0.0, 0.0})),
                 With(Contact(), "/direction", Json::array({0.0, 0.0, -2.0})),
                 With(Contact(), "/normal", Json::array({0.0, 0.0, 1.0, 0.0})),
                 With(Contact(), "/question/max_distance", -1.0),
                 With(Contact(), "/question/rule", "leaving"),
                 With(Contact(), "/question/last", 1),
                 With(Contact(), "/exact", 1),
                 With(Near(), "/error_bound", -1.0),
                 With(Near(), "/question/clearance", -0.25),
                 With(Near(), "/question/clearance", nullptr),
                 With(Grown(Contact()), "/question/allowance", nullptr),
                 With(Grown(Contact()), "/growing/deviation", -1.0),
                 With(Grown(Contact()), "/growing/exact", true),
                 With(Solids(), "/overlaps_at_start", nullptr),
                 With(Patch(), "/patch/count", -1),
                 With(Patch(), "/patch/high", Json::array({1.0, 2.0})),
                 With(Patch(), "/patch/pairs/0/kind", nullptr),
                 With(Patch(), "/patch/pairs/0/moving/point", nullptr),
                 With(Contact(), "/question/pose", Pose(4, 4)),
                 With(Contact(), "/question/pose", Pose(3, 3)),
                 With(Contact(), "/question/pose", Json::array({1.0, 0.0, 0.0})),
                 With(Contact(), "/warnings", Json::array({"two\nlines"})),
                 With(Line(Contact()), "/line", 0),
                 With(errorLine, "/error", "two\nlines"),
                 With(Sphere(), "/answers", Json::array()),
                 With(Sphere(), "/free", -1),
                 With(Sphere(), "/directions", 0),
                 With(Sphere(), "/greatest", -1)});
}

TEST(JsonDocuments, ValuesThatContradictEachOtherAreNoticed) {
  const Json up = Json::array({0.0, 0.0, 1.0});
  ExpectInvalid({With(Contact(), "/travel", nullptr),
                 With(Contact(), "/kind", nullptr),
                 With(Contact(), "/kind", "overlap"),
                 With(Contact(), "/kind", "vertex-edge"),
                 With(Contact(), "/moving/point", nullptr),
                 With(Contact(), "/fixed/triangle", nullptr),
                 With(None(), "/travel", 0.0),
                 With(None(), "/kind", "edge-edge"),
                 With(None(), "/normal", up),
                 With(None(), "/fixed/triangle", 0),
                 With(Start(), "/travel", 1.0),
                 With(Line(Contact()), "/travel", nullptr),
                 With(Line(None()), "/fixed_body", 0),
                 With(Sphere(), "/answers/0/moving/point", nullptr),
                 With(Sphere(), "/answers/1/travel", 1.0),
                 With(Start(), "/normal", up),
                 With(Contact(), "/exact", false),
                 With(Contact(), "/error_bound", 1e-9),
                 With(Contact(), "/error_bound", nullptr),
                 With(None(), "/error_bound", 0.0),
                 With(Near(), "/exact", true),
                 With(Near(), "/error_bound", 0.0),
                 With(Near(), "/error_bound", nullptr),
                 With(Near(), "/question/clearance", 0.0),
                 With(Near(), "/question/rule", "not-leaving"),
                 With(Near(), "/question/last", true),
                 With(Near(), "/patch", Patch()["patch"]),
                 With(Line(Near()), "/error_bound", nullptr),
                 With(SphereOfClearance(), "/answers/1/exact", true),
                 With(SphereOfClearance(), "/question/clearance", 0.0),
                 With(SphereOfClearance(), "/question/rule", "not-leaving"),
                 With(Grown(Contact()), "/question/allowance", 0.0),
                 With(Grown(Sphere()), "/question/allowance", 0.0),
                 With(Solids(), "/overlaps_at_start", true),
                 With(Solids(), "/patch", Patch()["patch"]),
                 With(Solids(), "/question/one_sided", true),
                 With(Solids(), "/question/last", true),
                 With(Solids(), "/kind", "inside"),
                 With(Contact(), "/kind", "inside"),
                 With(Patch(), "/patch/pairs/0/kind", "inside"),
                 With(Inside(), "/overlaps_at_start", false),
                 With(Inside(), "/moving/triangle", nullptr),
                 With(Inside(), "/fixed", Start()["fixed"]),
                 With(Solids(), "/fixed/triangle", nullptr),
                 With(SphereOfSolids(), "/answers/0/overlaps_at_start", true)});
}

} // namespace
