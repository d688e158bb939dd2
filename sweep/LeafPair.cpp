#include "LeafPair.h"

#include <algorithm>
#include <cmath>

namespace gsl_sweep {

namespace {

constexpr double kUnit = 0x1p-53; ///< half a unit in the last place of 1

/// Writes the plane of triangle k as heights along d, with their error.
//
// With u = 2^-53, e1, e2 the edges, n = e1 x e2 and N = n / (n . d):
//   an edge's component      1 u of itself
//   a component of n         two factors, the product, the difference: 4 u * na, where na is
//                            the sum of the magnitudes of its two products
//   n . d                    4 u from n, 3 u from its products and two sums: 7 u * nda, where nda
//                            is na . |d|. With delta = 9 u * nda / |n . d|, which is below 2^-19
//                            here, 1 / (n . d) is off by less than delta of itself: 7/9 of it from
//                            n . d, 1 u for its rounding, and squares
//   a component of N         4 u * na / |n . d| * (1 + 2^-19) from n, |N| * delta from the
//                            reciprocal, |N| * 1 u for the product; squares included, less than
//                            5 u * na / |n . d| + |N| * (delta + 2 u)
//   offset, N . p            the error of N times |p0| and |p|, and 3 u * |N| times each for the
//                            products and two sums
//   offset - N . p           1 u * |N| times both
//   less or plus the error   1 u * |N| times both, where the caller forms it
// so that the height is off by less than the reaches of p and p0 times
//   sum |N| * (delta + 7 u) + sum na / |n . d| * 5 u,
// squares included. Here 16 u is used for 7 u and for 5 u, which also covers the rounding of the
// error and of the reaches.
template <class Scalar>
void WritePlane(LeafTriangles<Scalar>& leaf, int k, const Coord3& direction) {
  const double d[3] = {direction.x, direction.y, direction.z};
  double e1[3], e2[3], n[3], na[3];
  for (int x = 0; x < 3; ++x) {
    e1[x] = leaf.corner[3 + x][k] - leaf.corner[x][k];
    e2[x] = leaf.corner[6 + x][k] - leaf.corner[x][k];
  }
  double along = 0.0;
  double alongTerms = 0.0;
  for (int x = 0; x < 3; ++x) {
    const int y = x == 2 ? 0 : x + 1;
    const int z = 3 - x - y;
    const double p = e1[y] * e2[z];
    const double q = e1[z] * e2[y];
    n[x] = p - q;
    na[x] = std::fabs(p) + std::fabs(q);
    along += n[x] * d[x];
    alongTerms += na[x] * std::fabs(d[x]);
  }
  leaf.offset[k] = leaf.error[k] = 0.0;
  for (int x = 0; x < 3; ++x)
    leaf.normal[x][k] = 0.0;
  if (!(std::fabs(along) > 0x1p-30 * alongTerms)) return;
  const double reciprocal = 1.0 / along;
  const double delta = 9.0 * kUnit * alongTerms * std::fabs(reciprocal);
  double error = 0.0;
  for (int x = 0; x < 3; ++x) {
    const double component = n[x] * reciprocal;
    leaf.normal[x][k] = component;
    leaf.offset[k] += component * leaf.corner[x][k];
    error += std::fabs(component) * (delta + 16.0 * kUnit) +
             na[x] * std::fabs(reciprocal) * (16.0 * kUnit);
  }
  leaf.error[k] = error;
}

/// Puts a triangle at place k of a leaf.
template <class Scalar>
void WriteTriangle(LeafTriangles<Scalar>& leaf, int k, const Coord3 (&corners)[3]) {
  for (int c = 0; c < 3; ++c) {
    leaf.corner[3 * c][k] = corners[c].x;
    leaf.corner[3 * c + 1][k] = corners[c].y;
    leaf.corner[3 * c + 2][k] = corners[c].z;
  }
  const Box<double> box = leaf.ExactBoxOf(k);
  for (int x = 0; x < 3; ++x) {
    if constexpr (sizeof(Scalar) == sizeof(float)) {
      leaf.low[x][k] = RoundedDown(box.low[x]);
      leaf.high[x][k] = RoundedUp(box.high[x]);
    } else {
      leaf.low[x][k] = box.low[x];
      leaf.high[x][k] = box.high[x];
    }
    leaf.normal[x][k] = 0.0;
  }
  leaf.offset[k] = leaf.error[k] = 0.0;
}

/// Fills the lanes after the last triangle, up to a multiple of four, with values that nothing
/// reaches.
template <class Scalar>
void FillUp(LeafTriangles<Scalar>& leaf) {
  for (int k = leaf.count; k % 4 != 0; ++k) {
    WriteTriangle(leaf, k, {{0.0, 0.0, 0.0}, {0.0, 0.0, 0.0}, {0.0, 0.0, 0.0}});
    for (int x = 0; x < 3; ++x) {
      leaf.low[x][k] = Box<Scalar>::kFar;
      leaf.high[x][k] = -Box<Scalar>::kFar;
    }
  }
}

/// `refused` is the sign of normal . direction that a one-sided question leaves out.
template <class Scalar>
void Gather(const Scene<Scalar>& scene, const PreparedBody& body,
            const Placement<Scalar>& placement, std::size_t index, int refused,
            LeafTriangles<Scalar>& leaf) {
  const Corners& corners = body.Triangles();
  leaf.count = 0;
  Box<double> all = Box<double>::Empty();
  const std::size_t end = body.Runs().begin[index + 1];
  for (std::size_t place = body.Runs().begin[index]; place < end; ++place) {
    const Coord3 corner[3] = {placement.At(corners.At(place, 0)),
                              placement.At(corners.At(place, 1)),
                              placement.At(corners.At(place, 2))};
    if (scene.oneSided) {
      const Triangle triangle =
          MakeTriangle(scene.direction, placement.ToKernel(corner[0]),
                       placement.ToKernel(corner[1]), placement.ToKernel(corner[2]));
      if (triangle.facing == refused) continue;
    }
    const int k = leaf.count++;
    WriteTriangle(leaf, k, corner);
    all.Include(leaf.ExactBoxOf(k));
    leaf.number[k] = corners.Number(place);
    if (scene.filters) WritePlane(leaf, k, scene.direction.Vector());
  }
  leaf.reach = leaf.count > 0 ? all.Reach() : 0.0;
  FillUp(leaf);
}

template <class Scalar>
Double4 HeightOver(const LeafTriangles<Scalar>& planes, int first,
                   const LeafTriangles<Scalar>& points, int point, int corner) {
  return Double4::At(&planes.offset[first]) -
         (Double4::At(&planes.normal[0][first]) * Double4::Of(points.corner[3 * corner][point]) +
          Double4::At(&planes.normal[1][first]) *
              Double4::Of(points.corner[3 * corner + 1][point]) +
          Double4::At(&planes.normal[2][first]) *
              Double4::Of(points.corner[3 * corner + 2][point]));
}

template <class Scalar>
Double4 DepthUnder(const LeafTriangles<Scalar>& planes, int plane,
                   const LeafTriangles<Scalar>& points, int first, int corner) {
  return Double4::Of(planes.normal[0][plane]) * Double4::At(&points.corner[3 * corner][first]) +
         Double4::Of(planes.normal[1][plane]) * Double4::At(&points.corner[3 * corner + 1][first]) +
         Double4::Of(planes.normal[2][plane]) * Double4::At(&points.corner[3 * corner + 2][first]) -
         Double4::Of(planes.offset[plane]);
}

} // namespace

template <class Scalar>
Triangle LeafTriangles<Scalar>::InKernel(const Scene<Scalar>& scene, int k) const {
  const Placement<Scalar>& placement = scene.moving;
  return MakeTriangle(scene.direction, placement.ToKernel(Corner(k, 0)),
                      placement.ToKernel(Corner(k, 1)), placement.ToKernel(Corner(k, 2)));
}

template <class Scalar>
Boxes<Scalar> LeafTriangles<Scalar>::BoxesFrom(int k) const {
  Boxes<Scalar> boxes;
  for (int x = 0; x < 3; ++x) {
    boxes.low[x] = Four<Scalar>::At(&low[x][k]);
    boxes.high[x] = Four<Scalar>::At(&high[x][k]);
  }
  return boxes;
}

template <class Scalar>
Box<double> LeafTriangles<Scalar>::ExactBoxOf(int k) const {
  Box<double> box;
  for (int x = 0; x < 3; ++x) {
    const double a = corner[x][k];
    const double b = corner[3 + x][k];
    const double c = corner[6 + x][k];
    box.low[x] = std::min(a, std::min(b, c));
    box.high[x] = std::max(a, std::max(b, c));
  }
  return box;
}

template <class Scalar>
const LeafTriangles<Scalar>& LeafCache<Scalar>::Moving(const Scene<Scalar>& scene,
                                                       std::size_t leaf) {
  LeafTriangles<Scalar>& cached = m_leaves[leaf % kPlaces];
  if (cached.key != leaf) {
    Gather(scene, *scene.bodies.moving, scene.moving, leaf, -1, cached);
    cached.key = leaf;
  }
  return cached;
}

template <class Scalar>
const LeafTriangles<Scalar>& LeafCache<Scalar>::Fixed(const Scene<Scalar>& scene, std::size_t body,
                                                      std::size_t leaf) {
  LeafTriangles<Scalar>& cached = m_leaves[leaf % kPlaces];
  const std::uint64_t key = static_cast<std::uint64_t>(body) << 32 | leaf;
  if (cached.key != key) {
    Gather(scene, *scene.bodies.fixed[body], scene.fixed, leaf, 1, cached);
    cached.key = key;
  }
  return cached;
}

template <class Scalar>
template <bool kMoves>
unsigned LeafPair<Scalar>::ThatReach(const Box<Scalar>& otherBox,
                                     const TravelRange<Scalar>& range) const {
  const LeafTriangles<Scalar>& leaf = Side<kMoves>();
  unsigned mask = 0;
  Four<Scalar> from, to;
  for (int k = 0; k < leaf.count; k += 4) {
    mask |= m_scene.test.template Survivors<kMoves>(leaf.BoxesFrom(k), otherBox, range, from, to)
            << k;
  }
  return mask;
}

// n . p is off by at most 5 u of its reach (products, two sums of at most 1.8 reaches), n . d by 9
// u; where |n . d| is at least 2^-6, the quotient is off by less than 2^-43 of itself.
template <class Scalar>
template <bool kMoves>
unsigned LeafPair<Scalar>::ThatReach(const Slab& slab, double limit) const {
  const LeafTriangles<Scalar>& leaf = Side<kMoves>();
  const Coord3& d = m_scene.direction.Vector();
  const Double4 n[3] = {Double4::Of(slab.normal[0]), Double4::Of(slab.normal[1]),
                        Double4::Of(slab.normal[2])};
  const double along = static_cast<double>(slab.normal[0]) * d.x +
                       static_cast<double>(slab.normal[1]) * d.y +
                       static_cast<double>(slab.normal[2]) * d.z;
  if (!(std::fabs(along) > 0x1p-6)) return ~0u;
  const Double4 error = Double4::Of((moving.reach + fixed.reach) * 0x1p-49);
  const Double4 slabFrom = Double4::Of(slab.from);
  const Double4 slabTo = Double4::Of(slab.to);
  const Double4 reciprocal = Double4::Of(1.0 / along);
  const Double4 within = Double4::Of(limit * (1.0 + 0x1p-40));
  unsigned mask = 0;
  for (int k = 0; k < leaf.count; k += 4) {
    Double4 extent[3];
    for (int c = 0; c < 3; ++c) {
      extent[c] = n[0] * Double4::At(&leaf.corner[3 * c][k]) +
                  n[1] * Double4::At(&leaf.corner[3 * c + 1][k]) +
                  n[2] * Double4::At(&leaf.corner[3 * c + 2][k]);
    }
    const Double4 low = Least(extent[0], Least(extent[1], extent[2])) - error;
    const Double4 high = Most(extent[0], Most(extent[1], extent[2])) + error;
    Double4 toMeet;
    if (kMoves) {
      toMeet = along > 0.0 ? slabFrom - high : slabTo - low;
    } else {
      toMeet = along > 0.0 ? low - slabTo : high - slabFrom;
    }
    mask |= AtMost(toMeet * reciprocal, within) << k;
  }
  return mask;
}

template <class Scalar>
unsigned LeafPair<Scalar>::Reached(int movingTriangle, int first, const TravelRange<Scalar>& range,
                                   Four<Scalar>& from, Four<Scalar>& to) const {
  return m_scene.test.template Survivors<false>(fixed.BoxesFrom(first),
                                                moving.BoxOf(movingTriangle), range, from, to);
}

/// Over the common shadow, the travel at which two points meet is the height of one point over the
/// other's plane. The height is linear, so its least value is at a corner.
template <class Scalar>
unsigned LeafPair<Scalar>::ReachedByHeight(int movingTriangle, int first, double limit) const {
  const int i = movingTriangle;
  const double reaches = moving.reach + fixed.reach;
  Double4 ofMoving, ofFixed;
  for (int c = 0; c < 3; ++c) {
    const Double4 height = HeightOver(fixed, first, moving, i, c);
    ofMoving = c == 0 ? height : Least(height, ofMoving);
    const Double4 depth = DepthUnder(moving, i, fixed, first, c);
    ofFixed = c == 0 ? depth : Least(depth, ofFixed);
  }
  ofMoving = ofMoving - Double4::At(&fixed.error[first]) * Double4::Of(reaches);
  ofFixed = ofFixed - Double4::Of(moving.error[i] * reaches);
  return AtMost(Most(ofMoving, ofFixed), Double4::Of(limit));
}

/// The greatest height is at a corner too. A plane without heights excludes nothing; its error is
/// zero.
template <class Scalar>
unsigned LeafPair<Scalar>::TouchingByHeight(int movingTriangle, int first, double from) const {
  const int i = movingTriangle;
  const double reaches = moving.reach + fixed.reach;
  Double4 ofMoving, ofFixed;
  for (int c = 0; c < 3; ++c) {
    const Double4 height = HeightOver(fixed, first, moving, i, c);
    ofMoving = c == 0 ? height : Most(height, ofMoving);
    const Double4 depth = DepthUnder(moving, i, fixed, first, c);
    ofFixed = c == 0 ? depth : Most(depth, ofFixed);
  }
  const Double4 error = Double4::At(&fixed.error[first]);
  ofMoving = ofMoving + error * Double4::Of(reaches);
  ofFixed = ofFixed + Double4::Of(moving.error[i] * reaches);
  const Double4 least = Double4::Of(from);
  unsigned mask = AtMost(least, ofMoving) | AtMost(error, Double4::Of(0.0));
  if (moving.error[i] != 0.0) mask &= AtMost(least, ofFixed);
  return mask;
}

// Coordinates across the direction: p - (p along its largest component) * direction, relative to a
// corner. With u = 2^-53 and r the largest difference of two coordinates:
//   a coordinate       1 u r for its difference, 3 u r for the part taken off, 2 u r for the rest:
//                      6 u r; it is at most 2 r
//   an edge            12 u r, 4 u r for its rounding: 16 u r; it is at most 4 r
//   a product          2 * 16 u r * 4 r, 16 u r^2 for its rounding: 144 u r^2, squares included
//   a cross product    2 * 144 u r^2, 32 u r^2 for its rounding: 320 u r^2
// Two cross products that differ by more than 640 u r^2 differ in truth; 2^-43 is 1024 u.
template <class Scalar>
bool LeafPair<Scalar>::AreShadowsApart(int movingTriangle, int fixedTriangle) const {
  const Coord3& d = m_scene.direction.Vector();
  const double along[3] = {d.x, d.y, d.z};
  const int z = m_scene.direction.Dominant();
  const int x = z == 2 ? 0 : z + 1;
  const int y = 3 - z - x;
  const double slopeX = along[x] / along[z];
  const double slopeY = along[y] / along[z];
  double u[6], v[6];
  double reach = 0.0;
  for (int c = 0; c < 6; ++c) {
    const auto coordinate = [&](int axis) {
      return c < 3 ? moving.corner[3 * c + axis][movingTriangle]
                   : fixed.corner[3 * (c - 3) + axis][fixedTriangle];
    };
    const double dx = coordinate(x) - moving.corner[x][movingTriangle];
    const double dy = coordinate(y) - moving.corner[y][movingTriangle];
    const double dz = coordinate(z) - moving.corner[z][movingTriangle];
    u[c] = dx - slopeX * dz;
    v[c] = dy - slopeY * dz;
    reach = std::max(reach, std::max(std::fabs(dz), std::max(std::fabs(dx), std::fabs(dy))));
  }
  const double error = 0x1p-43 * reach * reach;
  for (int own = 0; own < 6; own += 3) {
    const int other = 3 - own;
    for (int c = 0; c < 3; ++c) {
      const int from = own + c;
      const int to = own + (c == 2 ? 0 : c + 1);
      const int rest = own + (c == 0 ? 2 : c - 1);
      const double edgeU = u[to] - u[from];
      const double edgeV = v[to] - v[from];
      const auto side = [&](int k) { return edgeU * (v[k] - v[from]) - edgeV * (u[k] - u[from]); };
      const double third = side(rest);
      const double a = side(other);
      const double b = side(other + 1);
      const double e = side(other + 2);
      if (std::min(a, std::min(b, e)) > std::max(0.0, third) + error) return true;
      if (std::max(a, std::max(b, e)) < std::min(0.0, third) - error) return true;
    }
  }
  return false;
}

template <class Scalar>
bool LeafPair<Scalar>::AreApartAtStart(int movingTriangle, int fixedTriangle) const {
  const int i = movingTriangle;
  const int j = fixedTriangle;
  for (int x = 0; x < 3; ++x) {
    if (moving.high[x][i] < fixed.low[x][j] || fixed.high[x][j] < moving.low[x][i]) return true;
  }
  const double reaches = moving.reach + fixed.reach;
  const auto areOnOneSide = [reaches](const LeafTriangles<Scalar>& planes, int plane,
                                      const LeafTriangles<Scalar>& points, int point) {
    double low = Box<double>::kFar;
    double high = -low;
    for (int c = 0; c < 3; ++c) {
      const double height =
          planes.offset[plane] - (planes.normal[0][plane] * points.corner[3 * c][point] +
                                  planes.normal[1][plane] * points.corner[3 * c + 1][point] +
                                  planes.normal[2][plane] * points.corner[3 * c + 2][point]);
      low = std::min(low, height);
      high = std::max(high, height);
    }
    const double error = planes.error[plane] * reaches;
    return low > error || high < -error;
  };
  return areOnOneSide(fixed, j, moving, i) || areOnOneSide(moving, i, fixed, j);
}

template struct LeafTriangles<float>;
template struct LeafTriangles<double>;
template class LeafCache<float>;
template class LeafCache<double>;
template class LeafPair<float>;
template class LeafPair<double>;
template unsigned LeafPair<float>::ThatReach<true>(const Box<float>&,
                                                   const TravelRange<float>&) const;
template unsigned LeafPair<float>::ThatReach<false>(const Box<float>&,
                                                    const TravelRange<float>&) const;
template unsigned LeafPair<double>::ThatReach<true>(const Box<double>&,
                                                    const TravelRange<double>&) const;
template unsigned LeafPair<double>::ThatReach<false>(const Box<double>&,
                                                     const TravelRange<double>&) const;
template unsigned LeafPair<float>::ThatReach<true>(const Slab&, double) const;
template unsigned LeafPair<float>::ThatReach<false>(const Slab&, double) const;
template unsigned LeafPair<double>::ThatReach<true>(const Slab&, double) const;
template unsigned LeafPair<double>::ThatReach<false>(const Slab&, double) const;

} // namespace gsl_sweep
