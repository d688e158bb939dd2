#include "SphereMap.h"

#include "PageFiles.h"
#include "Picture.h"
#include "PngFiles.h"
#include "TestScale.h"
#include "TravelScale.h"
#include "ViewSamples.h"

#include <cstdlib>

using namespace gsl_view;
using namespace view_samples;
using namespace page_files;
using gsl_sweep::Answer;
using gsl_sweep::SweepStatus;

namespace {

constexpr PictureFormat kFormats[] = {PictureFormat::Svg, PictureFormat::Png, PictureFormat::Pdf};

ViewScene SceneOf(const Sample& sample) {
  return sample.scene;
}

/// Answers that a function makes of each direction: a travel, 0 for the start, less for free.
template <class Travel>
std::vector<Answer> AnswersOf(std::size_t count, const Travel& travelOf) {
  std::vector<Answer> answers;
  for (const Coord3& direction : SpiralDirections(count)) {
    Answer answer;
    answer.unitDirection = direction;
    const double travel = travelOf(direction);
    answer.status = travel > 0.0    ? SweepStatus::Contact
                    : travel == 0.0 ? SweepStatus::Start
                                    : SweepStatus::None;
    answer.contact.travel = std::max(travel, 0.0);
    answers.push_back(answer);
  }
  return answers;
}

/// Free above; below, in contact from the start where y is negative, else after a travel.
std::vector<Answer> ThreeStates(std::size_t count) {
  return AnswersOf(count, [](const Coord3& d) {
    if (d.z > 0.0) return -1.0;
    return d.y < 0.0 ? 0.0 : 5.0 + 4.0 * d.x;
  });
}

std::uint32_t PixelAt(const Image& image, std::size_t x, std::size_t y) {
  std::uint32_t pixel = 0;
  for (std::size_t part = 0; part < 3; ++part)
    pixel = pixel << 8u | static_cast<unsigned char>(image.bytes[3 * (y * image.width + x) + part]);
  return pixel;
}

/// Counts the pixels of one colour in a part of the page, in millimetres.
std::size_t CountPixels(const Image& image, const Rect& part, const Colour& colour) {
  std::size_t count = 0;
  const auto pixel = [](double at) { return static_cast<std::size_t>(at * kPixelsPerMillimetre); };
  for (std::size_t y = pixel(part.top); y < pixel(part.bottom); ++y) {
    for (std::size_t x = pixel(part.left); x < pixel(part.right); ++x)
      count += PixelAt(image, x, y) == PixelOf(colour) ? 1u : 0u;
  }
  return count;
}

// Parts of both halves of the map, away from their lines and names.
constexpr Rect kAbove{95, 64, 115, 80}, kBelowPlusY{202, 64, 212, 80},
    kBelowMinusY{202, 90, 212, 106};

} // namespace

TEST(SphereMap, PageSaysTheCountsAndTheEnds) {
  const Sample sample = FallingBox();
  const std::string text =
      TextOf(DrawSphereMap(SceneOf(sample), ThreeStates(1000), PictureFormat::Pdf));
  for (const char* words :
       {"1000 directions: 500 free, 250 with contact after a travel, 250 in contact from the start",
        "in contact from the start", "250 (25 %)", "travel to the first contact",
        "free: no contact", "500 (50 %)", "moving.stl", "fixed.stl", "1000, evenly spread",
        "gsl-sweep 1.2.3", "+x", "+y", "+z", "30\xC2\xB0", "60\xC2\xB0", "first contact"})
    EXPECT_NE(text.find(words), std::string::npos) << words << " is not in:\n" << text;
  EXPECT_EQ(CountOf(text, "least"), 2u) << "on the map and in the title block";
  EXPECT_EQ(CountOf(text, "greatest"), 2u);
}

TEST(SphereMap, EachStateHasItsTone) {
  const Sample sample = FallingBox();
  const Image image =
      ReadPng(DrawSphereMap(SceneOf(sample), ThreeStates(4000), PictureFormat::Png));
  const std::size_t all =
      CountPixels(image, kAbove, kFreeColour) + CountPixels(image, kAbove, kFreeStripes);
  EXPECT_GT(CountPixels(image, kAbove, kFreeColour), all / 2);
  EXPECT_GT(CountPixels(image, kAbove, kFreeStripes), all / 20) << "free directions are striped";
  EXPECT_GT(CountPixels(image, kBelowMinusY, kStartColour), 2500u);
  EXPECT_GT(CountPixels(image, kBelowMinusY, kStartDots), 30u) << "the start is dotted";
  EXPECT_EQ(CountPixels(image, kBelowPlusY, kStartColour), 0u);
  EXPECT_EQ(CountPixels(image, kBelowPlusY, kFreeColour), 0u);
}

TEST(SphereMap, EachPlaceHasTheColourOfItsNearestDirection) {
  // Two directions: one above, one below. Their cells are the two halves of the map.
  const Sample sample = FallingBox();
  const std::vector<Answer> answers =
      AnswersOf(2, [](const Coord3& d) { return d.z > 0.0 ? 3.0 : 9.0; });
  const Image image = ReadPng(DrawSphereMap(SceneOf(sample), answers, PictureFormat::Png));
  const TravelScale scale = TravelScale::Of({3.0, 9.0});
  // The directions are not the poles, so the border is not the rim; here it is far away.
  EXPECT_GT(CountPixels(image, {70, 75, 78, 83}, scale.At(3.0)), 1500u);
  EXPECT_GT(CountPixels(image, {222, 75, 230, 83}, scale.At(9.0)), 1500u);
}

TEST(SphereMap, OneDirectionFillsTheMap) {
  const Sample sample = FallingBox();
  for (const double travel : {-1.0, 0.0, 7.0}) {
    const std::vector<Answer> answers = AnswersOf(1, [&](const Coord3&) { return travel; });
    const Image image = ReadPng(DrawSphereMap(SceneOf(sample), answers, PictureFormat::Png));
    const Colour colour = travel < 0.0    ? kFreeColour
                          : travel == 0.0 ? kStartColour
                                          : TravelScale::ColourAt(0.5);
    for (const Rect& part : {kAbove, kBelowPlusY, kBelowMinusY})
      EXPECT_GT(CountPixels(image, part, colour), 2000u) << travel;
    const std::string text = TextOf(DrawSphereMap(SceneOf(sample), answers, PictureFormat::Pdf));
    EXPECT_EQ(CountOf(text, "1 direction:"), 1u);
    EXPECT_EQ(CountOf(text, "travel 7"), travel > 0.0 ? 1u : 0u) << text;
  }
}

TEST(SphereMap, WordsFollowTheQuestion) {
  Sample sample = FallingBox();
  const auto textOf = [&] {
    return TextOf(DrawSphereMap(SceneOf(sample), ThreeStates(100), PictureFormat::Pdf));
  };
  sample.scene.last = true;
  EXPECT_EQ(CountOf(textOf(), "last contact at the start"), 2u);
  EXPECT_EQ(CountOf(textOf(), "travel to the last contact"), 1u);
  sample.scene.last = false;
  sample.scene.question.maxDistance = 20.0;
  EXPECT_EQ(CountOf(textOf(), "free: no contact up to 20"), 1u);
  EXPECT_EQ(CountOf(textOf(), "50 free up to a travel of 20"), 1u);
  sample.scene.question.rule = gsl_sweep::Rule::Solid;
  // In the headline and in the legend.
  EXPECT_EQ(CountOf(textOf(), "overlap from the start"), 2u);
  EXPECT_EQ(CountOf(textOf(), "free: no overlap up to 20"), 1u);
  sample.scene.question = {};
  sample.scene.question.clearance = 0.5;
  sample.scene.changes = "grown by 0.25";
  for (const char* words : {"within 0.5 from the start", "travel until within 0.5",
                            "free: not within 0.5", "grown by 0.25"})
    EXPECT_GE(CountOf(textOf(), words), 1u) << words;
}

TEST(SphereMap, LongCountsAreWrittenInFull) {
  Sample sample = FallingBox();
  sample.scene.question.clearance = 0.1234567;
  sample.scene.question.maxDistance = 123456.7;
  const std::string text =
      TextOf(DrawSphereMap(sample.scene, ThreeStates(30000), PictureFormat::Pdf));
  EXPECT_EQ(CountOf(text, "30000 directions: 15000 free up to a travel of 123457, 7500 within "
                          "0.123457 after a travel, 7500 within 0.123457 from the start"),
            1u)
      << text;
}

TEST(SphereMap, AFewOfManyAreNotNone) {
  const Sample sample = FallingBox();
  const std::vector<Answer> answers =
      AnswersOf(5000, [](const Coord3& d) { return d.z > 0.9995 ? 2.0 : -1.0; });
  const std::string text = TextOf(DrawSphereMap(SceneOf(sample), answers, PictureFormat::Pdf));
  EXPECT_EQ(CountOf(text, "1 (< 0.1 %)"), 1u) << text;
  EXPECT_EQ(CountOf(text, "4999 (> 99.9 %)"), 1u) << text;
}

TEST(SphereMap, AFewFreeDirectionsAreMarked) {
  const Sample sample = FallingBox();
  // The first 2 of 200 directions, which are a hundredth of them, and the first 3.
  for (const std::size_t free : {2u, 3u}) {
    std::size_t k = 0;
    const std::vector<Answer> answers =
        AnswersOf(200, [&](const Coord3&) { return k++ < free ? -1.0 : 2.0; });
    const std::string text = TextOf(DrawSphereMap(SceneOf(sample), answers, PictureFormat::Pdf));
    // The legend, and the mark; the headline says "2 free".
    EXPECT_EQ(CountOf(text, "free"), free == 2 ? 3u : 2u) << text;
  }
}

TEST(SphereMap, SecondRunHasTheSameBytes) {
  const Sample sample = FallingBox();
  for (const PictureFormat format : kFormats) {
    const std::string first = DrawSphereMap(SceneOf(sample), ThreeStates(300), format);
    EXPECT_EQ(DrawSphereMap(SceneOf(sample), ThreeStates(300), format), first);
  }
}

TEST(SphereMap, NoiseStaysWithinTheLimit) {
  // Each of many cells has a colour of its own, which is the hardest to make small.
  unsigned state = 1;
  const auto noise = [&](const Coord3&) {
    state = state * 1664525u + 1013904223u;
    return (state >> 8u) / 16777216.0 - 0.1;
  };
  const Sample sample = FallingBox();
  const std::vector<Answer> answers = AnswersOf(TEST_UNDER_SANITIZER ? 20000 : 100000, noise);
  for (const PictureFormat format : kFormats)
    EXPECT_LE(DrawSphereMap(SceneOf(sample), answers, format).size(), kMostPictureBytes);
}
