#ifndef G3D_POINT_H
#define G3D_POINT_H

#include "mem_Export.h"

/// Homogeneous point of the display library, single precision.
class GSL_HOST_API g3d_Point {
public:
  float x; ///< first coordinate
  float y; ///< second coordinate
  float z; ///< third coordinate
  float w; ///< fourth coordinate, 1 unless it is given

  /// Makes the origin, with w = 1.
  constexpr g3d_Point() noexcept : x(0.0f), y(0.0f), z(0.0f), w(1.0f) {}
  /// The point has these coordinates.
  constexpr g3d_Point(float xValue, float yValue, float zValue, float wValue = 1.0f) noexcept
      : x(xValue), y(yValue), z(zValue), w(wValue) {}

  /// Compare all four values exactly.
  [[nodiscard]] friend constexpr bool operator==(const g3d_Point& a, const g3d_Point& b) noexcept {
    return a.x == b.x && a.y == b.y && a.z == b.z && a.w == b.w;
  }
  [[nodiscard]] friend constexpr bool operator!=(const g3d_Point& a, const g3d_Point& b) noexcept {
    return !(a == b);
  }
};

#endif
