#include "SceneViews.h"

#include "PictureStyle.h"

#include <algorithm>
#include <cmath>

namespace gsl_view {

using gsl_arithmetic::Dot;
using gsl_arithmetic::Multiply;

namespace {

constexpr std::size_t kMostEdgeTriangles = 500000;
// Fixed bodies are shown up to this many sizes of the moving body and its travel beside it.
constexpr double kSurroundings = 1.5;
// Room for the dimension beside an upright travel, with its number, and beside one across.
constexpr double kRoomBeside = 39.0, kRoomAbove = 15.0;
constexpr double kNoExtent = 1e-6;    // times the size of the scene
constexpr double kLineDistance = 9.0; // of the dimension line from the bodies

Coord3 BackToStart(const DrawnScene& scene) {
  return Multiply(scene.direction, -scene.travel);
}

/// Returns the box of the moving body, at the contact and before its travel.
ViewBox SweptBox(const DrawnScene& scene, const Axes& axes) {
  const ViewBox box = BoxOf(scene.moving, axes);
  const Coord3 back = BackToStart(scene);
  ViewBox swept = box;
  swept.Add(box.Moved(Dot(axes.right, back), Dot(axes.up, back)));
  return swept;
}

/// Cuts the box to the surroundings of another, which has a point in common with it. `size` is that
/// of the scene.
bool CutTo(const ViewBox& around, double size, ViewBox& box) {
  const double extent = std::max(around.right - around.left, around.top - around.bottom);
  // Around a point that touches from the start there would be nothing to see.
  const double room = extent < kNoExtent * size ? 0.25 * size : kSurroundings * extent;
  const ViewBox before = box;
  box.left = std::max(box.left, around.left - room);
  box.right = std::min(box.right, around.right + room);
  box.bottom = std::max(box.bottom, around.bottom - room);
  box.top = std::min(box.top, around.top + room);
  return box.left != before.left || box.right != before.right || box.bottom != before.bottom ||
         box.top != before.top;
}

/// What is drawn as lines in one view.
struct ViewLines {
  Outline moving, fixed, before;
};

/// The rasters of a picture: the bodies, and the moving body before its travel alone.
struct Rasters {
  Raster bodies, before;
};

/// The second shape of a view: the moving body before its travel, or, where it touches from the
/// start, the body that may be inside the other.
struct SecondShape {
  const DrawnBody& body;
  const std::vector<BodyEdge>& edges;
  Coord3 shift;
};

SecondShape SecondShapeOf(const DrawnScene& scene, const SceneEdges& edges) {
  if (scene.hidesFixed) return {scene.fixed, edges.fixed, {0.0, 0.0, 0.0}};
  return {scene.moving, edges.moving, BackToStart(scene)};
}

void ShadeView(const DrawnScene& scene, const SceneEdges& edges, const BodyView& shown,
               Rasters& rasters) {
  const View& view = shown.view;
  const Coord3 none{0.0, 0.0, 0.0};
  rasters.bodies.Shade(scene.fixed.corners, none, view, kFixedColour, scene.fixed.isMarked,
                       kFixedMark);
  rasters.bodies.Shade(scene.moving.corners, none, view, kMovingColour, scene.moving.isMarked,
                       kMovingMark);
  if (!shown.showsBefore || !scene.touches) return;
  const SecondShape second = SecondShapeOf(scene, edges);
  rasters.before.Shade(second.body.corners, second.shift, view, kMovingColour, {}, kMovingColour);
}

/// Draws the outline of the second shape into the raster. Before a travel it is hidden by the
/// bodies; a body that may be inside the other is seen through it.
void TraceSecondShape(const DrawnScene& scene, const View& view, Rasters& rasters) {
  const bool isBefore = scene.travel > 0.0;
  const Colour inner = scene.hidesFixed ? kInnerPen.colour : kBeforeHiddenPen.colour;
  rasters.bodies.TraceOutlines(rasters.before, view.panel, isBefore ? kBeforePen.colour : inner,
                               isBefore ? Traced::Visible : Traced::All);
}

/// Finds the lines of a view. Where they are too many, draws them into the raster.
ViewLines LinesOf(const DrawnScene& scene, const SceneEdges& edges, const BodyView& shown,
                  std::size_t mostLines, Rasters& rasters) {
  const View& view = shown.view;
  const Coord3 none{0.0, 0.0, 0.0};
  ViewLines lines;
  lines.moving =
      OutlineOf(edges.moving, scene.moving.corners, none, view, rasters.bodies, rasters.bodies);
  lines.fixed =
      OutlineOf(edges.fixed, scene.fixed.corners, none, view, rasters.bodies, rasters.bodies);
  if (shown.showsBefore && scene.touches) {
    const SecondShape second = SecondShapeOf(scene, edges);
    lines.before = OutlineOf(second.edges, second.body.corners, second.shift, view, rasters.before,
                             rasters.bodies);
    // What is visible is drawn as part of the body.
    if (!(scene.travel > 0.0)) lines.before.visible.clear();
  }
  const bool areTooMany =
      std::max(lines.moving.visible.size(), lines.fixed.visible.size()) > mostLines;
  const bool isBeforeTooMany = lines.before.visible.size() + lines.before.hidden.size() > mostLines;
  const bool hasSecond = scene.hidesFixed ? edges.hasFixed : edges.hasMoving;
  if (shown.showsBefore && scene.touches && (isBeforeTooMany || !hasSecond)) {
    TraceSecondShape(scene, view, rasters);
    lines.before = {};
  }
  if (areTooMany || !edges.hasMoving || !edges.hasFixed) {
    rasters.bodies.TraceOutlines(rasters.bodies, view.panel, kInk);
    if (lines.moving.visible.size() > mostLines) lines.moving = {};
    if (lines.fixed.visible.size() > mostLines) lines.fixed = {};
  }
  return lines;
}

} // namespace

SceneEdges FindSceneEdges(const DrawnScene& scene) {
  SceneEdges edges;
  edges.hasMoving = scene.moving.isMarked.size() <= kMostEdgeTriangles;
  edges.hasFixed = scene.fixed.isMarked.size() <= kMostEdgeTriangles;
  if (edges.hasMoving) edges.moving = FindEdges(scene.moving.corners);
  if (edges.hasFixed) edges.fixed = FindEdges(scene.fixed.corners);
  return edges;
}

View IsometricView(const DrawnScene& scene, const Rect& panel) {
  const Axes axes = IsometricAxes(scene.direction);
  ViewBox box = SweptBox(scene, axes);
  box.Add(BoxOf(scene.fixed, axes));
  return FitView(axes, box, panel);
}

SideView SideViewOf(const DrawnScene& scene, const Rect& panel) {
  SideView side;
  const Axes axes = SideAxes(scene.direction);
  side.isUpright = std::fabs(Dot(axes.up, scene.direction)) > 0.5;
  const ViewBox swept = SweptBox(scene, axes);
  ViewBox box = BoxOf(scene.fixed, axes);
  if (scene.touches) {
    ViewBox around = swept;
    around.Add(Dot(axes.right, scene.fixedPoint), Dot(axes.up, scene.fixedPoint));
    side.isCut = CutTo(around, scene.size, box);
  }
  box.Add(swept);
  if (!(scene.travel > 0.0)) {
    side.view = FitView(axes, box, panel);
    return side;
  }
  // The dimension is on the side of the contact that has less of the bodies between.
  const double across = Dot(side.isUpright ? axes.right : axes.up, scene.fixedPoint);
  const double middle =
      side.isUpright ? 0.5 * (box.left + box.right) : 0.5 * (box.bottom + box.top);
  const bool isAfter = side.isUpright ? across >= middle : across < middle;
  Rect inner = panel;
  if (side.isUpright)
    (isAfter ? inner.right : inner.left) += isAfter ? -kRoomBeside : kRoomBeside;
  else
    (isAfter ? inner.bottom : inner.top) += isAfter ? -kRoomAbove : kRoomAbove;
  side.view = FitView(axes, box, inner);
  const PagePoint centre = inner.Centre();
  const double half =
      0.5 * side.view.scale * (side.isUpright ? box.right - box.left : box.top - box.bottom);
  side.line =
      (side.isUpright ? centre.x : centre.y) + (isAfter ? 1.0 : -1.0) * (half + kLineDistance);
  return side;
}

void DrawBodies(Page& page, const DrawnScene& scene, const SceneEdges& edges,
                const std::vector<BodyView>& views, const Rect& area, const Fineness& fineness) {
  Rasters rasters{Raster(area, fineness.pixelsPerMillimetre),
                  Raster(area, fineness.pixelsPerMillimetre)};
  for (const BodyView& view : views)
    ShadeView(scene, edges, view, rasters);
  std::vector<ViewLines> lines;
  lines.reserve(views.size());
  for (const BodyView& view : views)
    lines.push_back(LinesOf(scene, edges, view, fineness.mostLines, rasters));
  page.DrawRaster(rasters.bodies);
  for (const ViewLines& ofView : lines) {
    page.DrawLines(ofView.fixed.visible, kEdgePen);
    page.DrawLines(ofView.moving.visible, kEdgePen);
    page.DrawLines(ofView.before.hidden, scene.hidesFixed ? kInnerPen : kBeforeHiddenPen);
    page.DrawLines(ofView.before.visible, kBeforePen);
  }
}

} // namespace gsl_view
