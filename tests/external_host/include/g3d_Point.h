#ifndef G3D_POINT_H
#define G3D_POINT_H

/// Four numbers in an array, as a graphics card takes them.
class g3d_Point {
public:
  g3d_Point(float x, float y, float z, float w) : m_values{x, y, z, w} {}
  float xh_Value(int i) const { return m_values[i]; }

private:
  float m_values[4];
};

#endif
