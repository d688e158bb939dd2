#include "support/RecordJson.h"

#include "JsonDocuments.h"
#include "ModelSamples.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace gsl_tools;
using namespace model_samples;
using nlohmann::json;

template <class Write>
json Document(const Write& write) {
  std::string text;
  TextPortions out([&](std::string_view portion) { text += portion; });
  write(out);
  EXPECT_EQ(text.back(), '\n');
  json_documents::Keep(text, json_documents::Schema::Model);
  return json::parse(text);
}

json Shown(const gsl_RecordStore& store, std::size_t root) {
  return Document([&](TextPortions& out) { ShowAsJson(store, root, "a.gslr", out); });
}

TEST(RecordJson, EveryKindIsShown) {
  const json document = Shown(EveryKind(), 0);
  EXPECT_EQ(document["schema_version"], 1);
  EXPECT_EQ(document["tool_version"], GSL_VERSION);
  EXPECT_EQ(document["file"], "a.gslr");
  EXPECT_EQ(document["root"], json::parse(R"({"number": 0, "name": "part"})"));
  const json& record = document["record"];
  EXPECT_EQ(record["class"], "my_Part");
  EXPECT_EQ(record["type_id"], "0x00500001");
  EXPECT_EQ(record["identity"], "0123456789abcdef:9");
  const json expected = json::parse(R"([
    {"name": "count", "index": 0, "kind": "integer", "value": -7},
    {"name": "x", "index": 1, "kind": "double", "value": 1.5},
    {"name": "zero", "index": -1, "kind": "double", "value": {"bits": "0x8000000000000000"}},
    {"name": "far", "index": -1, "kind": "double", "value": {"bits": "0xfff0000000000000"}},
    {"name": "none", "index": -1, "kind": "double", "value": {"bits": "0x7ff8000000000000"}},
    {"name": "on", "index": -1, "kind": "boolean", "value": true},
    {"name": "text", "index": -1, "kind": "string", "value": "a \"b\"\n\ufffd"},
    {"name": "end", "index": -1, "kind": "null", "class": "my_Part", "type_id": "0x00500001"},
    {"name": "shared", "index": -1, "kind": "object", "object": 0, "record":
      {"class": null, "type_id": "0x0050FFFF", "identity": null, "fields":
        [{"name": "n", "index": -1, "kind": "integer", "value": 1}]}},
    {"name": "again", "index": -1, "kind": "reference", "object": 0, "class": null,
     "type_id": "0x0050FFFF", "identity": null},
    {"name": "ids", "index": -1, "kind": "record", "record":
      {"class": null, "type_id": "0x0050FFFF", "identity": null, "fields": [],
       "unsigneds": [0, 4294967295]}},
    {"name": "matrix", "index": -1, "kind": "record", "record":
      {"class": null, "type_id": "0x0050FFFF", "identity": null, "fields": [],
       "rows": 2, "columns": 3,
       "doubles": [0.1, {"bits": "0x8000000000000000"}, 1e300, 2, 3, 4]}},
    {"name": "list", "index": -1, "kind": "record", "record":
      {"class": null, "type_id": "0x0050FFFF", "identity": null, "fields": [], "entries": [
        {"kind": "record", "record":
          {"class": "my_Part", "type_id": "0x00500001", "identity": "0123456789abcdef:10",
           "fields": [{"name": "n", "index": -1, "kind": "integer", "value": 2}]}},
        {"kind": "null", "class": "my_Part", "type_id": "0x00500001"}]}}
  ])");
  EXPECT_EQ(record["fields"], expected);
}

TEST(RecordJson, RootsAreListed) {
  const json document = Document([](TextPortions& out) { ListAsJson(EveryKind(), "-", out); });
  EXPECT_EQ(document["records"], 7);
  EXPECT_EQ(document["roots"], json::parse(R"([
    {"number": 0, "name": "part", "class": "my_Part", "type_id": "0x00500001",
     "identity": "0123456789abcdef:9"},
    {"number": 1, "name": null, "class": null, "type_id": "0x0050FFFF", "identity": null}])"));
  EXPECT_EQ(Shown(EveryKind(), 1)["root"], json::parse(R"({"number": 1, "name": null})"));
}

TEST(RecordJson, EveryDoubleReadsBackWithItsBits) {
  std::mt19937_64 random(7);
  gsl_RecordStore store;
  const gsl_RecordIndex root = store.AddRoot(1, {});
  std::vector<double> values = {5e-324, std::numeric_limits<double>::max(), 0.1, 1.0 / 3.0, 1e23};
  for (int i = 0; i < 1000; ++i) {
    const std::uint64_t bits = random();
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    values.push_back(value);
  }
  store.SetDoubles(root, values.data(), values.size(), 1);
  store.Finish();
  const json doubles = Shown(store, 0)["record"]["doubles"];
  ASSERT_EQ(doubles.size(), values.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (NeedsBits(values[i])) {
      EXPECT_EQ(doubles[i]["bits"], BitsText(values[i]));
    } else {
      EXPECT_EQ(BitsText(doubles[i].get<double>()), BitsText(values[i]));
    }
  }
}

TEST(RecordJson, SchemaRefusesOtherDocuments) {
  const json good = Shown(EveryKind(), 0);
  const auto errors = [](const json& document) {
    return json_documents::ErrorsOf({document.dump()}, json_documents::Schema::Model)[0];
  };
  EXPECT_EQ(errors(good), "");
  const json::json_pointer record("/record");
  const json::json_pointer fields = record / "fields";
  for (const json::json_pointer& place :
       {json::json_pointer("/file"), json::json_pointer("/root") / "name", fields,
        record / "identity", fields / 0 / "index", fields / 1 / "value", fields / 8 / "object",
        fields / 11 / "record" / "rows"}) {
    json changed = good;
    changed[place.parent_pointer()].erase(place.back());
    EXPECT_NE(errors(changed), "") << place.to_string();
  }
  json more = good;
  more["record"]["fields"][0]["more"] = 1;
  EXPECT_NE(errors(more), "");
}

} // namespace
