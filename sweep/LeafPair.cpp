#include "LeafPair.h"

#include <algorithm>
#include <cmath>

namespace gsl_sweep {

namespace {

constexpr double kUnit = 0x1p-53; ///< half a unit in the last place of 1

template <class Scalar>
double ReachOf(const LeafTriangles<Scalar>& leaf, int k, int c) {
  return std::fabs(leaf.corner[3 * c][k]) + std::fabs(leaf.corner[3 * c + 1][k]) +
         std::fabs(leaf.corner[3 * c + 2][k]);
}

/// Returns true when triangle k has the corners of the one before it and a greater number.
template <class Scalar>
bool IsCopy(const LeafTriangles<Scalar>& leaf, int k) {
  if (k == 0 || leaf.number[k] < leaf.number[k - 1]) return false;
  for (const auto& coordinate : leaf.corner) {
    if (coordinate[k] != coordinate[k - 1]) return false;
  }
  return true;
}

/// Writes the plane of triangle k as heights along d, with their error. All numbers are zero
/// before.
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
//                            products and two sums; p0 is the corner at which e1 and e2 begin
//   offset - N . p           1 u * |N| times both
//   less or plus the error   1 u * |N| times both, where the caller forms it
// so that the height is off by less than the reaches of p and p0 times
//   sum |N| * (delta + 7 u) + sum na / |n . d| * 5 u,
// squares included. Here 16 u is used for 7 u and for 5 u, which also covers the rounding of the
// error and of the reaches.
//
// At a distance C from the plane a point is C |N| before it, along d. N is off by less than the
// error, because the error is that of N . p for a reach of 1.
template <class Scalar>
void WritePlane(LeafTriangles<Scalar>& leaf, int k, const Coord3& direction, double clearance) {
  const double d[3] = {direction.x, direction.y, direction.z};
  double e1[3], e2[3], n[3], na[3];
  // A corner that is far away would swell the error, so the edges begin at the nearest corner.
  int base = 0;
  double reach = ReachOf(leaf, k, 0);
  for (int c = 1; c < 3; ++c) {
    const double other = ReachOf(leaf, k, c);
    if (other < reach) {
      base = c;
      reach = other;
    }
  }
  leaf.planeReach = std::max(leaf.planeReach, reach);
  const int next = base == 2 ? 0 : base + 1;
  const int last = 3 - base - next;
  for (int x = 0; x < 3; ++x) {
    e1[x] = leaf.corner[3 * next + x][k] - leaf.corner[3 * base + x][k];
    e2[x] = leaf.corner[3 * last + x][k] - leaf.corner[3 * base + x][k];
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
  if (!(std::fabs(along) > 0x1p-30 * alongTerms)) return;
  const double reciprocal = 1.0 / along;
  const double delta = 9.0 * kUnit * alongTerms * std::fabs(reciprocal);
  double error = 0.0;
  for (int x = 0; x < 3; ++x) {
    const double component = n[x] * reciprocal;
    leaf.normal[x][k] = component;
    leaf.offset[k] += component * leaf.corner[3 * base + x][k];
    error += std::fabs(component) * (delta + 16.0 * kUnit) +
             na[x] * std::fabs(reciprocal) * (16.0 * kUnit);
  }
  leaf.error[k] = error;
  if (clearance == 0.0) return;
  double length = 0.0;
  for (int x = 0; x < 3; ++x)
    length += leaf.normal[x][k] * leaf.normal[x][k];
  leaf.lift[k] = clearance * (std::sqrt(length) + error) * (1.0 + 0x1p-46);
}

/// Puts a triangle at place k of a leaf. `isExact` says that Scalar holds every number of its box.
template <class Scalar>
void WriteTriangle(LeafTriangles<Scalar>& leaf, int k, const Coord3 (&corners)[3],
                   const Placement<Scalar>& placement, bool isExact) {
  for (int c = 0; c < 3; ++c) {
    leaf.corner[3 * c][k] = corners[c].x;
    leaf.corner[3 * c + 1][k] = corners[c].y;
    leaf.corner[3 * c + 2][k] = corners[c].z;
  }
  const Box<double> box = placement.WithMargin(leaf.ExactBoxOf(k));
  for (int x = 0; x < 3; ++x) {
    leaf.low[x][k] = isExact ? static_cast<Scalar>(box.low[x]) : RoundedDown(box.low[x]);
    leaf.high[x][k] = isExact ? static_cast<Scalar>(box.high[x]) : RoundedUp(box.high[x]);
    leaf.normal[x][k] = 0.0;
  }
  leaf.offset[k] = leaf.error[k] = leaf.lift[k] = 0.0;
}

template <class Scalar>
void WriteShadow(LeafTriangles<Scalar>& leaf, int k, const ShadowAxes& axes) {
  ShadowExtent shadow = axes.Of({leaf.corner[0][k], leaf.corner[1][k], leaf.corner[2][k]});
  shadow.Include(axes.Of({leaf.corner[3][k], leaf.corner[4][k], leaf.corner[5][k]}));
  shadow.Include(axes.Of({leaf.corner[6][k], leaf.corner[7][k], leaf.corner[8][k]}));
  for (int side = 0; side < 2; ++side) {
    leaf.shadowLow[side][k] = shadow.low[side];
    leaf.shadowHigh[side][k] = shadow.high[side];
  }
}

/// Fills the boxes after the last triangle, up to a multiple of four, with boxes that nothing
/// reaches. What else is there does not matter then.
template <class Scalar>
void FillUp(LeafTriangles<Scalar>& leaf) {
  for (int k = leaf.count; k % 4 != 0; ++k) {
    for (int x = 0; x < 3; ++x) {
      leaf.low[x][k] = Box<Scalar>::kFar;
      leaf.high[x][k] = -Box<Scalar>::kFar;
    }
  }
}

/// `refused` is the sign of normal . direction that a one-sided question leaves out.
template <class Scalar>
void Gather(const Scene<Scalar>& scene, const PreparedBody& body, const Leaves& leaves,
            const Placement<Scalar>& placement, std::size_t index, int refused,
            LeafTriangles<Scalar>& leaf) {
  const Corners& corners = body.Triangles();
  leaf.count = 0;
  leaf.distinct = 0;
  leaf.held = leaf.heldBy = 0;
  leaf.planeReach = 0.0;
  Box<double> all = Box<double>::Empty();
  const bool isExact = sizeof(Scalar) == sizeof(double) ||
                       (corners.IsSingle() && !placement.HasOffset() && !placement.HasMargin());
  const double clearance = scene.WalkTravel(scene.clearance);
  const std::size_t end = leaves.begin[index + 1];
  for (std::size_t place = leaves.begin[index]; place < end; ++place) {
    const Coord3 corner[3] = {placement.At(corners.At(place, 0)),
                              placement.At(corners.At(place, 1)),
                              placement.At(corners.At(place, 2))};
    if (scene.oneSided) {
      const Triangle triangle =
          MakeTriangle(scene.direction, placement.ToKernel(corner[0]),
                       placement.ToKernel(corner[1]), placement.ToKernel(corner[2]));
      if (triangle.facing == refused) continue;
      // Walls along the direction never block a solid.
      if (scene.rule == Rule::Solid && triangle.facing == 0) continue;
    }
    const int k = leaf.count++;
    WriteTriangle(leaf, k, corner, placement, isExact);
    all.Include(leaf.ExactBoxOf(k));
    leaf.number[k] = corners.Number(place);
    leaf.place[k] = static_cast<std::uint32_t>(place);
    if (!IsCopy(leaf, k)) leaf.distinct |= 1u << k;
    if (scene.filters) WritePlane(leaf, k, scene.direction.Vector(), clearance);
    if (scene.filters && scene.rule == Rule::Solid) WriteShadow(leaf, k, scene.shadowAxes);
  }
  leaf.reach = leaf.count > 0 ? all.Reach() : 0.0;
  FillUp(leaf);
}

/// Coordinates across the direction: p - (p along its largest component) * direction, relative to
/// another point.
class ShadowPlane {
public:
  explicit ShadowPlane(const TravelDirection& direction)
      : m_z(direction.Dominant()), m_x(m_z == 2 ? 0 : m_z + 1), m_y(3 - m_z - m_x) {
    const Coord3& d = direction.Vector();
    const double along[3] = {d.x, d.y, d.z};
    m_slopeX = along[m_x] / along[m_z];
    m_slopeY = along[m_y] / along[m_z];
  }

  /// `reach` receives the largest difference of two coordinates.
  void Project(const double (&p)[3], const double (&origin)[3], double& u, double& v,
               double& reach) const {
    const double dx = p[m_x] - origin[m_x];
    const double dy = p[m_y] - origin[m_y];
    const double dz = p[m_z] - origin[m_z];
    u = dx - m_slopeX * dz;
    v = dy - m_slopeY * dz;
    reach = std::max(std::fabs(dz), std::max(std::fabs(dx), std::fabs(dy)));
  }

  int X() const { return m_x; }
  int Y() const { return m_y; }
  int Z() const { return m_z; }
  double SlopeX() const { return m_slopeX; }
  double SlopeY() const { return m_slopeY; }

private:
  int m_z, m_x, m_y;
  double m_slopeX, m_slopeY;
};

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
template <bool kMoving>
const LeafTriangles<Scalar>& LeafCache<Scalar>::Get(const Scene<Scalar>& scene, std::size_t body,
                                                    std::size_t leaf) {
  const TreeInUse<Scalar>& used = scene.template TreeOf<kMoving>(body);
  // A leaf is below 2^31. While a walk goes on with finer trees, their leaves are other leaves.
  const std::uint64_t key =
      static_cast<std::uint64_t>(body) << 32 | static_cast<std::uint64_t>(used.isFine) << 31 | leaf;
  const std::size_t place = Place(key);
  if (m_leaves[place] == nullptr) m_leaves[place] = std::make_unique<LeafTriangles<Scalar>>();
  LeafTriangles<Scalar>& cached = *m_leaves[place];
  if (m_keys[place] != key) {
    m_keys[place] = kNoKey;
    Gather(scene, scene.template BodyOf<kMoving>(body), *used.leaves,
           kMoving ? scene.moving : scene.fixed, leaf, kMoving ? -1 : 1, cached);
    m_keys[place] = key;
  }
  return cached;
}

template <class Scalar>
const LeafTriangles<Scalar>& LeafCache<Scalar>::Moving(const Scene<Scalar>& scene,
                                                       std::size_t leaf) {
  return Get<true>(scene, 0, leaf);
}

template <class Scalar>
const LeafTriangles<Scalar>& LeafCache<Scalar>::Fixed(const Scene<Scalar>& scene, std::size_t body,
                                                      std::size_t leaf) {
  return Get<false>(scene, body, leaf);
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
// u; where |n . d| is at least 2^-6, the quotient is off by less than 2^-43 of itself. Elsewhere a
// triangle does not reach the slab when it is farther away than it moves along the normal.
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
  const Double4 error = Double4::Of((moving.reach + fixed.reach) * 0x1p-49);
  const double margin = static_cast<double>(m_scene.slabMargin) * (1.0 + 0x1p-50);
  const Double4 slabFrom = Double4::Of(slab.from - margin);
  const Double4 slabTo = Double4::Of(slab.to + margin);
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
    if (!(std::fabs(along) > 0x1p-6)) {
      const Double4 gap = Most(slabFrom - high, low - slabTo);
      mask |= AtMost(gap, Double4::Of(limit * (std::fabs(along) + 0x1p-48))) << k;
      continue;
    }
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

template <class Scalar>
unsigned LeafPair<Scalar>::SharingShadow(int movingTriangle, int first) const {
  const int i = movingTriangle;
  unsigned apart = 0;
  for (int side = 0; side < 2; ++side) {
    apart |=
        AtMost(Double4::At(&fixed.shadowHigh[side][first]), Double4::Of(moving.shadowLow[side][i]));
    apart |=
        AtMost(Double4::Of(moving.shadowHigh[side][i]), Double4::At(&fixed.shadowLow[side][first]));
  }
  return 15u & ~apart;
}

/// Over the common shadow, the travel at which two points meet is the height of one point over the
/// other's plane. The height is linear, so its least value is at a corner.
template <class Scalar>
unsigned LeafPair<Scalar>::ReachedByHeight(int movingTriangle, int first, double limit) const {
  const int i = movingTriangle;
  Double4 ofMoving, ofFixed;
  for (int c = 0; c < 3; ++c) {
    const Double4 height = HeightOver(fixed, first, moving, i, c);
    ofMoving = c == 0 ? height : Least(height, ofMoving);
    const Double4 depth = DepthUnder(moving, i, fixed, first, c);
    ofFixed = c == 0 ? depth : Least(depth, ofFixed);
  }
  ofMoving =
      ofMoving - (Double4::At(&fixed.error[first]) * Double4::Of(moving.reach + fixed.planeReach) +
                  Double4::At(&fixed.lift[first]));
  ofFixed =
      ofFixed - Double4::Of(moving.error[i] * (moving.planeReach + fixed.reach) + moving.lift[i]);
  return AtMost(Most(ofMoving, ofFixed), Double4::Of(limit));
}

/// The greatest height is at a corner too. A plane without heights excludes nothing; its error is
/// zero.
template <class Scalar>
unsigned LeafPair<Scalar>::TouchingByHeight(int movingTriangle, int first, double from) const {
  const int i = movingTriangle;
  Double4 ofMoving, ofFixed;
  for (int c = 0; c < 3; ++c) {
    const Double4 height = HeightOver(fixed, first, moving, i, c);
    ofMoving = c == 0 ? height : Most(height, ofMoving);
    const Double4 depth = DepthUnder(moving, i, fixed, first, c);
    ofFixed = c == 0 ? depth : Most(depth, ofFixed);
  }
  const Double4 error = Double4::At(&fixed.error[first]);
  ofMoving = ofMoving + error * Double4::Of(moving.reach + fixed.planeReach);
  ofFixed = ofFixed + Double4::Of(moving.error[i] * (moving.planeReach + fixed.reach));
  const Double4 least = Double4::Of(from);
  unsigned mask = AtMost(least, ofMoving) | AtMost(error, Double4::Of(0.0));
  if (moving.error[i] != 0.0) mask &= AtMost(least, ofFixed);
  return mask;
}

/// Writes the corners of a pair, across the direction and relative to the corner `origin`: first
/// three of the moving triangle, then three of the fixed one.
template <class Scalar>
void LeafPair<Scalar>::WriteShadows(int movingTriangle, int fixedTriangle, int origin,
                                    Shadows& shadows) const {
  const ShadowPlane plane(m_scene.direction);
  double corner[6][3];
  for (int x = 0; x < 3; ++x) {
    for (int c = 0; c < 3; ++c) {
      corner[c][x] = moving.corner[3 * c + x][movingTriangle];
      corner[3 + c][x] = fixed.corner[3 * c + x][fixedTriangle];
    }
  }
  for (int c = 0; c < 6; ++c)
    plane.Project(corner[c], corner[origin], shadows.u[c], shadows.v[c], shadows.reach[c]);
}

// With u = 2^-53 and r the largest difference of two coordinates:
//   a coordinate       1 u r for its difference, 3 u r for the part taken off, 2 u r for the rest:
//                      6 u r; it is at most 2 r
//   an edge            12 u r, 4 u r for its rounding: 16 u r; it is at most 4 r
//   a product          2 * 16 u r * 4 r, 16 u r^2 for its rounding: 144 u r^2, squares included
//   a cross product    2 * 144 u r^2, 32 u r^2 for its rounding: 320 u r^2
// Two cross products that differ by more than 640 u r^2 differ in truth; 2^-43 is 1024 u.
template <class Scalar>
bool LeafPair<Scalar>::AreShadowsApart(int movingTriangle, int fixedTriangle) const {
  Shadows shadows;
  WriteShadows(movingTriangle, fixedTriangle, 0, shadows);
  const double(&u)[6] = shadows.u;
  const double(&v)[6] = shadows.v;
  double reach = 0.0;
  for (const double r : shadows.reach)
    reach = std::max(reach, r);
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
  const bool isUnequal = reach > kUnequal * std::min<double>(moving.BoxOf(movingTriangle).Size(),
                                                             fixed.BoxOf(fixedTriangle).Size());
  return isUnequal && AreUnequalShadowsApart(movingTriangle, fixedTriangle);
}

// As above, but with a bound for each corner. The corners are relative to a corner of the smaller
// triangle, and an edge begins at its end that is nearer to that corner. With r the reach of a
// corner:
//   a coordinate       6 u r; it is at most 2 r
//   an edge            6 u (r + r'), 2 u (r + r') for its rounding: 8 u R with R = r + r'; it is at
//                      most 2 R. The same holds for the way from the edge's beginning to a point,
//                      with its own R'
//   a product          2 * 16 u R R', 4 u R R' for its rounding: 37 u R R', squares included
//   a cross product    74 u R R', 8 u R R' for its rounding: 83 u R R', squares included
// The bound is 128 u R R' = 2^-46 R R', which also covers the roundings of the bound and of the
// comparison.
template <class Scalar>
bool LeafPair<Scalar>::AreUnequalShadowsApart(int movingTriangle, int fixedTriangle) const {
  const bool isMovingSmaller =
      moving.BoxOf(movingTriangle).Size() < fixed.BoxOf(fixedTriangle).Size();
  Shadows shadows;
  WriteShadows(movingTriangle, fixedTriangle, isMovingSmaller ? 0 : 3, shadows);
  const double(&u)[6] = shadows.u;
  const double(&v)[6] = shadows.v;
  const double(&reach)[6] = shadows.reach;
  for (int own = 0; own < 6; own += 3) {
    for (int c = 0; c < 3; ++c) {
      const int next = own + (c == 2 ? 0 : c + 1);
      const int rest = own + (c == 0 ? 2 : c - 1);
      const bool isNearer = reach[own + c] <= reach[next];
      const int from = isNearer ? own + c : next;
      const int to = isNearer ? next : own + c;
      const double edgeU = u[to] - u[from];
      const double edgeV = v[to] - v[from];
      const double scale = 0x1p-46 * (reach[to] + reach[from]);
      // Receives the least and the greatest value that the side of a point can have.
      const auto side = [&](int k, double& least, double& most) {
        const double value = edgeU * (v[k] - v[from]) - edgeV * (u[k] - u[from]);
        const double error = scale * (reach[k] + reach[from]);
        least = std::min(least, value - error);
        most = std::max(most, value + error);
      };
      double ownLeast = 0.0;
      double ownMost = 0.0;
      side(rest, ownLeast, ownMost);
      double otherLeast = Box<double>::kFar;
      double otherMost = -otherLeast;
      for (int k = 3 - own; k < 6 - own; ++k)
        side(k, otherLeast, otherMost);
      if (otherLeast > ownMost || otherMost < ownLeast) return true;
    }
  }
  return false;
}

/// Writes how far the corners of one triangle are on the inner side of an edge of the other, at
/// most. `own` is 0 for an edge of the moving triangle and 3 for one of the fixed triangle. Returns
/// false where rounding hides which side is the inner one.
template <class Scalar>
bool LeafPair<Scalar>::WriteInnerSides(const Shadows& shadows, int own, int edge,
                                       double (&side)[3]) {
  const double(&u)[6] = shadows.u;
  const double(&v)[6] = shadows.v;
  const double(&reach)[6] = shadows.reach;
  const int next = edge == 2 ? 0 : edge + 1;
  const int rest = own + 3 - edge - next;
  const bool isNearer = reach[own + edge] <= reach[own + next];
  const int from = own + (isNearer ? edge : next);
  const int to = own + (isNearer ? next : edge);
  const double edgeU = u[to] - u[from];
  const double edgeV = v[to] - v[from];
  const double scale = 0x1p-46 * (reach[to] + reach[from]);
  const auto sideOf = [&](int k) { return edgeU * (v[k] - v[from]) - edgeV * (u[k] - u[from]); };
  const auto errorOf = [&](int k) { return scale * (reach[k] + reach[from]); };
  const double inner = sideOf(rest);
  if (!(std::fabs(inner) > errorOf(rest))) return false;
  for (int c = 0; c < 3; ++c) {
    const int k = 3 - own + c;
    side[c] = (inner > 0.0 ? sideOf(k) : -sideOf(k)) + errorOf(k);
  }
  return true;
}

/// Returns at least every travel at which the triangles touch, or every such travel taken negative.
//
// A point that both shadows share is on the inner side of every edge. As a point of the one
// triangle it is a mean of three corners, and its height over the plane of the other is the same
// mean of theirs. Sides are bounded as in AreUnequalShadowsApart, and heights as in
// TouchingByHeight. A change of sign is exact. No height is infinite or NaN: filters are used with
// comfortable coordinates and directions alone.
template <class Scalar>
template <bool kNegative>
double LeafPair<Scalar>::GreatestTravel(int movingTriangle, int fixedTriangle) const {
  const int i = movingTriangle;
  const int j = fixedTriangle;
  const bool isMovingSmaller = moving.BoxOf(i).Size() < fixed.BoxOf(j).Size();
  const bool isOverFixed = isMovingSmaller ? fixed.error[j] != 0.0 : moving.error[i] == 0.0;
  const LeafTriangles<Scalar>& planes = isOverFixed ? fixed : moving;
  const LeafTriangles<Scalar>& points = isOverFixed ? moving : fixed;
  const int plane = isOverFixed ? j : i;
  const int point = isOverFixed ? i : j;
  if (planes.error[plane] == 0.0) return Box<double>::kFar;
  const double error = planes.error[plane] * (planes.planeReach + points.reach);
  double height[3];
  double greatest = -Box<double>::kFar;
  for (int c = 0; c < 3; ++c) {
    const double over =
        planes.offset[plane] - (planes.normal[0][plane] * points.corner[3 * c][point] +
                                planes.normal[1][plane] * points.corner[3 * c + 1][point] +
                                planes.normal[2][plane] * points.corner[3 * c + 2][point]);
    height[c] = (isOverFixed == kNegative ? -over : over) + error;
    greatest = std::max(greatest, height[c]);
  }
  Shadows shadows;
  WriteShadows(i, j, isMovingSmaller ? 0 : 3, shadows);
  for (int edge = 0; edge < 3; ++edge) {
    double side[3];
    if (WriteInnerSides(shadows, isOverFixed ? 3 : 0, edge, side))
      greatest = std::min(greatest, GreatestWithin(height, side));
  }
  return greatest;
}

template <class Scalar>
double LeafPair<Scalar>::FirstTravel(int movingTriangle, int fixedTriangle) const {
  return -GreatestTravel<true>(movingTriangle, fixedTriangle);
}

template <class Scalar>
double LeafPair<Scalar>::LastTravel(int movingTriangle, int fixedTriangle) const {
  return GreatestTravel<false>(movingTriangle, fixedTriangle);
}

template <class Scalar>
bool LeafPair<Scalar>::AreApartAtStart(int movingTriangle, int fixedTriangle) const {
  const int i = movingTriangle;
  const int j = fixedTriangle;
  for (int x = 0; x < 3; ++x) {
    if (moving.high[x][i] < fixed.low[x][j] || fixed.high[x][j] < moving.low[x][i]) return true;
  }
  const auto areOnOneSide = [](const LeafTriangles<Scalar>& planes, int plane,
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
    const double error = planes.error[plane] * (planes.planeReach + points.reach);
    return low > error || high < -error;
  };
  return areOnOneSide(fixed, j, moving, i) || areOnOneSide(moving, i, fixed, j);
}

// A middle is off by 1 u of its size; the half is enlarged, so that the box still holds everything.
template <class Scalar, bool kMoves>
LeafBeforeBox<Scalar, kMoves>::LeafBeforeBox(const Scene<Scalar>& scene,
                                             const LeafTriangles<Scalar>& leaf,
                                             const Box<Scalar>& box)
    : m_scene(scene), m_leaf(leaf) {
  for (int x = 0; x < 3; ++x) {
    const double low = box.low[x];
    const double high = box.high[x];
    m_middle[x] = 0.5 * low + 0.5 * high;
    m_half[x] = std::max(high - m_middle[x], m_middle[x] - low) * (1.0 + 0x1p-50);
    m_reach += std::fabs(m_middle[x]) + m_half[x];
  }
}

template <class Scalar, bool kMoves>
double LeafBeforeBox<Scalar, kMoves>::FirstTravel(const TravelRange<double>& range,
                                                  double enough) const {
  return -GreatestTravel<true>({-range.to, -range.from}, -enough);
}

template <class Scalar, bool kMoves>
double LeafBeforeBox<Scalar, kMoves>::LastTravel(const TravelRange<double>& range,
                                                 double enough) const {
  return GreatestTravel<false>(range, enough);
}

/// Returns at least every travel within the range at which a triangle touches the box. All travels
/// can be taken negative.
template <class Scalar, bool kMoves>
template <bool kNegative>
double LeafBeforeBox<Scalar, kMoves>::GreatestTravel(const TravelRange<double>& range,
                                                     double enough) const {
  double greatest = -Box<double>::kFar;
  for (int k = 0; k < m_leaf.count; ++k) {
    greatest = std::max(greatest, GreatestTravelOf<kNegative>(k, range));
    if (greatest >= enough) return Box<double>::kFar;
  }
  return greatest;
}

/// A plane without heights, whose error is zero, says nothing. A point that both shadows share is
/// on the inner side of every edge.
template <class Scalar, bool kMoves>
template <bool kNegative>
double LeafBeforeBox<Scalar, kMoves>::GreatestTravelOf(int k,
                                                       const TravelRange<double>& range) const {
  const Linear height = HeightsOf<kNegative>(k);
  const bool hasHeights = height.error != 0.0;
  double greatest = Box<double>::kFar;
  if (hasHeights) {
    const double spread = SpreadOf(height, m_half);
    greatest = height.middle + spread;
    if (greatest < range.from) return greatest;
    if (height.middle - spread > range.to) return -Box<double>::kFar;
  }
  Side sides[3];
  SidesOf(k, sides);
  for (const Side& side : sides) {
    if (IsApart(side)) return -Box<double>::kFar;
    // Where rounding hides which side is the inner one, the edge bounds nothing.
    if (!hasHeights || (side.least < 0.0) == (side.most > 0.0)) continue;
    const double sign = side.most > 0.0 ? 1.0 : -1.0;
    greatest = std::min(greatest, GreatestWithin(height, side, sign, m_half));
  }
  return greatest;
}

/// Returns the travels at which points of the box meet the plane of a triangle, or their negatives.
/// Twice the error of a point covers the middle and the sides of the box as well.
template <class Scalar, bool kMoves>
template <bool kNegative>
Linear LeafBeforeBox<Scalar, kMoves>::HeightsOf(int k) const {
  const double sign = kMoves == kNegative ? 1.0 : -1.0;
  Linear height{};
  height.middle = m_leaf.offset[k];
  height.error = 2.0 * m_leaf.error[k] * (m_leaf.planeReach + m_reach);
  for (int x = 0; x < 3; ++x) {
    height.middle -= m_leaf.normal[x][k] * m_middle[x];
    height.slope[x] = -sign * m_leaf.normal[x][k];
  }
  height.middle *= sign;
  return height;
}

// The bounds are those of unequal shadows; the middle of the box is the origin. The sides of the
// box add |edge| * half, which is off by less than the bound for a point as far away as the half.
template <class Scalar, bool kMoves>
void LeafBeforeBox<Scalar, kMoves>::SidesOf(int k, Side (&sides)[3]) const {
  const ShadowPlane plane(m_scene.direction);
  double u[3], v[3], reach[3];
  for (int c = 0; c < 3; ++c) {
    const double p[3] = {m_leaf.corner[3 * c][k], m_leaf.corner[3 * c + 1][k],
                         m_leaf.corner[3 * c + 2][k]};
    plane.Project(p, m_middle, u[c], v[c], reach[c]);
  }
  const double size = std::max(m_half[0], std::max(m_half[1], m_half[2]));
  for (int c = 0; c < 3; ++c) {
    Side& side = sides[c];
    const int next = c == 2 ? 0 : c + 1;
    const int rest = 3 - c - next;
    const int from = reach[c] <= reach[next] ? c : next;
    const int to = c + next - from;
    const double edgeU = u[to] - u[from];
    const double edgeV = v[to] - v[from];
    const double scale = 0x1p-46 * (reach[to] + reach[from]);
    const double third = edgeU * (v[rest] - v[from]) - edgeV * (u[rest] - u[from]);
    const double thirdError = scale * (reach[rest] + reach[from]);
    side.least = std::min(0.0, third - thirdError);
    side.most = std::max(0.0, third + thirdError);
    side.middle = edgeV * u[from] - edgeU * v[from];
    side.slope[plane.X()] = -edgeV;
    side.slope[plane.Y()] = edgeU;
    side.slope[plane.Z()] = edgeV * plane.SlopeX() - edgeU * plane.SlopeY();
    side.error = scale * (size + reach[from]);
  }
}

template <class Scalar, bool kMoves>
bool LeafBeforeBox<Scalar, kMoves>::IsApart(const Side& side) const {
  const double spread = SpreadOf(side, m_half);
  return side.middle - spread > side.most || side.middle + spread < side.least;
}

template struct LeafTriangles<float>;
template struct LeafTriangles<double>;
template class LeafCache<float>;
template class LeafCache<double>;
template class LeafBeforeBox<float, true>;
template class LeafBeforeBox<float, false>;
template class LeafBeforeBox<double, true>;
template class LeafBeforeBox<double, false>;
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
