#include "Picture.h"

#include "Detail.h"
#include "Dimension.h"
#include "PictureStyle.h"
#include "SceneViews.h"
#include "TitleBlock.h"
#include "ViewText.h"

#include <algorithm>
#include <cmath>

namespace gsl_view {

using gsl_arithmetic::Add;
using gsl_arithmetic::Dot;
using gsl_arithmetic::Multiply;

namespace {

constexpr Rect kFrame = PictureFrame();
constexpr double kBlockTop = 172.0, kMiddle = 148.0, kDetailTop = 116.0;
constexpr Rect kIsoPanel{kFrame.left, kFrame.top, kMiddle, kBlockTop};
constexpr Rect kSidePanel{kMiddle, kFrame.top, kFrame.right, kDetailTop};
constexpr Rect kDetailPanel{kMiddle, kDetailTop, kFrame.right, kBlockTop};
constexpr Rect kBlock{kFrame.left, kBlockTop, kFrame.right, kFrame.bottom};

// From the finest to the coarsest. The last has no lines of bodies and few pixels.
constexpr Fineness kFinenesses[] = {{kPixelsPerMillimetre, 3000},
                                    {kPixelsPerMillimetre, 800},
                                    {0.6 * kPixelsPerMillimetre, 800},
                                    {0.4 * kPixelsPerMillimetre, 200},
                                    {0.2 * kPixelsPerMillimetre, 0}};

/// Draws the axes of the coordinates, and the direction, in the corner of a panel.
void DrawTriad(Page& page, const Axes& axes, const PagePoint& centre, const Coord3& direction) {
  constexpr double kLength = 7.0;
  const auto tipOf = [&](const Coord3& v, double length) {
    return PagePoint{centre.x + length * Dot(axes.right, v), centre.y - length * Dot(axes.up, v)};
  };
  const TextStyle style{2.6, Align::Middle, false, kPale};
  const struct {
    Coord3 axis;
    const char* name;
  } rows[] = {{{1.0, 0.0, 0.0}, "x"}, {{0.0, 1.0, 0.0}, "y"}, {{0.0, 0.0, 1.0}, "z"}};
  for (const auto& row : rows) {
    const PagePoint tip = tipOf(row.axis, kLength);
    // An axis that is seen end-on has no name.
    if (std::hypot(tip.x - centre.x, tip.y - centre.y) < 1.5) continue;
    page.DrawLine(centre, tip, {0.2, kPale});
    const PagePoint name = tipOf(row.axis, kLength + 2.0);
    page.DrawText({name.x, name.y + 0.9}, row.name, style);
  }
  const PagePoint tip = tipOf(direction, kLength);
  DrawArrow(page, centre, tip, {0.5, kInk});
}

/// Marks the place of the contact with a circle and the letter of the detail.
void MarkDetail(Page& page, const DrawnScene& drawn, const View& detail, const View& view) {
  const PagePoint at = view.At(drawn.fixedPoint);
  const double radius = std::clamp(DetailRadius(detail) * view.scale, 2.0, 7.0);
  page.DrawCircle(at, radius, {0.9, {1.0, 1.0, 1.0}});
  page.DrawCircle(at, radius, kDetailPen);
  const PagePoint name{at.x + 0.75 * radius + 1.0, at.y - 0.75 * radius - 0.8};
  page.FillCircle({name.x + 1.3, name.y - 1.3}, 2.1, {1.0, 1.0, 1.0});
  page.DrawText(name, "A", {3.6, Align::Left, true, kInk});
}

/// Draws an arrow from where the contact point was to where it is.
void DrawPath(Page& page, const DrawnScene& drawn, const View& view) {
  const PagePoint to = view.At(drawn.movingPoint);
  const PagePoint from = view.At(Add(drawn.movingPoint, Multiply(drawn.direction, -drawn.travel)));
  if (std::hypot(to.x - from.x, to.y - from.y) < 4.0) return;
  page.DrawLine(from, to, {1.1, {1.0, 1.0, 1.0}});
  DrawArrow(page, from, to, {0.45, kInk});
  page.FillCircle(from, 0.7, kInk);
}

void DrawTravel(Page& page, const ViewScene& scene, const DrawnScene& drawn, const SideView& side) {
  Dimension dimension;
  dimension.to = side.view.At(drawn.movingPoint);
  dimension.from = side.view.At(Add(drawn.movingPoint, Multiply(drawn.direction, -drawn.travel)));
  dimension.isUpright = side.isUpright;
  dimension.line = side.line;
  dimension.text = ShortNumber(scene.answer.contact.travel);
  dimension.isBroken = drawn.isShortened;
  dimension.bounds = kSidePanel.Inner(2.0);
  DrawDimension(page, dimension);
}

void DrawSideNotes(Page& page, const ViewScene& scene, const DrawnScene& drawn,
                   const SideView& side) {
  const double line = kSidePanel.top + 5.0;
  std::string label = "Side view, across the direction";
  if (side.isCut && scene.fixed.size() > 1) {
    label += "; a part of the fixed bodies is cut off";
  } else if (side.isCut) {
    label += "; the fixed body is cut off";
  }
  page.DrawText({kSidePanel.left + 3.0, line}, label, kLabel);
  if (drawn.travel > 0.0) return;
  // Nothing else shows the direction.
  const PagePoint middle{kSidePanel.right - 8.0, line - 1.0};
  const Axes& axes = side.view.axes;
  const double x = 3.0 * Dot(axes.right, drawn.direction);
  const double y = -3.0 * Dot(axes.up, drawn.direction);
  DrawArrow(page, {middle.x - x, middle.y - y}, {middle.x + x, middle.y + y}, {0.4, kInk});
  page.DrawText({middle.x - 5.0, line}, drawn.touches ? "travel 0 along" : "direction",
                {drawn.touches ? 3.6 : 2.6, Align::Right, drawn.touches, kInk});
}

/// Puts a circle with a name around a body that is hardly seen.
void MarkSmallBody(Page& page, const DrawnBody& body, const View& view, const std::string& name) {
  const ViewBox box = BoxOf(body, view.axes);
  const double size = view.scale * std::max(box.right - box.left, box.top - box.bottom);
  if (box.isEmpty || size > 3.0) return;
  const PagePoint middle = view.panel.Centre();
  const PagePoint at{middle.x + view.scale * (0.5 * (box.left + box.right) - view.centreX),
                     middle.y - view.scale * (0.5 * (box.bottom + box.top) - view.centreY)};
  page.DrawCircle(at, 3.0, kDetailPen);
  page.DrawText({at.x, at.y - 4.2}, name, {2.6, Align::Middle, false, kInk});
}

void DrawNoDetail(Page& page, const ViewScene& scene) {
  const PagePoint centre = kDetailPanel.Centre();
  page.DrawText({centre.x, centre.y}, HeadlineOf(scene), {5.0, Align::Middle, true, kInk});
  page.DrawText({centre.x, centre.y + 6.0}, "The bodies are shown before any travel.",
                {3.0, Align::Middle, false, kPale});
}

void DrawFrames(Page& page) {
  page.DrawBox(kFrame, {0.5, kInk});
  page.DrawLine({kMiddle, kFrame.top}, {kMiddle, kBlockTop}, kFramePen);
  page.DrawLine({kMiddle, kDetailTop}, {kFrame.right, kDetailTop}, kFramePen);
}

/// Explains the lines of the isometric view, in its lower left corner.
void DrawIsometricNotes(Page& page, const ViewScene& scene, const DrawnScene& drawn) {
  const double bottom = kIsoPanel.bottom - 3.5;
  std::string label = "Isometric view";
  if (drawn.touches) {
    label += scene.question.clearance > 0.0 ? ", at the clearance" : ", at the contact";
  }
  page.DrawText({kIsoPanel.left + 3.0, bottom}, label, kLabel);
  if (!(drawn.travel > 0.0)) return;
  page.DrawLine({kIsoPanel.left + 53.0, bottom - 0.9}, {kIsoPanel.left + 61.0, bottom - 0.9},
                kBeforePen);
  page.DrawText({kIsoPanel.left + 63.0, bottom}, "before the travel", kLabel);
}

std::string NoteOf(const DrawnScene& drawn) {
  return drawn.isShortened ? "travel drawn shorter" : "";
}

std::string DrawPage(const ViewScene& scene, const DrawnScene& drawn, const SceneEdges& edges,
                     PictureFormat format, const Fineness& fineness) {
  Page page(format, kPageWidth, kPageHeight);
  Rect iso = kIsoPanel.Inner(9.0);
  iso.top += 9.0;
  iso.bottom -= 10.0;
  const View isometric = IsometricView(drawn, iso);
  Rect sideRoom = kSidePanel.Inner(6.0);
  sideRoom.top += 4.0;
  sideRoom.bottom -= 2.0;
  const SideView side = SideViewOf(drawn, sideRoom);
  std::vector<BodyView> views = {{isometric, true}, {side.view, true}};
  View detail;
  if (drawn.touches) {
    detail = DetailView(scene, drawn, kDetailPanel.Inner(4.0), side.view.scale);
    views.push_back({detail, false});
  }
  DrawBodies(page, drawn, edges, views, {kFrame.left, kFrame.top, kFrame.right, kBlockTop},
             fineness);
  DrawFrames(page);
  page.DrawText({kIsoPanel.left + 3.0, kIsoPanel.top + 8.0}, HeadlineOf(scene),
                {5.2, Align::Left, true, kInk});
  DrawIsometricNotes(page, scene, drawn);
  DrawTriad(page, isometric.axes, {kIsoPanel.right - 13.0, kIsoPanel.bottom - 13.0},
            drawn.direction);
  DrawSideNotes(page, scene, drawn, side);
  if (drawn.travel > 0.0) DrawPath(page, drawn, isometric);
  if (drawn.touches) {
    MarkDetail(page, drawn, detail, isometric);
    MarkDetail(page, drawn, detail, side.view);
  }
  if (drawn.travel > 0.0) DrawTravel(page, scene, drawn, side);
  if (drawn.touches) {
    DrawDetail(page, scene, drawn, detail, kDetailPanel.Inner(4.0), side.view.scale);
  } else {
    for (const View& view : {isometric, side.view}) {
      MarkSmallBody(page, drawn.moving, view, "moving");
      MarkSmallBody(page, drawn.fixed, view, "fixed");
    }
    DrawNoDetail(page, scene);
  }
  DrawTitleBlock(page, scene, kBlock, NoteOf(drawn));
  return page.Finish();
}

} // namespace

std::string DrawPicture(const ViewScene& scene, PictureFormat format) {
  const DrawnScene drawn = MakeDrawnScene(scene);
  const SceneEdges edges = FindSceneEdges(drawn);
  std::string bytes;
  for (const Fineness& fineness : kFinenesses) {
    bytes = DrawPage(scene, drawn, edges, format, fineness);
    if (bytes.size() <= kMostPictureBytes) break;
  }
  return bytes;
}

} // namespace gsl_view
