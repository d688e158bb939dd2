#ifndef GSL_TOOLS_MESH_VIEW_H
#define GSL_TOOLS_MESH_VIEW_H

#include "Mesh.h"
#include "gsl_Sweep.h"

#include <vector>

namespace gsl_tools {

using gsl_arithmetic::Coord3;
using gsl_mesh::Mesh;
using gsl_sweep::TriangleView;

/// The triangles of a mesh, for as long as it is there and unchanged.
inline TriangleView ViewOf(const Mesh& mesh) {
  static_assert(sizeof(Coord3) == 3 * sizeof(double), "corners are numbers one after the other");
  TriangleView view;
  view.triangleCount = mesh.TriangleCount();
  view.vertexCount = 3 * view.triangleCount;
  view.vertices = mesh.corners.empty() ? nullptr : &mesh.corners.front().x;
  return view;
}

/// The triangles of nine numbers each, for as long as they are there and unchanged.
inline TriangleView ViewOf(const std::vector<double>& corners) {
  TriangleView view;
  view.triangleCount = corners.size() / 9;
  view.vertexCount = 3 * view.triangleCount;
  view.vertices = corners.data();
  return view;
}

} // namespace gsl_tools

#endif
