#include "ViewerPage.h"

#include "OutputFile.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstring>
#include <limits>
#include <regex>
#include <string>
#include <vector>

namespace {

using gsl_arithmetic::Coord3;
using gsl_sweep::ContactKind;
using gsl_sweep::SweepStatus;
using gsl_sweep::TriangleView;
using gsl_view::ViewScene;
using Json = nlohmann::json;

const std::vector<double> kMoving = {0, 0, 5, 1, 0, 5,   0, 1, 5.25, //
                                     1, 0, 5, 1, 1, 5.5, 0, 1, 5.25};
const std::vector<double> kFixed = {-2, -2, 0, 4, -2, 0, -2, 4, 0};
const std::vector<double> kOther = {9, 9, 9, 8, 9, 9, 9, 8, 9};

TriangleView ViewOf(const std::vector<double>& numbers) {
  TriangleView view;
  view.vertices = numbers.data();
  view.vertexCount = numbers.size() / 3;
  view.triangleCount = numbers.size() / 9;
  return view;
}

/// A corner of the second triangle of the moving body meets the second fixed body.
ViewScene Sample() {
  ViewScene scene;
  scene.moving = {"bolt.stl", ViewOf(kMoving)};
  scene.fixed = {{"other.stl", ViewOf(kOther)}, {"plate.stl", ViewOf(kFixed)}};
  scene.question.direction = {0.0, 0.0, -2.0};
  scene.answer.status = SweepStatus::Contact;
  scene.answer.unitDirection = {0.0, 0.0, -1.0};
  scene.answer.contact.travel = 0.1 + 0.2;
  scene.answer.contact.kind = ContactKind::VertexFace;
  scene.answer.contact.fixedBody = 1;
  scene.answer.contact.movingTriangle = 1;
  scene.answer.contact.movingPoint = {1.0, 0.0, 5.0};
  scene.answer.contact.fixedPoint = {1.0, 0.0, 0.0};
  scene.answer.contact.hasNormal = true;
  scene.answer.contact.normal = {0.0, 0.0, 1.0};
  scene.toolVersion = "1.2.3";
  return scene;
}

std::string PageOf(const ViewScene& scene) {
  std::string page;
  gsl_view::MakeViewerPage(scene, [&](std::string_view part) { page += part; });
  return page;
}

/// Returns what is between the tags of a block of data.
std::string Block(const std::string& page, const std::string& id) {
  const std::string open = "<script type=\"text/plain\" id=\"" + id + "\">\n";
  const std::size_t begin = page.find(open);
  if (begin == std::string::npos || page.find(open, begin + 1) != std::string::npos) {
    ADD_FAILURE() << id << " is not there once";
    return {};
  }
  const std::size_t from = begin + open.size();
  return page.substr(from, page.find("</script>", from) - from);
}

Json SceneOf(const std::string& page) {
  return Json::parse(Block(page, "scene"));
}

/// Returns numbers, decoded by a table.
template <class Number>
std::vector<Number> NumbersOf(const std::string& page, const std::string& id) {
  const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  unsigned bits = 0;
  int count = 0;
  for (const char c : Block(page, id)) {
    if (digits.find(c) == std::string::npos) continue;
    bits = bits << 6 | static_cast<unsigned>(digits.find(c));
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 255u);
  }
  std::vector<Number> numbers(bytes.size() / sizeof(Number));
  if (!numbers.empty()) std::memcpy(numbers.data(), bytes.data(), bytes.size());
  return numbers;
}

/// Checks that the corners in the page are those of the body, up to single precision.
void ExpectSurface(const std::string& page, const Json& body, const std::vector<double>& corners) {
  const std::string id = body.at("id");
  const auto vertices = NumbersOf<float>(page, id + "-vertices");
  const auto triangles = NumbersOf<std::uint32_t>(page, id + "-triangles");
  ASSERT_EQ(3 * triangles.size(), corners.size());
  const double scale = body.at("scale");
  for (std::size_t k = 0; k < corners.size(); ++k) {
    const double drawn = double{vertices.at(3 * triangles[k / 3] + k % 3)};
    EXPECT_NEAR(body.at("centre")[k % 3].get<double>() + scale * drawn, corners[k],
                scale * 0x1p-24);
  }
}

TEST(ViewerPage, HoldsTheSurfacesOfAllBodies) {
  const std::string page = PageOf(Sample());
  const Json scene = SceneOf(page);
  ExpectSurface(page, scene.at("moving"), kMoving);
  ASSERT_EQ(scene.at("fixed").size(), 2u);
  ExpectSurface(page, scene.at("fixed")[0], kOther);
  ExpectSurface(page, scene.at("fixed")[1], kFixed);
  EXPECT_EQ(NumbersOf<float>(page, "moving-vertices").size(), 12u); // corners are shared
}

TEST(ViewerPage, HoldsTheNumbersOfTheAnswer) {
  const Json scene = SceneOf(PageOf(Sample()));
  const Json& answer = scene.at("answer");
  EXPECT_EQ(scene.at("version"), "1.2.3");
  EXPECT_EQ(answer.at("status"), "contact");
  EXPECT_EQ(answer.at("travel").get<double>(), 0.1 + 0.2); // the same double
  EXPECT_EQ(answer.at("exact"), true);
  EXPECT_EQ(answer.at("kind"), "vertex-face");
  EXPECT_EQ(answer.at("direction"), Json({0.0, 0.0, -1.0}));
  EXPECT_EQ(answer.at("normal"), Json({0.0, 0.0, 1.0}));
  EXPECT_EQ(answer.at("moving"), Json({{"triangle", 1}, {"point", {1.0, 0.0, 5.0}}}));
  EXPECT_EQ(answer.at("fixed"), Json({{"triangle", 0}, {"point", {1.0, 0.0, 0.0}}}));
  EXPECT_EQ(answer.at("fixed_body"), 1);
  EXPECT_EQ(scene.at("moving").at("name"), "bolt.stl");
  EXPECT_TRUE(scene.at("sphere").is_null());
  EXPECT_TRUE(scene.at("patch").is_null());
  EXPECT_TRUE(scene.at("question").at("max_distance").is_null());
  EXPECT_EQ(scene.at("question").at("rule"), "touch");
}

TEST(ViewerPage, WithoutAContactNothingIsTouched) {
  ViewScene shown = Sample();
  shown.answer.status = SweepStatus::None;
  shown.question.maxDistance = 12.5;
  const Json scene = SceneOf(PageOf(shown));
  for (const char* const key :
       {"travel", "kind", "normal", "moving", "fixed", "fixed_body", "error_bound"})
    EXPECT_TRUE(scene.at("answer").at(key).is_null()) << key;
  EXPECT_EQ(scene.at("answer").at("status"), "none");
  EXPECT_EQ(scene.at("question").at("max_distance"), 12.5);
}

TEST(ViewerPage, TheBodyAroundTheOtherHasNoPlace) {
  ViewScene shown = Sample();
  shown.answer.status = SweepStatus::Start;
  shown.answer.contact.kind = ContactKind::Inside;
  shown.answer.contact.hasNormal = false;
  for (const bool movingIsInside : {true, false}) {
    shown.answer.contact.movingIsInside = movingIsInside;
    const Json scene = SceneOf(PageOf(shown));
    EXPECT_EQ(scene.at("answer").at("moving").is_null(), !movingIsInside);
    EXPECT_EQ(scene.at("answer").at("fixed").is_null(), movingIsInside);
    EXPECT_TRUE(scene.at("answer").at("normal").is_null());
  }
}

TEST(ViewerPage, SaysWhatIsAskedAndWhatIsNotExact) {
  ViewScene shown = Sample();
  shown.question.clearance = 2.5;
  shown.question.oneSided = true;
  shown.question.rule = gsl_sweep::Rule::NotLeaving;
  shown.last = true;
  shown.answer.isExact = false;
  shown.answer.errorBound = 0x1p-40;
  const Json scene = SceneOf(PageOf(shown));
  EXPECT_EQ(scene.at("answer").at("exact"), false);
  EXPECT_EQ(scene.at("answer").at("error_bound"), 0x1p-40);
  EXPECT_EQ(scene.at("question"), Json({{"max_distance", nullptr},
                                        {"one_sided", true},
                                        {"rule", "not-leaving"},
                                        {"clearance", 2.5},
                                        {"last", true}}));
}

TEST(ViewerPage, MarksThePatchOnEachBody) {
  ViewScene shown = Sample();
  shown.pairCount = 7;
  gsl_sweep::Contact pair = shown.answer.contact;
  shown.patch = {pair, pair};
  pair.movingTriangle = 0;
  pair.fixedBody = 0;
  pair.fixedPoint = {9.0, 9.0, 9.0};
  shown.patch.push_back(pair);
  const std::string page = PageOf(shown);
  const Json scene = SceneOf(page);
  EXPECT_EQ(scene.at("patch"), Json({{"count", 7}, {"listed", 3}}));
  EXPECT_EQ(NumbersOf<std::uint32_t>(page, "moving-patch"), (std::vector<std::uint32_t>{0, 1}));
  EXPECT_EQ(NumbersOf<std::uint32_t>(page, "fixed-0-patch"), (std::vector<std::uint32_t>{0}));
  EXPECT_EQ(NumbersOf<std::uint32_t>(page, "fixed-1-patch"), (std::vector<std::uint32_t>{0}));
  // (9, 9, 9) lies half a side from the centre (8.5, 8.5, 9); the scale is 1.
  EXPECT_EQ(NumbersOf<float>(page, "fixed-0-points"), (std::vector<float>{0.5f, 0.5f, 0.0f}));
  EXPECT_EQ(NumbersOf<float>(page, "fixed-1-points").size(), 6u);
  EXPECT_TRUE(NumbersOf<float>(page, "moving-points").empty());
}

TEST(ViewerPage, NumbersOfTrianglesSkipThoseThatAreNotDrawn) {
  std::vector<double> broken = kMoving;
  broken[4] = std::numeric_limits<double>::quiet_NaN();
  ViewScene shown = Sample();
  shown.moving.triangles = ViewOf(broken);
  shown.patch = {shown.answer.contact};
  shown.pairCount = 1;
  const std::string page = PageOf(shown);
  const Json scene = SceneOf(page);
  EXPECT_EQ(scene.at("moving").at("triangles"), 2);
  EXPECT_EQ(scene.at("moving").at("drawn"), 1);
  EXPECT_EQ(scene.at("answer").at("moving").at("triangle"), 1); // as the file counts
  EXPECT_EQ(NumbersOf<std::uint32_t>(page, "moving-left-out"), (std::vector<std::uint32_t>{0}));
  EXPECT_TRUE(NumbersOf<std::uint32_t>(page, "fixed-1-left-out").empty());
  EXPECT_EQ(NumbersOf<std::uint32_t>(page, "moving-patch"), (std::vector<std::uint32_t>{0}));
}

/// Three answers, of which the second is that of the sample.
std::vector<gsl_sweep::Answer> Answers() {
  std::vector<gsl_sweep::Answer> answers(3, Sample().answer);
  answers[0].status = SweepStatus::None;
  answers[0].unitDirection = {1.0, 0.0, 0.0};
  answers[2].status = SweepStatus::Start;
  answers[2].unitDirection = {0.0, 0.6, 0.8};
  answers[2].contact.travel = 0.0;
  return answers;
}

std::string SpherePage(const std::vector<gsl_sweep::Answer>& answers) {
  std::string page;
  gsl_view::MakeSpherePage(Sample(), answers, [&](std::string_view part) { page += part; });
  return page;
}

TEST(ViewerPage, HoldsTheAnswersOfASphere) {
  const std::string page = SpherePage(Answers());
  const Json scene = SceneOf(page);
  const Json& sphere = scene.at("sphere");
  EXPECT_EQ(sphere.at("free"), 1);
  EXPECT_EQ(sphere.at("contact"), 1);
  EXPECT_EQ(sphere.at("start"), 1);
  EXPECT_EQ(sphere.at("least"), 1);
  EXPECT_EQ(sphere.at("greatest"), 1);
  EXPECT_EQ(sphere.at("shown"), 1);
  EXPECT_EQ(sphere.at("statuses"), Json({"none", "contact", "start"}));
  EXPECT_EQ(sphere.at("kinds")[3], "vertex-face");
  EXPECT_EQ(sphere.at("kinds").size(), 8u);
  EXPECT_EQ(sphere.at("colours").size(), 9u);
  EXPECT_EQ(sphere.at("colours")[0], "#01336e"); // 0.004, 0.2 and 0.431 of 255
  EXPECT_EQ(sphere.at("free_colours")[0], "#ffffff");
  EXPECT_EQ(sphere.at("scale").at("low").get<double>(), 0.1 + 0.2);
  EXPECT_EQ(sphere.at("scale").at("logarithmic"), false);
  EXPECT_EQ(NumbersOf<double>(page, "sphere-directions"),
            (std::vector<double>{1.0, 0.0, 0.0, 0.0, 0.0, -1.0, 0.0, 0.6, 0.8}));
  EXPECT_EQ(NumbersOf<std::uint32_t>(page, "sphere-codes").size(), 3u);
  const auto contacts = NumbersOf<double>(page, "sphere-contacts");
  ASSERT_EQ(contacts.size(), 22u);
  EXPECT_EQ(contacts[0], 0.1 + 0.2); // the same double
  EXPECT_EQ(NumbersOf<std::uint32_t>(page, "sphere-triangles"),
            (std::vector<std::uint32_t>{1, 0, 1, 1, 0, 1}));
  EXPECT_EQ(scene.at("answer").at("travel").get<double>(), 0.1 + 0.2);
}

TEST(ViewerPage, ASphereTakesFewBytesForEachAnswer) {
  const std::size_t count = 3000;
  std::vector<gsl_sweep::Answer> answers(count, Answers()[1]);
  EXPECT_EQ(SpherePage(answers), SpherePage(answers));
  // A direction and a code take 28 bytes, a contact 100; 4/3 for base64.
  const double more =
      static_cast<double>(SpherePage(answers).size() - SpherePage({answers[0]}).size());
  EXPECT_NEAR(more, count * 128.0 * 4.0 / 3.0, 0.01 * count * 128.0);
}

TEST(ViewerPage, NamesCannotEndTheirBlock) {
  ViewScene shown = Sample();
  const std::string name = "a</script><!--<script>\"'&\\\xc3\xa9.stl";
  shown.moving.name = name;
  shown.fixed[0].name = "not UTF-8: \xff";
  const std::string plain = PageOf(Sample());
  const std::string page = PageOf(shown);
  const Json scene = SceneOf(page);
  EXPECT_EQ(scene.at("moving").at("name"), name);
  EXPECT_EQ(scene.at("fixed")[0].at("name"), "not UTF-8: \xef\xbf\xbd");
  const auto count = [](const std::string& text, const std::string& word) {
    std::size_t found = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1))
      ++found;
    return found;
  };
  for (const char* const word : {"</script", "<script", "<!--"})
    EXPECT_EQ(count(page, word), count(plain, word)) << word;
  EXPECT_EQ(count(plain, "<!--"), 0u);
}

TEST(ViewerPage, ForbidsEveryConnectionAndNamesNone) {
  const std::string page = PageOf(Sample());
  const std::regex policy(
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
      "script-src 'sha256-[A-Za-z0-9+/]{43}='; style-src 'sha256-[A-Za-z0-9+/]{43}='; "
      "base-uri 'none'; form-action 'none'\">");
  EXPECT_TRUE(std::regex_search(page.substr(0, 1000), policy));
  EXPECT_EQ(page.find("http:"), std::string::npos);
  EXPECT_EQ(page.find("https:"), std::string::npos);
  EXPECT_EQ(page.find("src="), std::string::npos);
  EXPECT_EQ(page.find("href="), std::string::npos);
}

TEST(ViewerPage, HasTheLicenceOfWhatItHolds) {
  const std::string page = PageOf(Sample());
  EXPECT_NE(page.find("three.js authors"), std::string::npos);
  EXPECT_NE(page.find("Permission is hereby granted, free of charge"), std::string::npos);
}

TEST(ViewerPage, IsTheSameBytesTwiceAndNotMuchMoreThanItsData) {
  const std::string page = PageOf(Sample());
  EXPECT_EQ(PageOf(Sample()), page);
  const std::size_t side = 300;
  std::vector<double> grid;
  for (std::size_t k = 0; k < side * side; ++k) {
    const double x = static_cast<double>(k % side), y = static_cast<double>(k / side);
    const double square[] = {x,     y, 0, x + 1, y,     0, x, y + 1, 0, //
                             x + 1, y, 0, x + 1, y + 1, 0, x, y + 1, 0};
    grid.insert(grid.end(), square, square + 18);
  }
  ViewScene shown = Sample();
  shown.moving.triangles = ViewOf(grid);
  // 12 bytes for each triangle and for each vertex, of which there are half as many; 4/3 for
  // base64.
  const double triangles = 2.0 * static_cast<double>(side * side);
  const double expected = triangles * 1.5 * 12.0 * 4.0 / 3.0;
  EXPECT_NEAR(static_cast<double>(PageOf(shown).size() - page.size()), expected, 0.02 * expected);
}

TEST(ViewerPage, AFileAppearsWholeAndIsNotReplacedUnasked) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("page.html");
  gsl_view::WriteViewerPage(path, Sample(), false);
  EXPECT_EQ(BytesOf(path), PageOf(Sample()));
  ViewScene other = Sample();
  other.toolVersion = "9";
  EXPECT_THROW(gsl_view::WriteViewerPage(path, other, false), gsl_mesh::OutputError);
  EXPECT_EQ(BytesOf(path), PageOf(Sample()));
  gsl_view::WriteViewerPage(path, other, true);
  EXPECT_EQ(BytesOf(path), PageOf(other));
  EXPECT_THROW(gsl_view::WriteSpherePage(path, other, Answers(), false), gsl_mesh::OutputError);
  gsl_view::WriteSpherePage(path, Sample(), Answers(), true);
  EXPECT_EQ(BytesOf(path), SpherePage(Answers()));
}

} // namespace
