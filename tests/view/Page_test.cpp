#include "Page.h"

#include "PageFiles.h"

#include <cmath>

using namespace gsl_view;
using namespace page_files;

namespace {

void DrawSome(Page& page) {
  page.DrawLine({10, 10}, {20, 10}, {0.5, {1, 0, 0}});
  page.DrawLines({{{1, 2}, {3, 4}}, {{5, 6}, {7, 8}}}, {});
  page.DrawBox({30, 30, 40, 50}, {});
  page.DrawText({20, 80}, "gap 1.5", {5.0, Align::Left, false, {}});
  page.DrawRaster(Raster({50, 50, 60, 60}, 1.0));
}

std::string Some(PictureFormat format) {
  Page page(format, 100.0, 90.0);
  DrawSome(page);
  return page.Finish();
}

} // namespace

TEST(Page, SvgHasItsSizeAndItsElements) {
  const std::string svg = Some(PictureFormat::Svg);
  EXPECT_NE(svg.find("width=\"283.464567pt\" height=\"255.11811pt\""), std::string::npos)
      << svg.substr(0, 300);
  EXPECT_EQ(CountOf(svg, "<image "), 1u);
  // 10 mm are 28.346457 points, and 0.5 mm are 1.417323.
  EXPECT_EQ(CountOf(svg, "stroke-width:0.5;"), 1u) << svg.substr(0, 3000);
  EXPECT_EQ(CountLines(svg, 10, 10, 20, 10), 1u);
  EXPECT_EQ(CountLines(svg, 1, 2, 3, 4), 1u);
  EXPECT_EQ(CountLines(svg, 5, 6, 7, 8), 1u);
  EXPECT_EQ(CountOf(svg, "stroke:rgb(0%,0%,0%)"), 2u) << "the lines are one element";
}

TEST(Page, PngHas150PixelsToTheInch) {
  const std::string png = Some(PictureFormat::Png);
  ASSERT_GT(png.size(), 24u);
  EXPECT_EQ(png.substr(1, 3), "PNG");
  const auto number = [&](std::size_t at) {
    return static_cast<unsigned char>(png[at]) * 256u + static_cast<unsigned char>(png[at + 1]);
  };
  EXPECT_EQ(number(18), 591u);
  EXPECT_EQ(number(22), 531u);
}

TEST(Page, PdfHasTextAFixedDateAndTheFont) {
  const std::string pdf = Some(PictureFormat::Pdf);
  EXPECT_EQ(pdf.substr(0, 5), "%PDF-");
  EXPECT_NE(pdf.find("/CreationDate (20000101000000Z)"), std::string::npos);
  EXPECT_EQ(pdf.find("/ModDate"), std::string::npos);
  EXPECT_NE(TextOf(pdf).find("gap 1.5"), std::string::npos);
  EXPECT_NE(pdf.find("DejaVuSans"), std::string::npos) << "the font is installed";
}

TEST(Page, SameCallsGiveTheSameBytes) {
  for (const PictureFormat format : {PictureFormat::Svg, PictureFormat::Png, PictureFormat::Pdf}) {
    const std::string first = Some(format);
    EXPECT_EQ(Some(format), first);
  }
}

TEST(Page, LongTextIsShortenedInItsMiddleAtWholeCharacters) {
  Page page(PictureFormat::Svg, 100.0, 100.0);
  const TextStyle style{3.0, Align::Left, false, {}};
  EXPECT_EQ(page.Fitted("short", 50.0, style), "short");
  std::string text;
  for (int k = 0; k < 40; ++k)
    text += "\xC3\xB6\xE2\x82\xAC";
  const std::string fitted = page.Fitted(text, 30.0, style);
  EXPECT_LE(page.WidthOf(fitted, style), 30.0);
  EXPECT_GT(page.WidthOf(fitted, style), 25.0);
  EXPECT_EQ(CountOf(fitted, "\xE2\x80\xA6"), 1u);
  EXPECT_EQ(fitted.substr(0, 2), "\xC3\xB6");
  EXPECT_EQ(fitted.substr(fitted.size() - 3), "\xE2\x82\xAC");
  EXPECT_EQ(page.Fitted(text, 0.0, style), "\xE2\x80\xA6");
}

TEST(Page, ClipEnds) {
  const auto draw = [](bool drawsMore) {
    Page page(PictureFormat::Svg, 100.0, 100.0);
    page.BeginClip({50, 50}, 10.0);
    page.FillPolygon({{0, 0}, {100, 0}, {0, 100}}, {1, 0, 0}, 0.5);
    page.EndClip();
    if (drawsMore) page.FillCircle({90, 90}, 2.0, {0, 1, 0});
    if (drawsMore) page.FillAround({80, 80, 100, 100}, {90, 90}, 5.0, {0, 0, 1});
    return page.Finish();
  };
  const std::string svg = draw(true);
  EXPECT_GT(CountOf(svg, "clip-path="), 0u);
  EXPECT_EQ(CountOf(svg, "clip-path="), CountOf(draw(false), "clip-path="));
  EXPECT_EQ(CountOf(svg, "fill-opacity:0.5"), 1u);
  EXPECT_EQ(CountOf(svg, "fill-rule:evenodd;fill:rgb(0%,0%,100%)"), 1u);
}
