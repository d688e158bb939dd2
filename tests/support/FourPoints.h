#ifndef TESTS_FOUR_POINTS_H
#define TESTS_FOUR_POINTS_H

#include "RandomNumbers.h"
#include "gsl_Arithmetic.h"

#include <cmath>
#include <cstdint>

/// Four points and tolerances for the distances of points, triangles and segments: anywhere, on a
/// lattice, near the borders between the kinds of answers, of any size, and far from the origin.
class FourPoints {
public:
  using Coord3 = gsl_arithmetic::Coord3;

  Coord3 p[4];
  double linearTolerance = 0.0;
  double cosineTolerance = 0.0;

  explicit FourPoints(std::uint64_t seed) : m_random(seed) {}

  void Draw() {
    m_kind = m_random.Below(9);
    m_size = PowerOfTen(-5.0, 3.0);
    const bool isFar = m_random.Below(2) == 0;
    for (double& centre : m_centre)
      centre = isFar ? m_random.In(-1.0, 1.0) * PowerOfTen(-3.0, 5.0) : 0.0;
    if (m_kind == 7) {
      m_size = PowerOfTen(-160.0, 160.0);
      m_centre[0] = m_centre[1] = m_centre[2] = 0.0;
    }
    for (Coord3& point : p) {
      point.x = Coordinate(0);
      point.y = Coordinate(1);
      point.z = Coordinate(2);
    }
    const double tolerances[] = {1e-6,
                                 1e-6,
                                 1e-6,
                                 PowerOfTen(-12.0, 1.0),
                                 PowerOfTen(-8.0, -3.0),
                                 m_random.Below(4) == 0 ? -1e-3 : 0.0};
    linearTolerance = tolerances[m_random.Below(6)];
    cosineTolerance = m_random.Below(4) == 0 ? PowerOfTen(-12.0, 0.0) : 1e-10;
    MoveToABorder();
  }

private:
  double PowerOfTen(double low, double high) { return std::pow(10.0, m_random.In(low, high)); }
  double Whole() { return m_random.Below(5) - 2.0; }

  double Coordinate(int axis) {
    const double part = m_random.In(-1.0, 1.0);
    double c = part;
    if (m_kind == 0) c = Whole();
    if (m_kind == 1) c = Whole() + part * 1e-6;
    if (m_kind == 2) c = Whole() + part * PowerOfTen(-16.0, -2.0);
    if (m_kind == 8) c = m_random.Below(20) == 0 ? m_random.Hostile() : part;
    return c * m_size + m_centre[axis];
  }

  /// A position along an edge: an end, the middle, near an end, or anywhere.
  double Position() {
    const double near = m_random.In(-1e-6, 1e-6);
    const double positions[] = {0.0, 1.0, 0.5, near, 1.0 + near, m_random.In(-0.5, 1.5)};
    return positions[m_random.Below(6)];
  }

  static Coord3 Between(const Coord3& a, const Coord3& b, double t) {
    return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t};
  }

  void MoveToABorder() {
    const double aside = m_random.In(-3.0, 3.0) * linearTolerance;
    switch (m_random.Below(8)) {
    case 0:
      p[3] = Between(p[0], p[1], Position());
      break;
    case 1:
      p[3] = Between(Between(p[0], p[1], Position()), p[2], Position());
      break;
    case 2:
      p[2] = Between(p[0], p[1], Position());
      break;
    case 3:
      p[3] = Between(p[0], p[1], m_random.Unit());
      p[3].x += aside;
      p[3].y -= aside;
      break;
    case 4:
      p[2] = p[0];
      p[2].x += m_random.In(-1e-6, 1e-6) * m_size;
      break;
    case 5:
      // The second segment is nearly parallel to the first.
      p[3] = {p[2].x + (p[1].x - p[0].x), p[2].y + (p[1].y - p[0].y), p[2].z + (p[1].z - p[0].z)};
      p[3].x += m_random.In(-1.0, 1.0) * PowerOfTen(-12.0, -1.0) * m_size;
      break;
    case 6:
      for (Coord3& point : p)
        point.z = m_centre[2];
      if (m_random.Below(2) == 0) p[3].z += aside;
      break;
    default:
      break;
    }
  }

  RandomNumbers m_random;
  int m_kind = 0;
  double m_size = 1.0;
  double m_centre[3] = {};
};

#endif
