#ifndef GSL_VIEW_PROJECTION_H
#define GSL_VIEW_PROJECTION_H

#include "gsl_Arithmetic.h"

/// Parallel projections of a scene onto the page.
namespace gsl_view {

using gsl_arithmetic::Coord3;

/// A place on the page, in millimetres from its upper left corner; y points down.
struct PagePoint {
  double x = 0.0, y = 0.0;
};

/// A part of the page.
struct Rect {
  double left = 0.0, top = 0.0, right = 0.0, bottom = 0.0;

  double Width() const { return right - left; }
  double Height() const { return bottom - top; }
  PagePoint Centre() const { return {0.5 * (left + right), 0.5 * (top + bottom)}; }
  /// Returns the rectangle without a border of this width.
  Rect Inner(double border) const {
    return {left + border, top + border, right - border, bottom - border};
  }
};

/// Three unit vectors at right angles: to the right on the page, up, and towards the viewer.
struct Axes {
  Coord3 right, up, toward;
};

/// Returns v with length 1, for any length that is not zero and finite.
Coord3 Unit(const Coord3& v);

/// Returns the axes that look against `toward`, a unit vector. The z axis points up on the page;
/// when `toward` is along z, the y axis does.
Axes AxesToward(const Coord3& toward);

/// Returns the axes of an isometric view from above, in which the unit direction is not seen
/// end-on.
Axes IsometricAxes(const Coord3& direction);

/// Returns axes across the unit direction, which lies along one side of the page: upright when it
/// is closer than 45 degrees to the z axis.
Axes SideAxes(const Coord3& direction);

/// Returns axes from which surfaces with these unit normals, and a line along this unit vector, are
/// seen well: the preferred axes when they are good enough. A zero vector does not count.
Axes AxesThatShow(const Coord3 (&normals)[2], const Coord3& line, const Axes& preferred);

/// A box of local coordinates in the plane of a view.
struct ViewBox {
  double left = 0.0, bottom = 0.0, right = 0.0, top = 0.0;
  bool isEmpty = true;

  void Add(double x, double y);
  void Add(const ViewBox& other);
  ViewBox Moved(double x, double y) const;
};

/// Where coordinates of the scene appear on the page.
struct View {
  Axes axes;
  double scale = 1.0;                  ///< millimetres for a unit of the scene
  double centreX = 0.0, centreY = 0.0; ///< in the plane of the view, at the centre of the panel
  Rect panel;                          ///< nothing is drawn outside

  PagePoint At(const Coord3& p) const;
  double Depth(const Coord3& p) const; ///< in millimetres; greater is nearer
};

/// Returns the view in which the box fills the panel. A box without extent has the scale 1.
View FitView(const Axes& axes, const ViewBox& box, const Rect& panel);

} // namespace gsl_view

#endif
