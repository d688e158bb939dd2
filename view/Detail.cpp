#include "Detail.h"

#include "Dimension.h"
#include "PictureStyle.h"
#include "ViewText.h"

#include <algorithm>
#include <cmath>

namespace gsl_view {

using gsl_arithmetic::Add;
using gsl_arithmetic::Cross;
using gsl_arithmetic::Multiply;
using gsl_arithmetic::Subtract;
using gsl_sweep::Contact;
using gsl_sweep::ContactKind;

namespace {

// The most triangles of a patch that are drawn for each body.
constexpr std::size_t kMostTriangles = 200;
// Nothing is shown that is further away than this many sizes of the smaller triangle.
constexpr double kWidest = 6.0;
// The least radius, times the size of the scene.
constexpr double kLeastRadius = 1e-7;
constexpr double kOpacity = 0.6;
constexpr double kLeastEnlargement = 2.5; // over the side view

double Distance(const Coord3& a, const Coord3& b) {
  const Coord3 d = Subtract(a, b);
  return std::hypot(d.x, d.y, d.z);
}

/// Returns the greatest distance of a corner.
double ReachOf(const DrawnTriangle& triangle, const Coord3& from) {
  double reach = 0.0;
  for (const Coord3& corner : triangle)
    reach = std::max(reach, Distance(corner, from));
  return reach;
}

/// Returns the unit normal of the first triangle; zero without a triangle or without area.
Coord3 NormalOf(const std::vector<DrawnTriangle>& triangles) {
  if (triangles.empty()) return {0.0, 0.0, 0.0};
  const DrawnTriangle& t = triangles.front();
  const double size = std::max(ReachOf(t, t[0]), ReachOf(t, t[1]));
  if (!(size > 0.0)) return {0.0, 0.0, 0.0};
  const Coord3 normal = Cross(gsl_arithmetic::Divide(Subtract(t[1], t[0]), size),
                              gsl_arithmetic::Divide(Subtract(t[2], t[0]), size));
  return gsl_arithmetic::Length(normal) > 1e-12 ? Unit(normal) : Coord3{0.0, 0.0, 0.0};
}

/// Returns the part of a polygon with a * x + b * y <= c.
std::vector<PagePoint> Below(const std::vector<PagePoint>& polygon, double a, double b, double c) {
  std::vector<PagePoint> kept;
  for (std::size_t k = 0; k < polygon.size(); ++k) {
    const PagePoint &p = polygon[k], &q = polygon[(k + 1) % polygon.size()];
    const double atP = a * p.x + b * p.y - c, atQ = a * q.x + b * q.y - c;
    if (atP <= 0.0) kept.push_back(p);
    if ((atP < 0.0 && atQ > 0.0) || (atP > 0.0 && atQ < 0.0)) {
      const double part = atP / (atP - atQ);
      kept.push_back({p.x + part * (q.x - p.x), p.y + part * (q.y - p.y)});
    }
  }
  return kept;
}

void DrawTriangles(Page& page, const View& view, const std::vector<DrawnTriangle>& triangles,
                   const Colour& colour) {
  const std::size_t count = std::min(triangles.size(), kMostTriangles);
  for (std::size_t k = count; k-- > 0;) {
    std::vector<PagePoint> corners;
    for (const Coord3& corner : triangles[k])
      corners.push_back(view.At(corner));
    corners = Clipped(corners, view.panel.Inner(-5.0));
    page.FillPolygon(corners, colour, kOpacity);
    page.DrawPolygon(corners, {k == 0 ? 0.35 : 0.18, kInk});
  }
}

void DrawNormal(Page& page, const View& view, const DrawnScene& drawn, const Contact& contact,
                double radius) {
  if (!contact.hasNormal) return;
  const PagePoint foot = view.At(drawn.fixedPoint);
  const PagePoint tip = view.At(Add(drawn.fixedPoint, Multiply(contact.normal, 0.62 * radius)));
  DrawArrow(page, foot, tip, {0.45, kInk});
  page.DrawText({tip.x + 1.4, tip.y + 1.0}, "n", {3.4, Align::Left, true, kInk});
}

void DrawPoints(Page& page, const View& view, const DrawnScene& drawn) {
  for (const Coord3& point : {drawn.fixedPoint, drawn.movingPoint}) {
    page.FillCircle(view.At(point), 1.1, {1.0, 1.0, 1.0});
    page.FillCircle(view.At(point), 0.8, {0.0, 0.0, 0.0});
  }
}

/// Returns the radius, in units of the scene, of what is worth showing of the triangles.
double RadiusOf(const DrawnScene& scene) {
  double least = 0.0, most = 0.0;
  for (const auto* const triangles : {&scene.movingTriangles, &scene.fixedTriangles}) {
    for (std::size_t k = 0; k < std::min(triangles->size(), kMostTriangles); ++k) {
      const double reach = ReachOf((*triangles)[k], scene.fixedPoint);
      if (reach > 0.0 && (least == 0.0 || reach < least)) least = reach;
      most = std::max(most, reach);
    }
  }
  if (!(most > 0.0)) return 0.02 * scene.size;
  // Below this only the rounding of the drawn coordinates would be seen.
  return std::max(1.15 * std::min(most, kWidest * least), kLeastRadius * scene.size);
}

/// Writes the lines of the legend, one under the other.
class Legend {
public:
  Legend(Page& page, const Rect& panel) : m_page(page), m_panel(panel), m_y(panel.top) {}

  void Write(const std::string& label, const std::string& value, const Colour* swatch) {
    m_y += 4.2;
    double left = m_panel.left;
    if (swatch != nullptr) {
      const Rect box{left, m_y - 2.2, left + 3.4, m_y};
      m_page.FillPolygon({{box.left, box.top},
                          {box.right, box.top},
                          {box.right, box.bottom},
                          {box.left, box.bottom}},
                         *swatch, 1.0);
      m_page.DrawBox(box, {0.15, kInk});
      left += 5.0;
    }
    m_page.DrawText({left, m_y}, label, kLabel);
    m_y += 4.0;
    m_page.DrawText({left, m_y}, m_page.Fitted(value, m_panel.right - left, kValue), kValue);
    m_y += 0.8;
  }

private:
  Page& m_page;
  Rect m_panel;
  double m_y;
};

std::string TriangleText(std::size_t triangle, std::size_t count) {
  return "triangle " + std::to_string(triangle) + " of " + std::to_string(count);
}

void DrawLegend(Page& page, const ViewScene& scene, const DrawnScene& drawn, const Rect& panel) {
  Legend legend(page, panel);
  const Contact& contact = scene.answer.contact;
  const ViewBody& fixed = scene.fixed.at(contact.fixedBody);
  if (!drawn.movingTriangles.empty()) {
    legend.Write("moving",
                 TriangleText(contact.movingTriangle, scene.moving.triangles.triangleCount),
                 &kMovingColour);
  }
  if (!drawn.fixedTriangles.empty()) {
    legend.Write("fixed", TriangleText(contact.fixedTriangle, fixed.triangles.triangleCount),
                 &kFixedColour);
  }
  if (contact.kind == ContactKind::Inside) {
    legend.Write("one body is inside the other", "no triangles touch", nullptr);
  }
  const char* const point = contact.kind == ContactKind::Inside ? "point of the inner body"
                            : scene.question.clearance > 0.0    ? "nearest point of the fixed body"
                                                                : "contact point";
  legend.Write(point, ShortVector(contact.fixedPoint), nullptr);
  if (contact.hasNormal) legend.Write("normal n", ShortVector(contact.normal), nullptr);
  if (scene.pairCount > 0) {
    legend.Write("patch",
                 std::to_string(scene.pairCount) + (scene.pairCount == 1 ? " pair" : " pairs") +
                     " of triangles, " +
                     (scene.patch.size() < scene.pairCount
                          ? "the first " + std::to_string(scene.patch.size()) + " "
                          : "") +
                     "dark in the views",
                 nullptr);
  }
}

} // namespace

std::vector<PagePoint> Clipped(const std::vector<PagePoint>& polygon, const Rect& box) {
  const auto isFinite = [](const PagePoint& p) { return std::isfinite(p.x) && std::isfinite(p.y); };
  if (!std::all_of(polygon.begin(), polygon.end(), isFinite)) return {};
  std::vector<PagePoint> kept = Below(polygon, 1.0, 0.0, box.right);
  kept = Below(kept, -1.0, 0.0, -box.left);
  kept = Below(kept, 0.0, 1.0, box.bottom);
  return Below(kept, 0.0, -1.0, -box.top);
}

View DetailView(const ViewScene& scene, const DrawnScene& drawn, const Rect& panel,
                double sideScale) {
  const Contact& contact = scene.answer.contact;
  const Coord3 normals[2] = {NormalOf(drawn.movingTriangles), NormalOf(drawn.fixedTriangles)};
  const double pageRadius = 0.5 * panel.Height();
  const double widest = pageRadius / (kLeastEnlargement * sideScale);
  View view;
  view.axes = AxesThatShow(normals, contact.hasNormal ? contact.normal : Coord3{0.0, 0.0, 0.0},
                           IsometricAxes(drawn.direction));
  view.scale = pageRadius / std::min(RadiusOf(drawn), widest);
  view.panel = {panel.left, panel.top, panel.left + 2.0 * pageRadius, panel.bottom};
  view.centreX = gsl_arithmetic::Dot(view.axes.right, drawn.fixedPoint);
  view.centreY = gsl_arithmetic::Dot(view.axes.up, drawn.fixedPoint);
  return view;
}

double DetailRadius(const View& detail) {
  return 0.5 * detail.panel.Height() / detail.scale;
}

void DrawDetail(Page& page, const ViewScene& scene, const DrawnScene& drawn, const View& view,
                const Rect& panel, double sideScale) {
  const double radius = 0.5 * view.panel.Height();
  const PagePoint centre = view.panel.Centre();
  page.FillAround(view.panel.Inner(-0.5), centre, radius, {1.0, 1.0, 1.0});
  page.FillCircle(centre, radius, {1.0, 1.0, 1.0}, 0.5);
  page.BeginClip(centre, radius);
  DrawTriangles(page, view, drawn.fixedTriangles, kFixedColour);
  DrawTriangles(page, view, drawn.movingTriangles, kMovingColour);
  DrawNormal(page, view, drawn, scene.answer.contact, DetailRadius(view));
  DrawPoints(page, view, drawn);
  page.EndClip();
  page.DrawCircle(centre, radius, kDetailPen);
  const double left = view.panel.right + 4.0;
  page.DrawText({left, panel.top + 3.0}, "Detail A", {3.6, Align::Left, true, kInk});
  page.DrawText({left + 19.0, panel.top + 3.0},
                RoughNumber(view.scale / sideScale) + " times the side view", kLabel);
  DrawLegend(page, scene, drawn, {left, panel.top + 4.5, panel.right, panel.bottom});
}

} // namespace gsl_view
