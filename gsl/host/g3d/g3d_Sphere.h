#ifndef G3D_SPHERE_H
#define G3D_SPHERE_H

#include "g3d_Point.h"

/// Bounding sphere of the display library, single precision.
class GSL_HOST_API g3d_Sphere {
public:
  /// Makes a sphere about the origin with radius 0.
  constexpr g3d_Sphere() noexcept : m_radius(0.0f) {}

  /// Nothing is checked; a negative radius marks an empty extent.
  void Set(const g3d_Point& newCentre, float newRadius) noexcept {
    m_centre = newCentre;
    m_radius = newRadius;
  }

  constexpr const g3d_Point& Centre() const noexcept { return m_centre; }
  constexpr float Radius() const noexcept { return m_radius; }

private:
  g3d_Point m_centre;
  float m_radius;
};

#endif
