#include "Picture.h"

#include "MeshRead.h"
#include "PageFiles.h"
#include "PngFiles.h"
#include "TestScale.h"
#include "ViewSamples.h"

#include <cmath>
#include <cstdlib>

using namespace gsl_view;
using namespace view_samples;
using namespace page_files;

namespace {

constexpr PictureFormat formats[] = {PictureFormat::Svg, PictureFormat::Png, PictureFormat::Pdf};

/// Returns the mean brightness of each square of 16 by 16 pixels.
std::vector<double> Coarse(const Image& image) {
  constexpr std::size_t kSide = 16;
  std::vector<double> means;
  for (std::size_t y = 0; y + kSide <= image.height; y += kSide) {
    for (std::size_t x = 0; x + kSide <= image.width; x += kSide) {
      double sum = 0.0;
      for (std::size_t k = 0; k < kSide * kSide; ++k) {
        const std::size_t at = 3 * ((y + k / kSide) * image.width + x + k % kSide);
        for (std::size_t part = 0; part < 3; ++part)
          sum += static_cast<unsigned char>(image.bytes[at + part]);
      }
      means.push_back(sum / (3.0 * kSide * kSide));
    }
  }
  return means;
}

using Bodies = std::vector<std::vector<double>>;

/// Scenes that make trouble.
std::vector<Sample> OddScenes() {
  std::vector<Sample> scenes;
  for (const double scale : {1e150, 1e-150, 1e307, 1e-310})
    scenes.push_back(FallingBox(scale));
  const auto slab = [] { return BoxCorners({-1, -1, 0}, {3, 2, 1}); };
  scenes.emplace_back(BoxCorners({0, 0, 1}, {1, 1, 2}), Bodies{slab()}, Coord3{0, 0, -1});
  scenes.emplace_back(BoxCorners({0, 0, 3}, {1, 1, 4}), Bodies{slab()}, Coord3{0, 0, 1});
  scenes.emplace_back(std::vector<double>{0, 0, 5, 1, 0, 5, 0, 1, 5},
                      Bodies{std::vector<double>{0, 0, 0, 1, 0, 0, 0, 1, 0}}, Coord3{0, 0, -1});
  scenes.emplace_back(std::vector<double>{1, 1, 5, 1, 1, 5, 1, 1, 5},
                      Bodies{std::vector<double>{1, 1, 0, 1, 1, 0, 1, 1, 0}}, Coord3{0, 0, -1});
  scenes.emplace_back(BoxCorners({0, 0, 3}, {1e-9, 1e-9, 3.1}), Bodies{slab()}, Coord3{0, 0, -1});
  scenes.emplace_back(BoxCorners({0, 0, 3}, {1e-308, 1e-308, 3.1}), Bodies{slab()},
                      Coord3{0, 0, -1});
  scenes.emplace_back(BoxCorners({0, 0, 3}, {1e-308, 1e-308, 3 + 1e-15}), Bodies{slab()},
                      Coord3{0, 0, -1});
  scenes.emplace_back(BoxCorners({0, 0, 1}, {1, 1, 2}),
                      Bodies{BoxCorners({-1e308, -1e308, -1e308}, {1e308, 1e308, 0})},
                      Coord3{0, 0, -1});
  scenes.emplace_back(BoxCorners({0, 0, 1e-308}, {1e-308, 1e-308, 2e-308}),
                      Bodies{BoxCorners({-1, -1, -1}, {1, 1, 0})}, Coord3{0, 0, -1});
  scenes.emplace_back(BoxCorners({0, 0, 1e12}, {1, 1, 1e12 + 1}), Bodies{slab(), slab()},
                      Coord3{0, 0, -1});
  scenes.emplace_back(BoxCorners({0.4, 0.4, 0.4}, {0.6, 0.6, 0.6}), Bodies{slab()},
                      Coord3{1, 2, 3});
  scenes.back().scene.question.rule = gsl_sweep::Rule::Solid;
  for (std::size_t k = 4; k < scenes.size(); ++k)
    scenes[k].Ask();
  return scenes;
}

} // namespace

TEST(Picture, SvgHasOneImageAndAFewElements) {
  const std::string svg = DrawPicture(FallingBox().scene, PictureFormat::Svg);
  EXPECT_NE(svg.find("viewBox=\"0 0 841.889764 595.275591\""), std::string::npos) << "A4";
  EXPECT_EQ(CountOf(svg, "<image "), 1u);
  EXPECT_EQ(CountOf(svg, "http"), CountOf(svg, "http://www.w3.org/")) << "nothing from elsewhere";
  EXPECT_EQ(CountOf(svg, "stroke:rgb(72%,36%,0%)"), 3u) << "before, twice, and in the legend";
  EXPECT_LT(CountOf(svg, "<path "), 250u);
}

TEST(Picture, PageSaysTheAnswer) {
  const std::string text = TextOf(DrawPicture(FallingBox().scene, PictureFormat::Pdf));
  for (const char* words :
       {"Contact after a travel of 2", "Isometric view", "Side view", "Detail A",
        "before the travel", "moving.stl", "(0, 0, -1)", "gsl-sweep 1.2.3"})
    EXPECT_NE(text.find(words), std::string::npos) << words << " is not in:\n" << text;
}

TEST(Picture, WithoutContactThePageSaysSoTwice) {
  Sample sample = FallingBox();
  sample.scene.question.direction = {0, 0, 1};
  const std::string text = TextOf(DrawPicture(sample.Ask().scene, PictureFormat::Pdf));
  EXPECT_EQ(CountOf(text, "No contact"), 2u) << text;
  EXPECT_EQ(CountOf(text, "Detail A"), 0u);
  EXPECT_EQ(CountOf(text, "before any travel"), 1u);
}

TEST(Picture, ShortenedTravelHasItsTrueNumberAndANote) {
  Sample sample(BoxCorners({0, 0, 3001}, {1, 1, 3002}), {BoxCorners({-1, -1, 0}, {3, 2, 1})},
                {0, 0, -1});
  const std::string text = TextOf(DrawPicture(sample.Ask().scene, PictureFormat::Pdf));
  EXPECT_EQ(CountOf(text, "3000"), 3u) << text;
  EXPECT_EQ(CountOf(text, "travel drawn shorter"), 1u);
}

TEST(Picture, SecondRunHasTheSameBytes) {
  for (const PictureFormat format : formats) {
    const std::string first = DrawPicture(FallingBox().scene, format);
    EXPECT_EQ(DrawPicture(FallingBox().scene, format), first);
  }
}

TEST(Picture, PdfShowsWhatThePngShows) {
  const Sample sample = FallingBox();
  const ViewScene& scene = sample.scene;
  const Image png = ReadPng(DrawPicture(scene, PictureFormat::Png));
  const Image pdf =
      ReadPpm(FromPdf("pdftoppm -r 150 -singlefile", DrawPicture(scene, PictureFormat::Pdf), ""));
  ASSERT_EQ(png.width, 1754u);
  ASSERT_EQ(png.height, 1240u);
  EXPECT_LE(pdf.width - png.width, 1u);
  EXPECT_LE(pdf.height - png.height, 1u);
  const std::vector<double> a = Coarse(png), b = Coarse(pdf);
  ASSERT_EQ(a.size(), b.size());
  double worst = 0.0, sum = 0.0;
  for (std::size_t k = 0; k < a.size(); ++k) {
    worst = std::max(worst, std::fabs(a[k] - b[k]));
    sum += std::fabs(a[k] - b[k]);
  }
  EXPECT_LT(worst, 40.0) << "of 255, in a square of 16 by 16 pixels";
  EXPECT_LT(sum / static_cast<double>(a.size()), 1.5);
}

TEST(Picture, OddScenesHavePages) {
  for (const Sample& sample : OddScenes()) {
    const std::string svg = DrawPicture(sample.scene, PictureFormat::Svg);
    EXPECT_LE(svg.size(), kMostPictureBytes);
    EXPECT_EQ(CountOf(svg, "<image "), 1u);
    for (const char* wrong : {"nan", "inf", "NaN"})
      EXPECT_EQ(CountOf(svg, std::string(" ") + wrong), 0u);
  }
}

/// Pixels in tones of the two marks.
struct Marks {
  std::size_t moving = 0, fixed = 0;
};

Marks MarksIn(const Image& image) {
  Marks marks;
  for (std::size_t k = 0; k + 2 < image.bytes.size(); k += 3) {
    const auto part = [&](std::size_t j) {
      return static_cast<double>(static_cast<unsigned char>(image.bytes[k + j]));
    };
    const double red = part(0), green = part(1), blue = part(2);
    if (red > 80.0 && green < 0.42 * red && blue < 0.3 * red) ++marks.moving;
    if (blue > 40.0 && blue > 2.0 * red && blue > 1.6 * green) ++marks.fixed;
  }
  return marks;
}

TEST(Picture, PatchIsMarkedInItsColours) {
  // Each body reaches beyond the other, so that a part of each patch is seen from one side or the
  // other.
  Marks before, after;
  for (const double along : {1.0, -1.0}) {
    Sample sample(BoxCorners({0, 0, 0}, {1, 3, 1}),
                  {BoxCorners({3 * along, 1, -1}, {3 * along + 1, 2, 3})}, {along, 0, 0});
    const auto count = [](const ViewScene& scene, Marks& marks) {
      const Marks found = MarksIn(ReadPng(DrawPicture(scene, PictureFormat::Png)));
      marks.moving += found.moving;
      marks.fixed += found.fixed;
    };
    count(sample.Ask().scene, before);
    count(sample.Ask(true).scene, after);
  }
  EXPECT_LT(before.moving, 50u);
  EXPECT_LT(before.fixed, 50u);
  EXPECT_GT(after.moving, 2000u);
  EXPECT_GT(after.fixed, 2000u);
}

TEST(Picture, LargestMeshStaysWithinTheLimit) {
  const char* const folder = std::getenv("GSL_MESH_DIR");
  if (folder == nullptr) {
    std::printf("GSL_MESH_DIR is not set: no real mesh is drawn\n");
    return;
  }
  const gsl_mesh::Mesh mesh = gsl_mesh::ReadMesh(
      std::string(folder) + (TEST_UNDER_SANITIZER ? "/nist_insert.stl" : "/koala.obj"));
  std::vector<double> corners;
  for (const Coord3& corner : mesh.corners)
    corners.insert(corners.end(), {corner.x, corner.y, corner.z});
  std::vector<double> fixed = corners;
  for (std::size_t k = 2; k < fixed.size(); k += 3)
    fixed[k] -= 5.0;
  Sample sample(corners, {fixed}, {0, 0.1, -1});
  sample.Ask();
  // An SVG is the largest, because its pixels are text.
  for (const PictureFormat format : {PictureFormat::Svg, PictureFormat::Png})
    EXPECT_LE(DrawPicture(sample.scene, format).size(), kMostPictureBytes);
}

TEST(Picture, NoiseStaysWithinTheLimit) {
  // Triangles of every tilt, each a few pixels large, are the hardest to make small.
  std::vector<double> corners;
  unsigned state = 1;
  const auto next = [&] {
    state = state * 1664525u + 1013904223u;
    return (state >> 8u) / 16777216.0;
  };
  for (long k = 0; k < std::max(2000L, Scaled(20000)); ++k) {
    const double x = 100.0 * next(), y = 100.0 * next(), z = 100.0 * next();
    for (int corner = 0; corner < 3; ++corner)
      corners.insert(corners.end(), {x + 3.0 * next(), y + 3.0 * next(), z + 3.0 * next()});
  }
  Sample sample(BoxCorners({0, 0, 200}, {9, 9, 209}), {corners}, {0, 0, -1});
  sample.Ask();
  // An SVG is the largest, because its pixels are text.
  for (const PictureFormat format : {PictureFormat::Svg, PictureFormat::Png})
    EXPECT_LE(DrawPicture(sample.scene, format).size(), kMostPictureBytes);
}
