#ifndef GSL_VIEW_FEATURE_EDGES_H
#define GSL_VIEW_FEATURE_EDGES_H

#include "Projection.h"

#include <cstdint>
#include <vector>

namespace gsl_view {

/// An edge of a surface. The numbers are those of corners.
struct BodyEdge {
  std::uint32_t from = 0, to = 0;
  std::uint32_t left = 0, right = 0; ///< the other corners of its two triangles
  bool isFeature = false; ///< drawn from every side: sharp, open, or of more than two triangles
};

/// Finds the edges of triangles, each once, in no order that means anything. Equal corners are one;
/// -0.0 equals 0.0. An edge is sharp when its triangles are bent by more than 29 degrees. The
/// orientation of triangles does not matter. A triangle with two equal corners has no edges.
std::vector<BodyEdge> FindEdges(const std::vector<Coord3>& corners);

/// Returns whether an edge is part of the outline seen against `toward`: a feature, or both of its
/// triangles are on the same side of it.
bool IsDrawn(const BodyEdge& edge, const std::vector<Coord3>& corners, const Coord3& toward);

} // namespace gsl_view

#endif
