#ifndef GSL_VIEW_SCENE_VIEWS_H
#define GSL_VIEW_SCENE_VIEWS_H

#include "DrawnScene.h"
#include "FeatureEdges.h"
#include "Page.h"

#include <vector>

namespace gsl_view {

/// How fine a picture is.
struct Fineness {
  double pixelsPerMillimetre = kPixelsPerMillimetre;
  std::size_t mostLines = 3000; ///< of one outline; beyond, it becomes part of the pixels
};

/// The edges of both bodies, which every view uses. A body with too many triangles has none, and
/// its outlines are found in the pixels.
struct SceneEdges {
  std::vector<BodyEdge> moving, fixed;
  bool hasMoving = true, hasFixed = true;
};

/// Returns the edges of bodies of at most 500000 triangles.
SceneEdges FindSceneEdges(const DrawnScene& scene);

/// Returns the isometric view in a panel. It has room for both bodies, and for the moving body
/// before its travel.
View IsometricView(const DrawnScene& scene, const Rect& panel);

/// The side view, and where its dimension is.
struct SideView {
  View view;
  bool isUpright = true; ///< the direction is upright on the page
  double line = 0.0;     ///< x of an upright dimension line, else y of a line across
  bool isCut = false;    ///< a part of the fixed bodies is outside
};

/// Returns the side view in a panel, with room for the dimension. Fixed bodies that are far larger
/// than the moving body and its travel are cut off.
SideView SideViewOf(const DrawnScene& scene, const Rect& panel);

/// A view, and whether it shows the outline of the moving body before its travel.
struct BodyView {
  View view;
  bool showsBefore = true;
};

/// Draws what the views show of the bodies: their surfaces as one raster of this part of the page,
/// then their outlines.
void DrawBodies(Page& page, const DrawnScene& scene, const SceneEdges& edges,
                const std::vector<BodyView>& views, const Rect& area, const Fineness& fineness);

} // namespace gsl_view

#endif
