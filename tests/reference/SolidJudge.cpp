#include "SolidJudge.h"

#include <algorithm>
#include <numeric>

namespace reference {

namespace {

LatticePoint operator-(const LatticePoint& a, const LatticePoint& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

std::int64_t Dot(const LatticePoint& a, const LatticePoint& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

LatticePoint Cross(const LatticePoint& a, const LatticePoint& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

bool IsZero(const LatticePoint& a) {
  return a[0] == 0 && a[1] == 0 && a[2] == 0;
}

/// Divides a vector that is not zero by the greatest common divisor of its components.
LatticePoint Primitive(const LatticePoint& a) {
  const std::int64_t divisor = std::gcd(std::gcd(a[0], a[1]), a[2]);
  return {a[0] / divisor, a[1] / divisor, a[2] / divisor};
}

/// Returns the same vector for a vector and its opposite.
LatticePoint Undirected(const LatticePoint& a) {
  return std::max(a, LatticePoint{-a[0], -a[1], -a[2]});
}

struct Facet {
  LatticePoint normal;               ///< outwards, primitive
  std::vector<LatticePoint> corners; ///< turning left as seen from outside, without straight ones
};

/// Returns the corners of the convex hull of points in one plane.
std::vector<LatticePoint> ConvexPolygon(std::vector<LatticePoint> points,
                                        const LatticePoint& normal) {
  std::sort(points.begin(), points.end());
  points.erase(std::unique(points.begin(), points.end()), points.end());
  std::vector<LatticePoint> polygon;
  // Once from the least point to the greatest, and once back.
  for (int pass = 0; pass < 2; ++pass) {
    const std::size_t base = polygon.size() + 1;
    for (const LatticePoint& p : points) {
      while (polygon.size() > base) {
        const LatticePoint& a = polygon[polygon.size() - 2];
        const LatticePoint& b = polygon.back();
        if (Dot(normal, Cross(b - a, p - b)) > 0) break;
        polygon.pop_back();
      }
      polygon.push_back(p);
    }
    polygon.pop_back();
    std::reverse(points.begin(), points.end());
  }
  return polygon;
}

std::vector<Facet> FacetsOf(const Piece& piece) {
  std::vector<Facet> facets;
  for (std::size_t i = 0; i < piece.size(); ++i) {
    for (std::size_t j = i + 1; j < piece.size(); ++j) {
      for (std::size_t k = j + 1; k < piece.size(); ++k) {
        LatticePoint normal = Cross(piece[j] - piece[i], piece[k] - piece[i]);
        if (IsZero(normal)) continue;
        normal = Primitive(normal);
        std::int64_t low = 0;
        std::int64_t high = 0;
        std::vector<LatticePoint> inPlane;
        for (const LatticePoint& p : piece) {
          const std::int64_t height = Dot(normal, p - piece[i]);
          low = std::min(low, height);
          high = std::max(high, height);
          if (height == 0) inPlane.push_back(p);
        }
        if (low < 0 && high > 0) continue;
        if (high > 0) normal = {-normal[0], -normal[1], -normal[2]};
        const auto isKnown = [&](const Facet& facet) { return facet.normal == normal; };
        if (std::any_of(facets.begin(), facets.end(), isKnown)) continue;
        facets.push_back({normal, ConvexPolygon(inPlane, normal)});
      }
    }
  }
  return facets;
}

/// The directions that may separate a piece from another, and the vectors along its edges.
struct Shape {
  explicit Shape(const Piece& piece) : corners(piece) {
    for (const Facet& facet : FacetsOf(piece)) {
      AddOnce(normals, facet.normal);
      for (std::size_t k = 0; k < facet.corners.size(); ++k) {
        const LatticePoint& next = facet.corners[(k + 1) % facet.corners.size()];
        AddOnce(edges, Primitive(next - facet.corners[k]));
      }
    }
  }

  static void AddOnce(std::vector<LatticePoint>& all, const LatticePoint& added) {
    const LatticePoint one = Undirected(added);
    if (std::find(all.begin(), all.end(), one) == all.end()) all.push_back(one);
  }

  const Piece& corners;
  std::vector<LatticePoint> normals, edges;
};

/// Narrows an interval to the travels at which `normal` does not separate two pieces. Returns false
/// when there are none.
bool Narrow(const LatticePoint& normal, const Piece& moving, const Piece& fixed,
            const LatticePoint& direction, std::optional<Interval>& interval) {
  const auto extent = [&normal](const Piece& piece) {
    std::int64_t low = Dot(normal, piece[0]);
    std::int64_t high = low;
    for (const LatticePoint& p : piece) {
      low = std::min(low, Dot(normal, p));
      high = std::max(high, Dot(normal, p));
    }
    return std::make_pair(low, high);
  };
  const auto [movingLow, movingHigh] = extent(moving);
  const auto [fixedLow, fixedHigh] = extent(fixed);
  const std::int64_t speed = Dot(normal, direction);
  const std::int64_t toMeet = fixedLow - movingHigh;
  const std::int64_t toPart = fixedHigh - movingLow;
  if (speed == 0) return toMeet < 0 && toPart > 0;
  Interval own{Rational(Whole(toMeet), Whole(speed)), Rational(Whole(toPart), Whole(speed))};
  own.first.canonicalize();
  own.last.canonicalize();
  if (speed < 0) std::swap(own.first, own.last);
  if (!interval) {
    interval = own;
  } else {
    interval->first = std::max(interval->first, own.first);
    interval->last = std::min(interval->last, own.last);
  }
  return interval->first < interval->last;
}

std::optional<Interval> OverlapOfShapes(const Shape& moving, const Shape& fixed,
                                        const LatticePoint& direction) {
  std::optional<Interval> interval;
  const auto narrow = [&](const LatticePoint& normal) {
    return Narrow(normal, moving.corners, fixed.corners, direction, interval);
  };
  for (const Shape* shape : {&moving, &fixed}) {
    for (const LatticePoint& normal : shape->normals)
      if (!narrow(normal)) return std::nullopt;
  }
  std::vector<LatticePoint> across;
  for (const LatticePoint& u : moving.edges) {
    for (const LatticePoint& v : fixed.edges) {
      const LatticePoint normal = Cross(u, v);
      if (!IsZero(normal)) Shape::AddOnce(across, Primitive(normal));
    }
  }
  for (const LatticePoint& normal : across)
    if (!narrow(normal)) return std::nullopt;
  return interval;
}

WholeTriangle TriangleOf(const std::vector<LatticePoint>& surface, std::size_t k) {
  WholeTriangle triangle;
  for (std::size_t c = 0; c < 3; ++c) {
    const LatticePoint& p = surface[3 * k + c];
    triangle[c] = {Whole(p[0]), Whole(p[1]), Whole(p[2])};
  }
  return triangle;
}

/// The shadow of a triangle along the direction, with coordinates that turn left in the same sense
/// as a triangle that faces against the direction, seen from where the direction comes.
struct Shadow {
  Shadow(const std::vector<LatticePoint>& surface, std::size_t k, const LatticePoint& direction) {
    const LatticePoint* p = &surface[3 * k];
    facing = Dot(Cross(p[1] - p[0], p[2] - p[0]), direction);
    std::size_t axis = 0;
    while (direction[axis] == 0)
      ++axis;
    const std::size_t x = (axis + 1) % 3;
    const std::size_t y = (axis + 2) % 3;
    for (std::size_t c = 0; c < 3; ++c) {
      u[c] = direction[axis] * p[c][x] - direction[x] * p[c][axis];
      v[c] = direction[axis] * p[c][y] - direction[y] * p[c][axis];
    }
  }

  std::int64_t Side(std::size_t edge, const Shadow& other, std::size_t c) const {
    const std::size_t to = (edge + 1) % 3;
    return (u[to] - u[edge]) * (other.v[c] - v[edge]) - (v[to] - v[edge]) * (other.u[c] - u[edge]);
  }

  /// Returns true when a line along an edge has the other triangle on its other side, or on itself.
  bool Separates(const Shadow& other) const {
    const std::int64_t own = Side(0, *this, 2);
    for (std::size_t edge = 0; edge < 3; ++edge) {
      bool separates = true;
      for (std::size_t c = 0; c < 3; ++c) {
        const std::int64_t side = Side(edge, other, c);
        separates = separates && (own > 0 ? side <= 0 : side >= 0);
      }
      if (separates) return true;
    }
    return false;
  }

  bool SharesArea(const Shadow& other) const {
    return !Separates(other) && !other.Separates(*this);
  }

  std::int64_t facing;
  std::int64_t u[3], v[3];
};

/// A line along the direction, as a point across it.
struct Line {
  Rational u, v;
};

Line PointOf(const Shadow& shadow, std::size_t c) {
  return {Rational(Whole(shadow.u[c])), Rational(Whole(shadow.v[c]))};
}

/// Returns twice the area that a line sees of an edge, with its sign.
Rational AreaFrom(const Line& from, const Line& to, const Line& line) {
  return (to.u - from.u) * (line.v - from.v) - (to.v - from.v) * (line.u - from.u);
}

/// Returns a line that meets the insides of two triangles, whose shadows share area.
Line LineThrough(const Shadow& a, const Shadow& b) {
  std::vector<Line> polygon{PointOf(a, 0), PointOf(a, 1), PointOf(a, 2)};
  const int sense = b.Side(0, b, 2) > 0 ? 1 : -1;
  for (std::size_t edge = 0; edge < 3; ++edge) {
    const Line from = PointOf(b, edge);
    const Line to = PointOf(b, (edge + 1) % 3);
    std::vector<Line> kept;
    for (std::size_t k = 0; k < polygon.size(); ++k) {
      const Line& p = polygon[k];
      const Line& q = polygon[(k + 1) % polygon.size()];
      const Rational ofP = sense * AreaFrom(from, to, p);
      const Rational ofQ = sense * AreaFrom(from, to, q);
      if (ofP >= 0) kept.push_back(p);
      if (sgn(ofP) * sgn(ofQ) >= 0) continue;
      const Rational at = ofP / (ofP - ofQ);
      kept.push_back({p.u + at * (q.u - p.u), p.v + at * (q.v - p.v)});
    }
    polygon = kept;
  }
  // Different weights keep off the lines of symmetry of the lattice, where pieces meet.
  Line sum{0, 0};
  int weights = 0;
  for (std::size_t k = 0; k < polygon.size(); ++k) {
    const int weight = 5 + static_cast<int>(k * k);
    sum.u += weight * polygon[k].u;
    sum.v += weight * polygon[k].v;
    weights += weight;
  }
  return {sum.u / weights, sum.v / weights};
}

/// Returns the point where a line meets a triangle.
RationalPoint PointOn(const WholeTriangle& triangle, const Shadow& shadow, const Line& line) {
  RationalPoint point{0, 0, 0};
  const Line corners[3] = {PointOf(shadow, 0), PointOf(shadow, 1), PointOf(shadow, 2)};
  const Rational whole = AreaFrom(corners[0], corners[1], corners[2]);
  for (std::size_t c = 0; c < 3; ++c) {
    const Rational part = AreaFrom(corners[(c + 1) % 3], corners[(c + 2) % 3], line) / whole;
    point.x += part * triangle[c].x;
    point.y += part * triangle[c].y;
    point.z += part * triangle[c].z;
  }
  return point;
}

/// The facets of each piece of a solid.
using FacetsOfPieces = std::vector<std::vector<Facet>>;

FacetsOfPieces FacetsOfEach(const std::vector<Piece>& pieces) {
  FacetsOfPieces facets;
  for (const Piece& piece : pieces)
    facets.push_back(FacetsOf(piece));
  return facets;
}

/// Returns true when a solid has the points that follow a point along the direction, or against it.
bool HasPointsBeside(const FacetsOfPieces& pieces, const RationalPoint& p,
                     const LatticePoint& direction, int sense) {
  const auto isUnder = [&](const Facet& facet) {
    const LatticePoint& n = facet.normal;
    const Rational height =
        n[0] * p.x + n[1] * p.y + n[2] * p.z - Rational(Whole(Dot(n, facet.corners[0])));
    return height < 0 || (height == 0 && sense * Dot(n, direction) <= 0);
  };
  return std::any_of(pieces.begin(), pieces.end(), [&](const std::vector<Facet>& facets) {
    return std::all_of(facets.begin(), facets.end(), isUnder);
  });
}

/// Looks at all pairs of triangles of two surfaces.
class Pairs {
public:
  explicit Pairs(const SolidQuestion& question)
      : m_moving(question.moving.surface), m_fixed(question.fixed.surface),
        m_movingPieces(FacetsOfEach(question.moving.pieces)),
        m_fixedPieces(FacetsOfEach(question.fixed.pieces)),
        m_direction(question.direction), m_wholeDirection{Whole(m_direction[0]),
                                                          Whole(m_direction[1]),
                                                          Whole(m_direction[2])} {}

  bool Touch() const {
    for (std::size_t i = 0; 3 * i < m_moving.size(); ++i) {
      for (std::size_t j = 0; 3 * j < m_fixed.size(); ++j) {
        if (AreBoxesApart(i, j)) continue;
        const auto interval = IntervalOf(i, j);
        if (interval && interval->first <= 0 && interval->last >= 0) return true;
      }
    }
    return false;
  }

  /// Finds the first pair that meets at a travel and goes on.
  bool FindAt(const Rational& travel, std::size_t& moving, std::size_t& fixed) const {
    std::vector<Shadow> below;
    for (std::size_t j = 0; 3 * j < m_fixed.size(); ++j)
      below.emplace_back(m_fixed, j, m_direction);
    for (std::size_t i = 0; 3 * i < m_moving.size(); ++i) {
      const Shadow shadow(m_moving, i, m_direction);
      if (shadow.facing <= 0) continue;
      for (std::size_t j = 0; j < below.size(); ++j) {
        if (below[j].facing >= 0 || !shadow.SharesArea(below[j])) continue;
        const auto interval = IntervalOf(i, j);
        if (!interval || interval->first != travel) continue;
        if (!Bound(i, shadow, j, below[j])) continue;
        moving = i;
        fixed = j;
        return true;
      }
    }
    return false;
  }

private:
  std::optional<Interval> IntervalOf(std::size_t i, std::size_t j) const {
    return SweepPair(m_wholeDirection, TriangleOf(m_moving, i), TriangleOf(m_fixed, j));
  }

  /// Returns true when the moving solid ends, or the fixed solid begins, at its triangle of a pair,
  /// on a line that meets both. Other triangles may cover one that is turned over.
  bool Bound(std::size_t i, const Shadow& ofMoving, std::size_t j, const Shadow& ofFixed) const {
    const Line line = LineThrough(ofMoving, ofFixed);
    const RationalPoint end = PointOn(TriangleOf(m_moving, i), ofMoving, line);
    const RationalPoint begin = PointOn(TriangleOf(m_fixed, j), ofFixed, line);
    return HasPointsBeside(m_movingPieces, end, m_direction, -1) ||
           HasPointsBeside(m_fixedPieces, begin, m_direction, 1);
  }

  bool AreBoxesApart(std::size_t i, std::size_t j) const {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const auto at = [axis](const std::vector<LatticePoint>& surface, std::size_t k) {
        return std::minmax(
            {surface[3 * k][axis], surface[3 * k + 1][axis], surface[3 * k + 2][axis]});
      };
      const auto [low, high] = at(m_moving, i);
      const auto [otherLow, otherHigh] = at(m_fixed, j);
      if (high < otherLow || otherHigh < low) return true;
    }
    return false;
  }

  const std::vector<LatticePoint>& m_moving;
  const std::vector<LatticePoint>& m_fixed;
  FacetsOfPieces m_movingPieces, m_fixedPieces;
  LatticePoint m_direction;
  WholePoint m_wholeDirection;
};

} // namespace

std::optional<Interval> OverlapOf(const Piece& moving, const Piece& fixed,
                                  const LatticePoint& direction) {
  return OverlapOfShapes(Shape(moving), Shape(fixed), direction);
}

SolidVerdict JudgePieces(const SolidQuestion& question) {
  std::vector<Shape> moving(question.moving.pieces.begin(), question.moving.pieces.end());
  std::vector<Shape> fixed(question.fixed.pieces.begin(), question.fixed.pieces.end());
  SolidVerdict verdict;
  bool overlapsAtStart = false;
  for (const Shape& a : moving) {
    for (const Shape& b : fixed) {
      const auto interval = OverlapOfShapes(a, b, question.direction);
      if (!interval || interval->last <= 0) continue;
      overlapsAtStart = overlapsAtStart || interval->first < 0;
      const Rational travel = std::max(interval->first, Rational(0));
      if (verdict.outcome != SolidOutcome::None && travel >= verdict.travel) continue;
      verdict.travel = travel;
      verdict.outcome = SolidOutcome::Contact;
    }
  }
  if (verdict.outcome == SolidOutcome::Contact && verdict.travel == 0)
    verdict.outcome = SolidOutcome::OverlapAfterStart;
  if (overlapsAtStart) verdict.outcome = SolidOutcome::OverlapAtStart;
  return verdict;
}

SolidVerdict JudgeSolids(const SolidQuestion& question) {
  SolidVerdict verdict = JudgePieces(question);
  const Pairs pairs(question);
  verdict.touches = pairs.Touch();
  if (verdict.outcome == SolidOutcome::Contact ||
      verdict.outcome == SolidOutcome::OverlapAfterStart) {
    verdict.hasPair = pairs.FindAt(verdict.travel, verdict.moving, verdict.fixed);
  }
  return verdict;
}

std::vector<LatticePoint> SurfaceOf(const Piece& piece) {
  std::vector<LatticePoint> surface;
  for (const Facet& facet : FacetsOf(piece)) {
    for (std::size_t k = 2; k < facet.corners.size(); ++k) {
      surface.insert(surface.end(), {facet.corners[0], facet.corners[k - 1], facet.corners[k]});
    }
  }
  return surface;
}

Whole SixfoldVolume(const std::vector<LatticePoint>& surface) {
  Whole volume = 0;
  for (std::size_t k = 0; k < surface.size(); k += 3)
    volume += Dot(surface[k], Cross(surface[k + 1], surface[k + 2]));
  return volume;
}

} // namespace reference
