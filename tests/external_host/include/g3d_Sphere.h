#ifndef G3D_SPHERE_H
#define G3D_SPHERE_H

#include "g3d_Point.h"

class g3d_Sphere {
public:
  g3d_Sphere() : m_middle(0.0f, 0.0f, 0.0f, 1.0f), m_radius(0.0f) {}
  void Set(const g3d_Point& centre, float radius) {
    m_middle = centre;
    m_radius = radius;
  }

  const g3d_Point& xh_Middle() const { return m_middle; }
  float xh_Size() const { return m_radius; }

private:
  g3d_Point m_middle;
  float m_radius;
};

#endif
