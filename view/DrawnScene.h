#ifndef GSL_VIEW_DRAWN_SCENE_H
#define GSL_VIEW_DRAWN_SCENE_H

#include "Projection.h"
#include "ViewScene.h"

#include <array>
#include <vector>

namespace gsl_view {

/// Three corners, in the coordinates of a drawn scene.
using DrawnTriangle = std::array<Coord3, 3>;

/// The finite triangles of a body, or of all fixed bodies.
struct DrawnBody {
  std::vector<Coord3> corners;         ///< three for each triangle
  std::vector<unsigned char> isMarked; ///< for each triangle: it belongs to the patch
};

/// A scene in coordinates that can be drawn: shifted and scaled to a size of about 1, whatever the
/// sizes of its numbers are. The moving body is at its contact; without a contact it is where it
/// was before any travel.
struct DrawnScene {
  DrawnBody moving, fixed;
  Coord3 direction{0.0, 0.0, 0.0}; ///< of length one
  bool touches = false;            ///< there is a contact, also from the start
  double travel = 0.0;             ///< as drawn; 0 without a travel
  /// The travel is drawn shorter than it is, because it is much longer than the bodies.
  bool isShortened = false;
  bool hidesFixed = false; ///< a fixed body is inside the moving body
  double size = 1.0;       ///< the diagonal of the box around both bodies; positive
  Coord3 movingPoint{0.0, 0.0, 0.0}, fixedPoint{0.0, 0.0, 0.0}; ///< at the contact
  /// The triangles that touch, and the listed pairs of the patch. For an Inside contact one of the
  /// two lists is empty.
  std::vector<DrawnTriangle> movingTriangles, fixedTriangles;
};

/// Returns the scene as it is drawn. Triangles with a NaN or infinite corner are left out.
DrawnScene MakeDrawnScene(const ViewScene& scene);

/// Returns the box of a body in the plane of a view.
ViewBox BoxOf(const DrawnBody& body, const Axes& axes);

} // namespace gsl_view

#endif
