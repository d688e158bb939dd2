#include "SphereMap.h"

#include "Hemisphere.h"
#include "NearestDirection.h"
#include "Page.h"
#include "Picture.h"
#include "PictureStyle.h"
#include "SphereTally.h"
#include "TitleBlock.h"
#include "TravelScale.h"
#include "ViewText.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace gsl_view {

using gsl_sweep::Answer;
using gsl_sweep::Rule;
using gsl_sweep::SweepStatus;

namespace {

// The legend is below the two halves of the map, and the title block is below the legend.
constexpr Rect kFrame = PictureFrame();
constexpr double kBlockTop = 172.0, kMapMiddle = 84.0, kRadius = 55.0;
constexpr double kLegendTop = 152.6, kLegendBottom = 157.6;
constexpr Rect kBlock{kFrame.left, kBlockTop, kFrame.right, kFrame.bottom};
constexpr Hemisphere kUpper{{kFrame.left + 69.0, kMapMiddle}, kRadius, true};
constexpr Hemisphere kLower{{kFrame.right - 69.0, kMapMiddle}, kRadius, false};
constexpr Rect kStartSwatch{kFrame.left + 6.0, kLegendTop, kFrame.left + 24.0, kLegendBottom};
constexpr Rect kBar{kFrame.left + 74.0, kLegendTop, kFrame.right - 80.0, kLegendBottom};
constexpr Rect kFreeSwatch{kFrame.right - 68.0, kLegendTop, kFrame.right - 50.0, kLegendBottom};
/// What the raster covers.
constexpr Rect kPixels{kFrame.left + 5.0, kMapMiddle - kRadius - 1.0, kFrame.right - 5.0,
                       kLegendBottom + 1.0};
constexpr double kFinenesses[] = {1.0, 0.6, 0.4, 0.2};

constexpr Colour kWhite{1.0, 1.0, 1.0};

// Up to this part of all directions, the first free direction is marked.
constexpr double kFewFree = 0.01;

std::string CountText(std::size_t count, std::size_t all) {
  const double percent = 100.0 * static_cast<double>(count) / static_cast<double>(all);
  const double shown = std::round(10.0 * percent) / 10.0;
  std::string text = ShortNumber(shown);
  // A few of many are not none, and not all.
  if (count > 0 && shown == 0.0) text = "< 0.1";
  if (count < all && shown == 100.0) text = "> 99.9";
  return std::to_string(count) + " (" + text + " %)";
}

/// The map as it is drawn.
struct Map {
  const ViewScene& scene;
  const std::vector<Answer>& answers;
  SphereTally tally;
  TravelScale scale;
  std::vector<std::uint32_t> pixels; ///< of each answer, without a pattern
};

Map MapOf(const ViewScene& scene, const std::vector<Answer>& answers) {
  Map map{scene, answers, TallyOf(answers), TravelScale::Of(TravelsOf(answers)), {}};
  for (const Answer& answer : answers) {
    map.pixels.push_back(PixelOf(answer.status == SweepStatus::Start ? kStartColour
                                 : answer.status == SweepStatus::Contact
                                     ? map.scale.At(answer.contact.travel)
                                     : kFreeColour));
  }
  return map;
}

/// The patterns, in pixels. They become coarser where pixels are large.
class Patterns {
public:
  explicit Patterns(double pixelsPerMillimetre)
      : m_period(std::max(4, static_cast<int>(std::lround(2.0 * pixelsPerMillimetre)))),
        m_width(std::max(1, static_cast<int>(std::lround(0.35 * pixelsPerMillimetre)))) {}

  /// Returns the pixel of a status at a place, of the pixel without a pattern.
  std::uint32_t At(int x, int y, SweepStatus status, std::uint32_t plain) const {
    if (status == SweepStatus::Contact) return plain;
    if (status == SweepStatus::Start) {
      // Each row of dots is shifted by half a period.
      const int shift = y / (m_period / 2) % 2 * (m_period / 2);
      const bool isDot = (x + shift) % m_period < m_width && y % (m_period / 2) < m_width;
      return isDot ? PixelOf(kStartDots) : plain;
    }
    return (x + y) % m_period < m_width ? PixelOf(kFreeStripes) : plain;
  }

private:
  int m_period, m_width;
};

bool IsIn(const Rect& box, const PagePoint& at) {
  return at.x >= box.left && at.x < box.right && at.y >= box.top && at.y < box.bottom;
}

/// Colours the two halves, each place as its nearest direction.
void PaintMap(const Map& map, const Patterns& patterns, Raster& raster) {
  std::vector<Coord3> directions;
  for (const Answer& answer : map.answers)
    directions.push_back(answer.unitDirection);
  const NearestDirection nearest(directions);
  std::size_t number = 0;
  for (int y = 0; y < raster.Height(); ++y) {
    for (int x = 0; x < raster.Width(); ++x) {
      const PagePoint middle = raster.MiddleOf(x, y);
      const Hemisphere& half = middle.x < 0.5 * (kFrame.left + kFrame.right) ? kUpper : kLower;
      const auto direction = half.DirectionAt(middle);
      if (!direction) continue;
      number = nearest.Find(*direction, number);
      const SweepStatus status = map.answers[number].status;
      raster.SetPixel(x, y, patterns.At(x, y, status, map.pixels[number]));
    }
  }
}

/// Colours the swatches and the bar of the legend.
void PaintLegend(const Map& map, const Patterns& patterns, Raster& raster) {
  for (int y = 0; y < raster.Height(); ++y) {
    for (int x = 0; x < raster.Width(); ++x) {
      const PagePoint at = raster.MiddleOf(x, y);
      if (IsIn(kStartSwatch, at)) {
        raster.SetPixel(x, y, patterns.At(x, y, SweepStatus::Start, PixelOf(kStartColour)));
      } else if (IsIn(kFreeSwatch, at)) {
        raster.SetPixel(x, y, patterns.At(x, y, SweepStatus::None, PixelOf(kFreeColour)));
      } else if (IsIn(kBar, at) && map.tally.least) {
        const double part = (at.x - kBar.left) / kBar.Width();
        raster.SetPixel(x, y, PixelOf(TravelScale::ColourAt(part)));
      }
    }
  }
}

/// Draws a line that is seen on every colour.
void DrawThinLines(Page& page, const std::vector<PageLine>& lines) {
  page.DrawLines(lines, {0.28, kWhite});
  page.DrawLines(lines, {0.10, kInk});
}

/// Returns the place that a text takes.
Rect BoxOf(Page& page, const PagePoint& at, const std::string& text, const TextStyle& style) {
  const double width = page.WidthOf(text, style);
  const double part = style.align == Align::Left ? 0.0 : style.align == Align::Right ? 1.0 : 0.5;
  const double left = at.x - part * width;
  return {left - 0.5, at.y - 0.86 * style.size, left + width + 0.5, at.y + 0.24 * style.size};
}

/// Writes a text on a white ground.
void DrawOnWhite(Page& page, const PagePoint& at, const std::string& text, const TextStyle& style) {
  const Rect box = BoxOf(page, at, text, style);
  page.FillPolygon(
      {{box.left, box.top}, {box.right, box.top}, {box.right, box.bottom}, {box.left, box.bottom}},
      kWhite, 0.85);
  page.DrawText(at, text, style);
}

/// Draws the circles around z and the rays of every 30 degrees, and names them.
void DrawGrid(Page& page, const Hemisphere& half) {
  constexpr double kDegree = 0.017453292519943295;
  const double side = half.isUpper ? 1.0 : -1.0;
  const auto at = [&](double fromAxis, double around) {
    return half.At({std::sin(fromAxis * kDegree) * std::cos(around * kDegree),
                    std::sin(fromAxis * kDegree) * std::sin(around * kDegree),
                    side * std::cos(fromAxis * kDegree)});
  };
  std::vector<PageLine> lines;
  for (int angle = 0; angle < 360; angle += 30)
    lines.push_back({angle % 90 == 0 ? half.centre : at(30, angle), at(90, angle)});
  DrawThinLines(page, lines);
  for (const double angle : {30.0, 60.0}) {
    const double radius = at(angle, 0).x - half.centre.x;
    page.DrawCircle(half.centre, std::fabs(radius), {0.28, kWhite});
    page.DrawCircle(half.centre, std::fabs(radius), {0.10, kInk});
  }
  page.DrawCircle(half.centre, half.radius, {0.45, kInk});
  const TextStyle small{2.4, Align::Middle, false, kInk};
  for (const int angle : {30, 60})
    DrawOnWhite(page, {at(angle, 45).x, at(angle, 45).y + 0.9}, std::to_string(angle) + "\xC2\xB0",
                small);
  for (int angle = 0; angle < 360; angle += 30) {
    const PagePoint rim = at(90, angle);
    const PagePoint place{half.centre.x + (rim.x - half.centre.x) * (1.0 + 4.2 / half.radius),
                          half.centre.y + (rim.y - half.centre.y) * (1.0 + 3.4 / half.radius)};
    const char* const names[] = {"+x", "+y", "\xE2\x88\x92x", "\xE2\x88\x92y"};
    if (angle % 90 == 0) {
      page.DrawText({place.x, place.y + 1.3}, names[angle / 90], {3.6, Align::Middle, true, kInk});
    } else {
      page.DrawText({place.x, place.y + 0.9}, std::to_string(angle) + "\xC2\xB0",
                    {2.4, Align::Middle, false, kPale});
    }
  }
  page.DrawText({half.centre.x - half.radius - 8.0, half.centre.y - half.radius - 1.0},
                half.isUpper ? "Directions towards +z" : "Directions towards \xE2\x88\x92z",
                kLabel);
}

/// A marked direction: a ring, and a text beside it.
struct Mark {
  Coord3 direction;
  std::string words;
};

const Hemisphere& HalfOf(const Coord3& direction) {
  return kUpper.Has(direction) ? kUpper : kLower;
}

bool Overlap(const Rect& a, const Rect& b) {
  return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

/// Where a text may be.
struct TextPlace {
  PagePoint at;
  Align align;
};

/// Writes a text at the first place that is free, or at the first place if none is free.
/// Its place is then taken.
void DrawWhereFree(Page& page, const std::vector<TextPlace>& places, const std::string& text,
                   double size, std::vector<Rect>& taken) {
  const auto styleOf = [&](const TextPlace& place) {
    return TextStyle{size, place.align, true, kInk};
  };
  const auto isFree = [&](const TextPlace& place) {
    const Rect box = BoxOf(page, place.at, text, styleOf(place));
    return std::none_of(taken.begin(), taken.end(),
                        [&](const Rect& other) { return Overlap(box, other); });
  };
  const auto found = std::find_if(places.begin(), places.end(), isFree);
  const TextPlace& place = found == places.end() ? places.front() : *found;
  taken.push_back(BoxOf(page, place.at, text, styleOf(place)));
  DrawOnWhite(page, place.at, text, styleOf(place));
}

/// Names the axis in the middle of a half.
void NameCentre(Page& page, const Hemisphere& half, std::vector<Rect>& taken) {
  const PagePoint c = half.centre;
  DrawWhereFree(page,
                {{{c.x - 1.2, c.y - 1.4}, Align::Right},
                 {{c.x + 1.2, c.y - 1.4}, Align::Left},
                 {{c.x - 1.2, c.y + 4.2}, Align::Right},
                 {{c.x + 1.2, c.y + 4.2}, Align::Left}},
                half.isUpper ? "+z" : "\xE2\x88\x92z", 3.6, taken);
}

/// Writes the text of a mark beside its ring, towards the centre if it can.
void DrawMarkText(Page& page, const Mark& mark, std::vector<Rect>& taken) {
  const Hemisphere& half = HalfOf(mark.direction);
  const PagePoint at = half.At(mark.direction);
  const TextPlace left{{at.x - 3.0, at.y + 1.1}, Align::Right},
      right{{at.x + 3.0, at.y + 1.1}, Align::Left}, below{{at.x, at.y + 5.0}, Align::Middle},
      above{{at.x, at.y - 2.8}, Align::Middle};
  const bool isRight = at.x > half.centre.x;
  std::vector<TextPlace> places = {isRight ? left : right, isRight ? right : left, below, above};
  // Where marks are close together, the texts are above each other.
  for (const double y : {at.y + 5.8, at.y - 3.6, at.y + 9.8, at.y - 7.6}) {
    places.push_back({{at.x + 3.0, y}, Align::Left});
    places.push_back({{at.x - 3.0, y}, Align::Right});
  }
  DrawWhereFree(page, places, mark.words, 3.0, taken);
}

/// Returns the first free direction, where so few are free that they are hardly seen.
std::optional<Coord3> RareFreeDirection(const Map& map) {
  const double most = kFewFree * static_cast<double>(map.answers.size());
  if (map.tally.free == 0 || static_cast<double>(map.tally.free) > most) return std::nullopt;
  const auto isFree = [](const Answer& answer) {
    return answer.status == SweepStatus::None || answer.status == SweepStatus::Cancelled;
  };
  return std::find_if(map.answers.begin(), map.answers.end(), isFree)->unitDirection;
}

/// Returns the marks of the least and the greatest travel, and of a way out that is hard to see.
std::vector<Mark> MarksOf(const Map& map) {
  std::vector<Mark> marks;
  if (const auto free = RareFreeDirection(map)) marks.push_back({*free, "free"});
  if (!map.tally.least) return marks;
  const Answer &least = map.answers[*map.tally.least], &greatest = map.answers[*map.tally.greatest];
  if (map.tally.least == map.tally.greatest) {
    marks.push_back({least.unitDirection, "travel " + ShortNumber(least.contact.travel)});
    return marks;
  }
  marks.push_back({greatest.unitDirection, "greatest " + ShortNumber(greatest.contact.travel)});
  marks.push_back({least.unitDirection, "least " + ShortNumber(least.contact.travel)});
  return marks;
}

/// Draws the marks, and names the z axis beside them.
void DrawMarks(Page& page, const Map& map) {
  const std::vector<Mark> marks = MarksOf(map);
  std::vector<Rect> taken;
  for (const Mark& mark : marks) {
    const PagePoint at = HalfOf(mark.direction).At(mark.direction);
    page.DrawCircle(at, 1.5, {1.1, kWhite});
    page.DrawCircle(at, 1.5, {0.5, kInk});
    taken.push_back({at.x - 2.0, at.y - 2.0, at.x + 2.0, at.y + 2.0});
  }
  for (const Hemisphere& half : {kUpper, kLower})
    NameCentre(page, half, taken);
  for (const Mark& mark : marks)
    DrawMarkText(page, mark, taken);
}

/// The words for the three states, which depend on the question.
struct StateWords {
  std::string start, travel, free, headline;
};

StateWords WordsOf(const Map& map) {
  const gsl_sweep::Question& question = map.scene.question;
  const bool isNear = question.clearance > 0.0;
  const std::string near = "within " + ShortNumber(question.clearance);
  const std::string limit = std::isfinite(question.maxDistance)
                                ? " up to a travel of " + ShortNumber(question.maxDistance)
                                : "";
  StateWords words;
  words.start = isNear ? near + " from the start" : "in contact from the start";
  words.travel = isNear ? "travel until " + near : "travel to the first contact";
  words.free = isNear ? "free: not " + near : std::string("free: no contact");
  if (map.scene.last) {
    words.start = "last contact at the start";
    words.travel = "travel to the last contact";
  }
  if (question.rule == Rule::Solid) {
    words.start = "overlap from the start";
    words.travel = "travel until they overlap";
    words.free = "free: no overlap";
  }
  words.free +=
      std::isfinite(question.maxDistance) ? " up to " + ShortNumber(question.maxDistance) : "";
  std::string after = isNear ? near : "with contact";
  std::string atStart = words.start;
  if (map.scene.last) {
    after = "with the last contact";
    atStart = "with the last contact at the start";
  }
  if (question.rule == Rule::Solid) after = "overlap";
  const std::size_t count = map.answers.size();
  words.headline = std::to_string(count) + (count == 1 ? " direction: " : " directions: ") +
                   std::to_string(map.tally.free) + " free" + limit + ", " +
                   std::to_string(map.tally.contact) + " " + after + " after a travel, " +
                   std::to_string(map.tally.start) + " " + atStart;
  return words;
}

/// Writes the numbers below the bar. The ends have their own numbers; round numbers that are too
/// near to them are left out.
void DrawTicks(Page& page, const TravelScale& scale) {
  const TextStyle style{2.6, Align::Middle, false, kInk};
  const double y = kLegendBottom + 4.4;
  const auto write = [&](double x, const std::string& text) {
    page.DrawLine({x, kLegendBottom}, {x, kLegendBottom + 1.2}, {0.2, kInk});
    page.DrawText({x, y}, text, style);
  };
  if (!(scale.high > scale.low)) {
    write(0.5 * (kBar.left + kBar.right), ShortNumber(scale.low));
    return;
  }
  const std::string low = (scale.isCut ? "\xE2\x89\xA4 " : "") + ShortNumber(scale.low);
  const std::string high = ShortNumber(scale.high);
  write(kBar.left, low);
  write(kBar.right, high);
  double free = kBar.left + 0.5 * page.WidthOf(low, style) + 2.0;
  const double last = kBar.right - 0.5 * page.WidthOf(high, style) - 2.0;
  for (const double tick : scale.Ticks()) {
    const double x = kBar.left + scale.PartOf(tick) * kBar.Width();
    const double half = 0.5 * page.WidthOf(ShortNumber(tick), style);
    if (x - half < free || x + half > last) continue;
    write(x, ShortNumber(tick));
    free = x + half + 2.0;
  }
}

void DrawLegend(Page& page, const Map& map, const StateWords& words) {
  const std::size_t all = map.answers.size();
  const double above = kLegendTop - 1.6, middle = kLegendTop + 3.5;
  const TextStyle bold{3.0, Align::Left, true, kInk};
  page.DrawBox(kStartSwatch, {0.2, kInk});
  page.DrawBox(kFreeSwatch, {0.2, kInk});
  page.DrawText({kStartSwatch.left, above}, words.start, kValue);
  page.DrawText({kStartSwatch.right + 2.0, middle}, CountText(map.tally.start, all), bold);
  TextStyle free = kValue;
  const double room = kFrame.right - 3.0 - kFreeSwatch.left;
  free.size *= std::min(1.0, room / page.WidthOf(words.free, free));
  page.DrawText({kFreeSwatch.left, above}, words.free, free);
  page.DrawText({kFreeSwatch.right + 2.0, middle}, CountText(map.tally.free, all), bold);
  const std::string count = CountText(map.tally.contact, all);
  const std::string note = map.scale.isLogarithmic ? ", logarithmic scale" : "";
  page.DrawText({kBar.left, above}, words.travel + note, kValue);
  if (map.tally.least) {
    page.DrawText({kBar.right, above}, count, {3.0, Align::Right, true, kInk});
    page.DrawBox(kBar, {0.2, kInk});
    DrawTicks(page, map.scale);
  } else {
    page.DrawText({kBar.left, middle}, count, bold);
  }
  page.DrawText(
      {kFrame.left + 6.0, kBlockTop - 3.0},
      "Equal areas are equal shares of all directions; both halves are seen from outside and "
      "meet at +x. Circles: 30\xC2\xB0 and 60\xC2\xB0 from the z axis. Each place has the answer "
      "of the "
      "nearest direction.",
      {2.4, Align::Left, false, kPale});
}

/// Returns a direction to four decimals, which is finer than the page is read.
std::string DirectionText(const Coord3& v) {
  const auto rounded = [](double number) {
    return ShortNumber(std::round(1e4 * number) / 1e4 + 0.0);
  };
  return "(" + rounded(v.x) + ", " + rounded(v.y) + ", " + rounded(v.z) + ")";
}

TitleTexts TextsOf(const Map& map) {
  const auto travel = [&](const std::optional<std::size_t>& k) -> std::string {
    if (!k) return "none";
    const Answer& answer = map.answers[*k];
    return ShortNumber(answer.contact.travel) + " along " + DirectionText(answer.unitDirection);
  };
  TitleTexts texts;
  texts.rows = {{"directions", std::to_string(map.answers.size()) + ", evenly spread"},
                {"least", travel(map.tally.least)},
                {"greatest", travel(map.tally.greatest)},
                {"asked", AskedText(map.scene)}};
  texts.errorBound = map.tally.errorBound;
  return texts;
}

/// Writes the counts, in smaller letters where they are long.
void DrawHeadline(Page& page, const std::string& text) {
  TextStyle style{4.6, Align::Left, true, kInk};
  const double room = kFrame.Width() - 6.0, width = page.WidthOf(text, style);
  style.size *= std::min(1.0, room / width);
  page.DrawText({kFrame.left + 3.0, kFrame.top + 7.4}, text, style);
}

std::string DrawMapPage(const Map& map, PictureFormat format, double fineness) {
  Page page(format, kPageWidth, kPageHeight);
  const double pixels = fineness * kPixelsPerMillimetre;
  Raster raster(kPixels, pixels);
  const Patterns patterns(pixels);
  PaintMap(map, patterns, raster);
  PaintLegend(map, patterns, raster);
  page.DrawRaster(raster);
  page.DrawBox(kFrame, {0.5, kInk});
  for (const Hemisphere& half : {kUpper, kLower})
    DrawGrid(page, half);
  DrawMarks(page, map);
  const StateWords words = WordsOf(map);
  DrawHeadline(page, words.headline);
  DrawLegend(page, map, words);
  DrawTitleBlock(page, map.scene, kBlock, TextsOf(map), false);
  return page.Finish();
}

} // namespace

std::string DrawSphereMap(const ViewScene& scene, const std::vector<Answer>& answers,
                          PictureFormat format) {
  const Map map = MapOf(scene, answers);
  std::string bytes;
  for (const double fineness : kFinenesses) {
    bytes = DrawMapPage(map, format, fineness);
    if (bytes.size() <= kMostPictureBytes) break;
  }
  return bytes;
}

} // namespace gsl_view
