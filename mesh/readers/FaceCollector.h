#ifndef GSL_MESH_FACE_COLLECTOR_H
#define GSL_MESH_FACE_COLLECTOR_H

#include "MeshPolygon.h"
#include "MeshSource.h"

#include <cstddef>

namespace gsl_mesh {

/// Takes faces in file order and appends their triangles to a mesh.
class FaceCollector {
public:
  FaceCollector(const MeshSource& source, Mesh& mesh) : m_source(source), m_mesh(mesh) {}

  /// Appends the triangles of one face; messages name the line of `position` if it is not null.
  void Add(const gsl_arithmetic::Coord3* ring, std::size_t count, const char* position);

  /// Writes the warning about faces that were left out.
  void Finish();

private:
  const MeshSource& m_source;
  Mesh& m_mesh;
  PolygonTriangulator m_triangulator;
  std::size_t m_faces = 0;
  std::size_t m_leftOut = 0;
  std::size_t m_firstLeftOut = 0;
};

} // namespace gsl_mesh

#endif
