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

/// The height of a sliver as a part of its longest edge, or of its largest coordinate where all its
/// coordinates are numbers in single precision. It is four units in the last place of these.
constexpr double kSliver = 0x1p-22;

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

bool IsSingle(const Coord3& p) {
  const auto isSingle = [](double c) { return static_cast<double>(static_cast<float>(c)) == c; };
  return isSingle(p.x) && isSingle(p.y) && isSingle(p.z);
}

double LargestOf(const Coord3& p) {
  return std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
}

/// Returns true for a triangle so low that rounded coordinates, and nothing else, may have given
/// its normal.
bool IsSliver(const Coord3 (&p)[3]) {
  double longest = 0.0;
  for (int k = 0; k < 3; ++k)
    longest =
        std::max(longest, LargestOf(Subtract(Multiply(p[k], 0.5), Multiply(p[Next(k)], 0.5))));
  int exponent = 0;
  std::frexp(longest, &exponent);
  const auto edge = [&](int from, int to) {
    const Coord3 half = Subtract(Multiply(p[to], 0.5), Multiply(p[from], 0.5));
    return Coord3{std::ldexp(half.x, -exponent), std::ldexp(half.y, -exponent),
                  std::ldexp(half.z, -exponent)};
  };
  const Coord3 edges[3] = {edge(0, 1), edge(1, 2), edge(2, 0)};
  const double length = std::max({Length(edges[0]), Length(edges[1]), Length(edges[2])});
  const double height = Length(Cross(edges[0], edges[1])) / length;
  if (height <= kSliver * length) return true;
  if (!IsSingle(p[0]) || !IsSingle(p[1]) || !IsSingle(p[2])) return false;
  const double largest = std::max({LargestOf(p[0]), LargestOf(p[1]), LargestOf(p[2])});
  return height <= kSliver * std::ldexp(0.5 * largest, -exponent);
}

/// Returns true when the edges of a triangle point against their former directions: the map of its
/// plane, which keeps the sides, has a negative trace. `normal` is the former normal.
//
// With the edges u and v, which become u' and v', the trace is
//   (u' . (v x n) + v' . (n x u)) / (n . (u x v))
bool IsTurnedAround(const Coord3 (&before)[3], const Coord3 (&after)[3], const Coord3& normal) {
  Coord3 edge[2], turned[2];
  for (int k = 0; k < 2; ++k) {
    edge[k] = Subtract(Multiply(before[k + 1], 0.5), Multiply(before[0], 0.5));
    turned[k] = Subtract(Multiply(after[k + 1], 0.5), Multiply(after[0], 0.5));
    int exponent = 0;
    std::frexp(std::max(LargestOf(edge[k]), LargestOf(turned[k])), &exponent);
    for (Coord3* v : {&edge[k], &turned[k]})
      *v = {std::ldexp(v->x, -exponent), std::ldexp(v->y, -exponent), std::ldexp(v->z, -exponent)};
  }
  return Dot(turned[0], Cross(edge[1], normal)) + Dot(turned[1], Cross(normal, edge[0])) < 0.0;
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
  if (across == 0.0) return Dot(u, v) > 0.0 ? 0.0 : 3.141592653589793;
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
  void AddPlane(std::size_t place, int corner, const Coord3& unit);
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
  std::vector<Coord3> m_normal; ///< of each place, of length one; zero without area or a sliver
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
  std::vector<std::uint32_t> slivers;
  for (const std::uint32_t place : placeOf) {
    const Coord3 p[3] = {m_corners.At(place, 0), m_corners.At(place, 1), m_corners.At(place, 2)};
    const Coord3 n = NormalOf(p[0], p[1], p[2]);
    const double length = Length(n);
    if (length == 0.0) continue;
    if (IsSliver(p)) {
      slivers.push_back(place);
      continue;
    }
    // The quotients are exact for a plane across an axis.
    m_normal[place] = {n.x / length, n.y / length, n.z / length};
    for (int k = 0; k < 3; ++k)
      AddPlane(place, k, m_normal[place]);
  }
  std::vector<bool> hasPlane(m_pointCount);
  for (std::size_t k = 0; k < m_pointCount; ++k)
    hasPlane[k] = m_planes[k].weight > 0.0;
  for (const std::uint32_t place : slivers) {
    const Coord3 n =
        NormalOf(m_corners.At(place, 0), m_corners.At(place, 1), m_corners.At(place, 2));
    for (int k = 0; k < 3; ++k) {
      if (!hasPlane[PointOf(place, k)]) AddPlane(place, k, Multiply(n, 1.0 / Length(n)));
    }
  }
}

void Growth::AddPlane(std::size_t place, int corner, const Coord3& unit) {
  const Coord3 p = Multiply(m_corners.At(place, corner), 0.5);
  const auto edge = [&](int to) { return Subtract(Multiply(m_corners.At(place, to), 0.5), p); };
  m_planes[PointOf(place, corner)].AddPlane(
      unit, AngleBetween(edge(Next(corner)), edge(Next(Next(corner)))));
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
  constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
  std::size_t first = kNone;
  const char* fault = "";
  for (std::size_t place = 0; place < m_corners.Count(); ++place) {
    const Coord3 p[3] = {At(vertices, place, 0), At(vertices, place, 1), At(vertices, place, 2)};
    const bool isFinite = IsFinite(p[0]) && IsFinite(p[1]) && IsFinite(p[2]);
    const bool hasPlane = Length(m_normal[place]) > 0.0;
    const bool keepsSide =
        isFinite && (!hasPlane || Dot(NormalOf(p[0], p[1], p[2]), m_normal[place]) > 0.0);
    const Coord3 before[3] = {m_corners.At(place, 0), m_corners.At(place, 1),
                              m_corners.At(place, 2)};
    const bool keeps = keepsSide && (!hasPlane || !IsTurnedAround(before, p, m_normal[place]));
    if (keeps || m_corners.Number(place) >= first) continue;
    first = m_corners.Number(place);
    fault = !isFinite ? "leaves the range of double" : keepsSide ? "turns around" : "turns over";
  }
  if (first == kNone) return;
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
