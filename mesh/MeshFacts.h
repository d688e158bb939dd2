#ifndef GSL_MESH_FACTS_H
#define GSL_MESH_FACTS_H

#include "Mesh.h"

#include <cstddef>
#include <vector>

namespace gsl_mesh {

/// What can be counted and measured of a mesh.
///
/// Vertices   corners with equal coordinates are one vertex; -0.0 equals 0.0. Nothing is rounded.
/// NaN        triangles with a NaN or infinite corner are counted, and take no further part.
/// Degenerate Whether a triangle has area is decided exactly. One with two equal corners has no
///            edges; any other has three, so that a triangle in one line can join two edges to the
///            longer edge beside them.
/// Measures   are rounded; an area or a volume beyond the range of double is infinite.
struct MeshFacts {
  std::size_t triangles = 0;  ///< of the mesh
  std::size_t notFinite = 0;  ///< with a NaN or infinite corner
  std::size_t degenerate = 0; ///< finite, and without area
  std::size_t duplicate = 0;  ///< with the three corners, in any order, of an earlier triangle

  std::size_t vertices = 0;
  std::size_t edges = 0;
  std::size_t openEdges = 0;        ///< used by one triangle
  std::size_t nonManifoldEdges = 0; ///< used by three or more
  std::size_t turnedEdges = 0;      ///< used by two in the same direction
  std::size_t components = 0;       ///< of triangles that common edges join

  /// The number of the first triangle of each kind, where there is one.
  std::size_t firstNotFinite = 0, firstDegenerate = 0, firstDuplicate = 0;
  std::size_t firstAtOpenEdge = 0, firstAtNonManifoldEdge = 0, firstAtTurnedEdge = 0;

  gsl_arithmetic::Coord3 low{0.0, 0.0, 0.0}, high{0.0, 0.0, 0.0}; ///< of the finite triangles
  double area = 0.0;
  /// With its sign: negative for a closed surface that is inside out. It is set only for a surface
  /// that is closed.
  double volume = 0.0;
  /// Of the volume, where that is not zero; otherwise of the area, or zero without area.
  gsl_arithmetic::Coord3 centroid{0.0, 0.0, 0.0};

  /// Every edge is used as often in one direction as in the other, and there is an edge.
  bool isClosed = false;
  /// No edge is used more often in one direction than in the other, but for open edges.
  bool isOriented = false;
};

/// Counts and measures. The time is that of sorting the edges.
///
/// Errors     std::length_error for more than 2^30 triangles.
MeshFacts FactsOf(const Mesh& mesh);

} // namespace gsl_mesh

#endif
