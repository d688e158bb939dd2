#include "Grown.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace gsl_sweep {

using gsl_arithmetic::Add;
using gsl_arithmetic::Cross;
using gsl_arithmetic::Dot;
using gsl_arithmetic::Length;
using gsl_arithmetic::Multiply;
using gsl_arithmetic::Subtract;

namespace {

/// A direction in which a corner need not move: the mean square by which the planes around it are
/// off falls by less than this part of e squared if it does. So planes that were meant to be one,
/// and differ by rounding, move no corner along them.
constexpr double kLeastGain = 1e-8;

/// The least eigenvalue, as a part of the sum of all, that is not taken for a rounded zero.
constexpr double kLeastEigenvalue = 1e-14;

int Next(int k) {
  return k == 2 ? 0 : k + 1;
}

bool IsFinite(const Coord3& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

std::string TextOf(double c) {
  char digits[32];
  const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, c);
  return {digits, end.ptr};
}

/// Returns a vector divided by a power of two, so that its largest component is from 1/2 to 1.
Coord3 Scaled(const Coord3& v) {
  int exponent = 0;
  std::frexp(std::max({std::fabs(v.x), std::fabs(v.y), std::fabs(v.z)}), &exponent);
  return {std::ldexp(v.x, -exponent), std::ldexp(v.y, -exponent), std::ldexp(v.z, -exponent)};
}

/// Returns the cross product of two edges of a triangle, without its size. It is zero for a
/// triangle without area.
Coord3 NormalOf(const Coord3& a, const Coord3& b, const Coord3& c) {
  // The halves do not overflow.
  const auto edge = [](const Coord3& from, const Coord3& to) {
    return Scaled(Subtract(Multiply(to, 0.5), Multiply(from, 0.5)));
  };
  const Coord3 n = Cross(edge(a, b), edge(a, c));
  return Length(n) > 0.0 ? Scaled(n) : Coord3{0.0, 0.0, 0.0};
}

/// Returns the angle between two vectors, up to a few units in its last place, with the same bits
/// on every machine.
//
// The tangent of half the angle is |u x v| / (|u| |v| + u . v). Halving the angle three times more
// makes the tangent at most 1/5, where eleven terms of the series leave less than 2^-53.
double AngleBetween(const Coord3& a, const Coord3& b) {
  const Coord3 u = Scaled(a);
  const Coord3 v = Scaled(b);
  const double across = Length(Cross(u, v));
  const double along = std::max(Length(u) * Length(v) + Dot(u, v), 0.0);
  double t = across / (along + std::sqrt(along * along + across * across));
  for (int k = 0; k < 2; ++k)
    t = t / (1.0 + std::sqrt(1.0 + t * t));
  double sum = 0.0;
  for (int k = 21; k > 0; k -= 2)
    sum = ((k & 2) == 0 ? 1.0 : -1.0) / k + t * t * sum;
  return 16.0 * t * sum;
}

/// The eigenvectors of a symmetric matrix of three rows, by Jacobi's rotations. A diagonal matrix
/// is not changed.
class Eigen {
public:
  explicit Eigen(const double (&matrix)[3][3]) {
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) {
        m_matrix[i][j] = matrix[i][j];
        m_vector[i][j] = i == j ? 1.0 : 0.0;
      }
    }
    constexpr int kSweeps = 12; // each squares the rest, more or less
    for (int sweep = 0; sweep < kSweeps; ++sweep) {
      Rotate(0, 1);
      Rotate(0, 2);
      Rotate(1, 2);
    }
  }

  double Value(int k) const { return m_matrix[k][k]; }
  Coord3 Vector(int k) const { return {m_vector[0][k], m_vector[1][k], m_vector[2][k]}; }

private:
  /// Turns the axes p and q so that their product term is zero.
  void Rotate(int p, int q) {
    if (m_matrix[p][q] == 0.0) return;
    const double theta = (m_matrix[q][q] - m_matrix[p][p]) / (2.0 * m_matrix[p][q]);
    const double size = 1.0 / (std::fabs(theta) + std::sqrt(theta * theta + 1.0));
    const double t = theta < 0.0 ? -size : size;
    const double c = 1.0 / std::sqrt(t * t + 1.0);
    const double s = t * c;
    for (int k = 0; k < 3; ++k)
      Turn(m_matrix[k][p], m_matrix[k][q], c, s);
    for (int k = 0; k < 3; ++k)
      Turn(m_matrix[p][k], m_matrix[q][k], c, s);
    for (int k = 0; k < 3; ++k)
      Turn(m_vector[k][p], m_vector[k][q], c, s);
    m_matrix[p][q] = m_matrix[q][p] = 0.0;
  }
  static void Turn(double& a, double& b, double c, double s) {
    const double turned = c * a - s * b;
    b = s * a + c * b;
    a = turned;
  }

  double m_matrix[3][3], m_vector[3][3];
};

/// The planes around one corner, each weighed by the angle of its triangle there.
struct PlanesAround {
  double matrix[3][3] = {};
  double sum[3] = {};
  double weight = 0.0;

  void AddPlane(const Coord3& unit, double angle) {
    const double n[3] = {unit.x, unit.y, unit.z};
    weight += angle;
    for (int i = 0; i < 3; ++i) {
      sum[i] += angle * n[i];
      for (int j = 0; j < 3; ++j)
        matrix[i][j] += angle * n[i] * n[j];
    }
  }

  /// Returns the shortest x for which the weighed squares of n . x - 1 are least, without the
  /// directions that gain nothing.
  Coord3 Unit() const {
    const Eigen eigen(matrix);
    Coord3 x{0.0, 0.0, 0.0};
    for (int k = 0; k < 3; ++k) {
      const Coord3 v = eigen.Vector(k);
      const double value = eigen.Value(k);
      const double along = Dot(v, {sum[0], sum[1], sum[2]});
      if (!(value > kLeastEigenvalue * weight)) continue;
      if (!(along * along > kLeastGain * weight * value)) continue;
      x = Add(x, Multiply(v, along / value));
    }
    return x;
  }
};

/// Grows the corners of one body.
class Growth {
public:
  Growth(const Corners& corners, double e) : m_corners(corners), m_e(e) {}

  GrownVertices Run() {
    MergeCorners();
    FindPlanes();
    GrownVertices grown;
    grown.vertices = MoveVertices();
    RequireSameSide(grown.vertices);
    grown.deviation = Deviation(grown.vertices);
    return grown;
  }

private:
  void MergeCorners();
  void FindPlanes();
  Array<double> MoveVertices();
  void RequireSameSide(const Array<double>& vertices) const;
  double Deviation(const Array<double>& vertices) const;
  Coord3 At(const Array<double>& vertices, std::size_t place, int corner) const {
    const double* c = vertices.data() + 3 * m_corners.VertexNumber(place, corner);
    return {c[0], c[1], c[2]};
  }
  std::size_t PointOf(std::size_t place, int corner) const {
    return m_point[m_corners.VertexNumber(place, corner)];
  }

  const Corners& m_corners;
  double m_e;
  std::vector<std::uint32_t> m_point; ///< of each vertex; equal vertices have the same
  std::size_t m_pointCount = 0;
  std::vector<Coord3> m_normal;       ///< of each place, of length one or zero
  std::vector<PlanesAround> m_planes; ///< of each point
  std::vector<Coord3> m_shift;        ///< of each point, as a multiple of e
};

/// Numbers the different coordinates.
void Growth::MergeCorners() {
  const std::size_t count = m_corners.VertexCount();
  std::vector<std::uint32_t> order(count);
  for (std::size_t k = 0; k < count; ++k)
    order[k] = static_cast<std::uint32_t>(k);
  // A vertex of no triangle may be NaN, which is after all numbers and equal to itself.
  const auto key = [this](std::uint32_t vertex, int axis) {
    const Coord3 p = m_corners.VertexAt(vertex);
    const double c = axis == 0 ? p.x : axis == 1 ? p.y : p.z;
    return std::isnan(c) ? std::numeric_limits<double>::infinity() : c;
  };
  const auto compare = [&key](std::uint32_t a, std::uint32_t b) {
    for (int axis = 0; axis < 3; ++axis) {
      const double x = key(a, axis);
      const double y = key(b, axis);
      if (x != y) return x < y ? -1 : 1;
    }
    return 0;
  };
  std::sort(order.begin(), order.end(),
            [&](std::uint32_t a, std::uint32_t b) { return compare(a, b) < 0; });
  m_point.resize(count);
  for (std::size_t k = 0; k < count; ++k) {
    if (k == 0 || compare(order[k - 1], order[k]) != 0) ++m_pointCount;
    m_point[order[k]] = static_cast<std::uint32_t>(m_pointCount - 1);
  }
}

void Growth::FindPlanes() {
  m_planes.resize(m_pointCount);
  m_normal.assign(m_corners.Count(), {0.0, 0.0, 0.0});
  // The order of the triangles decides how sums are rounded, so it is the caller's.
  std::vector<std::uint32_t> placeOf(m_corners.Count());
  for (std::size_t place = 0; place < placeOf.size(); ++place)
    placeOf[place] = static_cast<std::uint32_t>(place);
  std::sort(placeOf.begin(), placeOf.end(), [this](std::uint32_t a, std::uint32_t b) {
    return m_corners.Number(a) < m_corners.Number(b);
  });
  for (const std::uint32_t place : placeOf) {
    const Coord3 p[3] = {m_corners.At(place, 0), m_corners.At(place, 1), m_corners.At(place, 2)};
    const Coord3 n = NormalOf(p[0], p[1], p[2]);
    const double length = Length(n);
    if (length == 0.0) continue;
    // The quotients are exact for a plane across an axis.
    m_normal[place] = {n.x / length, n.y / length, n.z / length};
    for (int k = 0; k < 3; ++k) {
      const auto edge = [&](int to) { return Subtract(Multiply(p[to], 0.5), Multiply(p[k], 0.5)); };
      m_planes[PointOf(place, k)].AddPlane(m_normal[place],
                                           AngleBetween(edge(Next(k)), edge(Next(Next(k)))));
    }
  }
}

Array<double> Growth::MoveVertices() {
  m_shift.resize(m_pointCount);
  for (std::size_t k = 0; k < m_pointCount; ++k)
    m_shift[k] = m_planes[k].Unit();
  Array<double> vertices(3 * m_corners.VertexCount());
  for (std::size_t vertex = 0; vertex < m_corners.VertexCount(); ++vertex) {
    const Coord3 p = Add(m_corners.VertexAt(vertex), Multiply(m_shift[m_point[vertex]], m_e));
    vertices[3 * vertex] = p.x;
    vertices[3 * vertex + 1] = p.y;
    vertices[3 * vertex + 2] = p.z;
  }
  return vertices;
}

void Growth::RequireSameSide(const Array<double>& vertices) const {
  constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
  std::size_t first = none;
  const char* fault = "";
  for (std::size_t place = 0; place < m_corners.Count(); ++place) {
    const Coord3 p[3] = {At(vertices, place, 0), At(vertices, place, 1), At(vertices, place, 2)};
    const bool isFinite = IsFinite(p[0]) && IsFinite(p[1]) && IsFinite(p[2]);
    const bool hasPlane = Length(m_normal[place]) > 0.0;
    const bool keeps =
        isFinite && (!hasPlane || Dot(NormalOf(p[0], p[1], p[2]), m_normal[place]) > 0.0);
    if (keeps || m_corners.Number(place) >= first) continue;
    first = m_corners.Number(place);
    fault = isFinite ? "turns over" : "leaves the range of double";
  }
  if (first == none) return;
  throw std::invalid_argument("triangle " + std::to_string(first) + " " + fault +
                              " when the body grows by " + TextOf(m_e));
}

double Growth::Deviation(const Array<double>& vertices) const {
  double greatest = 0.0;
  for (std::size_t place = 0; place < m_corners.Count(); ++place) {
    if (Length(m_normal[place]) == 0.0) continue;
    for (int k = 0; k < 3; ++k) {
      const Coord3 shift = Subtract(At(vertices, place, k), m_corners.At(place, k));
      greatest = std::max(greatest, std::fabs(Dot(m_normal[place], shift) - m_e));
    }
  }
  return greatest;
}

} // namespace

GrownVertices GrowVertices(const Corners& corners, double e) {
  if (!std::isfinite(e)) {
    throw std::invalid_argument("a body grows by a finite length (got " + TextOf(e) + ")");
  }
  return Growth(corners, e).Run();
}

} // namespace gsl_sweep
