#include "TitleBlock.h"

#include "PageFiles.h"
#include "ViewSamples.h"

using namespace gsl_view;
using namespace view_samples;
using namespace page_files;
using gsl_sweep::ContactKind;
using gsl_sweep::SweepStatus;

namespace {

std::string BlockOf(const ViewScene& scene, const std::string& note = "") {
  Page page(PictureFormat::Pdf, 297.0, 60.0);
  DrawTitleBlock(page, scene, {10, 10, 287, 40}, note);
  return TextOf(page.Finish());
}

void ExpectHas(const std::string& text, const std::string& words) {
  EXPECT_NE(text.find(words), std::string::npos) << words << " is not in:\n" << text;
}

} // namespace

TEST(TitleBlock, HeadlineSaysWhatWasFound) {
  ViewScene scene;
  scene.answer.status = SweepStatus::Contact;
  scene.answer.contact.travel = 10.090817356205852;
  EXPECT_EQ(HeadlineOf(scene), "Contact after a travel of 10.0908");
  scene.last = true;
  EXPECT_EQ(HeadlineOf(scene), "Last contact after a travel of 10.0908");
  scene.answer.status = SweepStatus::Start;
  EXPECT_EQ(HeadlineOf(scene), "Last contact at the start");
  scene.last = false;
  EXPECT_EQ(HeadlineOf(scene), "In contact from the start");
  scene.question.clearance = 0.5;
  EXPECT_EQ(HeadlineOf(scene), "Within 0.5 from the start");
  scene.answer.status = SweepStatus::Contact;
  EXPECT_EQ(HeadlineOf(scene), "Within 0.5 after a travel of 10.0908");
  scene.answer.status = SweepStatus::None;
  EXPECT_EQ(HeadlineOf(scene), "Not within 0.5");
  scene.question = {};
  EXPECT_EQ(HeadlineOf(scene), "No contact");
  scene.question.maxDistance = 20.0;
  EXPECT_EQ(HeadlineOf(scene), "No contact up to a travel of 20");
}

TEST(TitleBlock, EveryKindHasWords) {
  const struct {
    ContactKind kind;
    const char* words;
  } rows[] = {{ContactKind::VertexVertex, "vertex on vertex"},
              {ContactKind::VertexEdge, "vertex on edge"},
              {ContactKind::EdgeVertex, "edge on vertex"},
              {ContactKind::VertexFace, "vertex on face"},
              {ContactKind::FaceVertex, "face on vertex"},
              {ContactKind::EdgeEdge, "edge on edge"},
              {ContactKind::Overlap, "they share a point"},
              {ContactKind::Inside, "fixed inside moving"}};
  ViewScene scene;
  EXPECT_EQ(KindInWords(scene), "none");
  scene.answer.status = SweepStatus::Start;
  for (const auto& row : rows) {
    scene.answer.contact.kind = row.kind;
    EXPECT_EQ(KindInWords(scene), row.words);
  }
  scene.answer.contact.movingIsInside = true;
  EXPECT_EQ(KindInWords(scene), "moving inside fixed");
  scene.answer.contact.kind = ContactKind::VertexFace;
  scene.question.clearance = 0.5;
  EXPECT_EQ(KindInWords(scene), "vertex to face");
}

TEST(TitleBlock, NamesFilesDirectionTravelKindAndVersion) {
  const std::string text = BlockOf(FallingBox().scene, "a note");
  for (const char* words :
       {"moving.stl, 12 triangles", "fixed.stl, 12 triangles", "(0, 0, -1)", "travel",
        "vertex on face", "first contact", "gsl-sweep 1.2.3", "a note"})
    ExpectHas(text, words);
}

TEST(TitleBlock, MetBodyComesFirstOfMany) {
  Sample sample = FallingBox();
  const ViewBody slab = sample.scene.fixed[0];
  sample.scene.fixed.clear();
  for (int k = 0; k < 6; ++k) {
    sample.scene.fixed.push_back(slab);
    sample.scene.fixed.back().name = "body" + std::to_string(k) + ".stl";
  }
  sample.scene.answer.contact.fixedBody = 4;
  const std::string text = BlockOf(sample.scene);
  ExpectHas(text, "met: body4.stl");
  ExpectHas(text, "body1.stl");
  ExpectHas(text, "and 3 more fixed bodies");
  EXPECT_EQ(text.find("body2.stl"), std::string::npos);
  EXPECT_LT(text.find("body4.stl"), text.find("body0.stl"));
}

TEST(TitleBlock, LongAndForeignNamesKeepTheNumberOfTriangles) {
  Sample sample = FallingBox();
  sample.scene.moving.name = "/a/very/long/path/" + std::string(300, 'x') + "/end.stl";
  sample.scene.fixed[0].name = "Gr\xC3\xB6\xC3\x9F"
                               "e \xFF\n.stl";
  const std::string text = BlockOf(sample.scene);
  ExpectHas(text, "/a/very/lo");
  ExpectHas(text, "/end.stl, 12 triangles");
  ExpectHas(text, "Gr\xC3\xB6\xC3\x9F"
                  "e \xEF\xBF\xBD?.stl, 12 triangles");
}

TEST(TitleBlock, SaysWhatWasAsked) {
  ViewScene scene = FallingBox().scene;
  scene.question.rule = gsl_sweep::Rule::Solid;
  scene.question.maxDistance = 7.5;
  ExpectHas(BlockOf(scene), "first contact of solids, up to 7.5");
  scene.question.rule = gsl_sweep::Rule::NotLeaving;
  scene.question.oneSided = true;
  ExpectHas(BlockOf(scene), "first contact, leaving allowed, one-sided");
  scene.answer.status = SweepStatus::Start;
  ExpectHas(BlockOf(scene), "0 (from the start)");
  scene.changes = "grown by 0.5, posed";
  scene.answer.errorBound = 0.125;
  ExpectHas(BlockOf(scene), "grown by 0.5, posed");
  ExpectHas(BlockOf(scene), "at most 0.125");
}

TEST(TitleBlock, ManyAnswersHaveRowsOfTheirOwn) {
  Sample sample(BoxCorners({0, 0, 3}, {1, 1, 4}),
                {BoxCorners({0, 0, -9}, {1, 1, -8}), BoxCorners({-1, -1, 0}, {3, 2, 1})},
                {0, 0, -1});
  sample.Ask();
  sample.scene.changes = "posed";
  Page page(PictureFormat::Pdf, 297.0, 60.0);
  TitleTexts texts;
  texts.rows = {{"directions", "9, evenly spread"}, {"least", "1.5", true}};
  texts.errorBound = 0.25;
  DrawTitleBlock(page, sample.scene, {10, 10, 287, 40}, texts, false);
  const std::string text = TextOf(page.Finish());
  for (const char* words : {"moving.stl", "directions", "9, evenly spread", "least", "1.5", "posed",
                            "off by at most 0.25", "gsl-sweep 1.2.3"})
    ExpectHas(text, words);
  EXPECT_EQ(text.find("met:"), std::string::npos);
  EXPECT_EQ(text.find("vertex"), std::string::npos);
}
