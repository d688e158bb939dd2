#include "readers/FaceCollector.h"

namespace gsl_mesh {

void FaceCollector::Add(const gsl_arithmetic::Coord3* ring, std::size_t count,
                        const char* position) {
  if (count < 3) {
    if (m_leftOut++ == 0) m_firstLeftOut = m_faces;
    ++m_faces;
    return;
  }
  ++m_faces;
  if (count == 3) {
    m_mesh.corners.insert(m_mesh.corners.end(), ring, ring + 3);
    return;
  }
  const auto* triangles = m_triangulator.Triangulate(ring, count);
  if (triangles == nullptr) {
    const std::string message =
        "a face with " + std::to_string(count) + " corners is too winding to be cut into triangles";
    if (position == nullptr) FailRead(m_source, message);
    FailReadAt(m_source, position, message);
  }
  for (const auto& triangle : *triangles) {
    for (const std::size_t k : triangle)
      m_mesh.corners.push_back(ring[k]);
  }
}

void FaceCollector::Finish() {
  if (m_leftOut == 0) return;
  Warn(m_mesh, m_source,
       "left out " + std::to_string(m_leftOut) + (m_leftOut == 1 ? " face" : " faces") +
           " of fewer than three corners, the first is face " + std::to_string(m_firstLeftOut) +
           " (counted from 0)");
}

} // namespace gsl_mesh
