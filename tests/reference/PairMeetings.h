#ifndef REFERENCE_PAIR_MEETINGS_H
#define REFERENCE_PAIR_MEETINGS_H

#include "PairSweepOracle.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// When two triangles touch, and which features meet then, in whole numbers.
///
/// A moving triangle touches a fixed one after s times the direction exactly when s * direction is
/// in the hull of the nine differences between a fixed and a moving corner. So the interval is a
/// line that is intersected with that hull, which has no faces and no edges. The features that meet
/// are found afterwards, on the moved triangle at rest.
/// Range      coordinates up to 1000, and directions up to 10.
namespace oracle {

using WidePoint = std::array<Wide, 3>;
using WideTriangle = std::array<WidePoint, 3>;

inline std::size_t After(std::size_t k) {
  return k == 2 ? 0 : k + 1;
}

inline WidePoint operator-(const WidePoint& a, const WidePoint& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

inline Wide Dot(const WidePoint& a, const WidePoint& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline WidePoint Cross(const WidePoint& a, const WidePoint& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

inline WidePoint Widened(const IntPoint& p) {
  return {p[0], p[1], p[2]};
}

/// Returns the sign of normal . direction.
inline int FacingOf(const IntPoint& d, const IntTriangle& t) {
  const WidePoint from = Widened(t[0]);
  const Wide along = Dot(Widened(d), Cross(Widened(t[1]) - from, Widened(t[2]) - from));
  return (along > 0) - (along < 0);
}

/// The nine differences, in coordinates in which the direction is along the height.
class Differences {
public:
  Differences(const IntPoint& d, const IntTriangle& moving, const IntTriangle& fixed) {
    while (d[m_axis] == 0)
      ++m_axis;
    m_along = d[m_axis];
    for (std::size_t k = 0; k < 9; ++k) {
      const IntPoint& a = moving[k / 3];
      const IntPoint& b = fixed[k % 3];
      const std::size_t u = After(m_axis);
      const std::size_t v = After(u);
      m_height[k] = b[m_axis] - a[m_axis];
      m_u[k] = m_along * (b[u] - a[u]) - d[u] * m_height[k];
      m_v[k] = m_along * (b[v] - a[v]) - d[v] * m_height[k];
    }
  }

  /// Intersects the line u = v = 0 with the hull. Each end is a combination of at most three
  /// differences that are around the line.
  std::optional<Interval> OnLine() {
    for (std::size_t i = 0; i < 9; ++i) {
      if (m_u[i] == 0 && m_v[i] == 0) Take(m_height[i], 1);
      for (std::size_t j = i + 1; j < 9; ++j) {
        const std::int64_t ij = Side(i, j);
        if (ij == 0) TakeOpposite(i, j);
        for (std::size_t k = j + 1; k < 9 && ij != 0; ++k) {
          const std::int64_t jk = Side(j, k);
          const std::int64_t ki = Side(k, i);
          const bool isAround = ij > 0 ? jk > 0 && ki > 0 : jk < 0 && ki < 0;
          if (!isAround) continue;
          Take(jk * m_height[i] + ki * m_height[j] + ij * m_height[k], ij + jk + ki);
        }
      }
    }
    if (!m_any) return std::nullopt;
    const Fraction atLow = TravelOf(m_low);
    const Fraction atHigh = TravelOf(m_high);
    return m_along > 0 ? Interval{atLow, atHigh} : Interval{atHigh, atLow};
  }

  /// Returns true when the line goes through the inside of the hull of the shadows. Otherwise a
  /// line through zero and some difference has all of them on one closed side.
  bool HoldLineInside() const {
    for (std::size_t i = 0; i < 9; ++i) {
      if (m_u[i] == 0 && m_v[i] == 0) continue;
      bool left = false;
      bool right = false;
      for (std::size_t j = 0; j < 9; ++j) {
        left = left || Side(i, j) > 0;
        right = right || Side(i, j) < 0;
      }
      if (!left || !right) return false;
    }
    return true;
  }

private:
  std::int64_t Side(std::size_t i, std::size_t j) const {
    return m_u[i] * m_v[j] - m_v[i] * m_u[j];
  }

  void TakeOpposite(std::size_t i, std::size_t j) {
    const bool byU = m_u[i] != 0;
    const std::int64_t atI = byU ? m_u[i] : m_v[i];
    const std::int64_t atJ = byU ? m_u[j] : m_v[j];
    const bool areOpposite = (atI > 0 && atJ < 0) || (atI < 0 && atJ > 0);
    if (areOpposite) Take(atJ * m_height[i] - atI * m_height[j], atJ - atI);
  }

  void Take(std::int64_t over, std::int64_t under) {
    const Quotient s = under > 0 ? Quotient{over, under} : Quotient{-over, -under};
    if (!m_any || s.IsBelow(m_low)) m_low = s;
    if (!m_any || m_high.IsBelow(s)) m_high = s;
    m_any = true;
  }

  /// A height, not reduced, over a positive number.
  struct Quotient {
    std::int64_t over = 0, under = 1;

    bool IsBelow(const Quotient& other) const {
      return Wide{over} * other.under < Wide{other.over} * under;
    }
  };

  Fraction TravelOf(const Quotient& height) const {
    return MakeFraction(height.over, Wide{height.under} * m_along);
  }

  std::size_t m_axis = 0;
  std::int64_t m_along = 0;
  std::array<std::int64_t, 9> m_u{}, m_v{}, m_height{};
  Quotient m_low, m_high;
  bool m_any = false;
};

/// Returns the travels at which the pair touches, in multiples of the direction.
inline std::optional<Interval> TouchingTravels(const IntPoint& d, const IntTriangle& moving,
                                               const IntTriangle& fixed) {
  return Differences(d, moving, fixed).OnLine();
}

/// Returns true when the shadows of two triangles share area. Requires shadows that have area.
inline bool ShadowsShareArea(const IntPoint& d, const IntTriangle& moving,
                             const IntTriangle& fixed) {
  return Differences(d, moving, fixed).HoldLineInside();
}

/// The order of the kinds decides ties.
enum class MeetingKind { VertexVertex, VertexEdge, EdgeVertex, VertexFace, FaceVertex, EdgeEdge };

struct Meeting {
  MeetingKind kind;
  std::size_t onMoving, onFixed; ///< corner, or edge from this corner to the next; of a face 0
  std::array<Fraction, 3> point; ///< where they meet
};

/// Finds how features of two triangles at rest meet.
class MeetingsAtRest {
public:
  /// All coordinates are divided by `unit`.
  MeetingsAtRest(const WideTriangle& moving, const WideTriangle& fixed, Wide unit)
      : m_moving(moving), m_fixed(fixed), m_unit(unit) {}

  /// Returns every meeting, by kind, then by the moving feature, then by the fixed one.
  std::vector<Meeting> All() {
    EachPair([this](std::size_t i, std::size_t j) {
      if (m_moving[i] == m_fixed[j]) Found(MeetingKind::VertexVertex, i, j, m_moving[i]);
    });
    EachPair([this](std::size_t i, std::size_t j) {
      if (IsInsideEdge(m_moving[i], m_fixed, j)) Found(MeetingKind::VertexEdge, i, j, m_moving[i]);
    });
    EachPair([this](std::size_t i, std::size_t j) {
      if (IsInsideEdge(m_fixed[j], m_moving, i)) Found(MeetingKind::EdgeVertex, i, j, m_fixed[j]);
    });
    for (std::size_t i = 0; i < 3; ++i)
      if (IsInsideFace(m_moving[i], m_fixed)) Found(MeetingKind::VertexFace, i, 0, m_moving[i]);
    for (std::size_t j = 0; j < 3; ++j)
      if (IsInsideFace(m_fixed[j], m_moving)) Found(MeetingKind::FaceVertex, 0, j, m_fixed[j]);
    EachPair([this](std::size_t i, std::size_t j) { CrossEdges(i, j); });
    return m_found;
  }

private:
  template <class Visit>
  static void EachPair(const Visit& visit) {
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t j = 0; j < 3; ++j)
        visit(i, j);
    }
  }

  void Found(MeetingKind kind, std::size_t onMoving, std::size_t onFixed, const WidePoint& p) {
    m_found.push_back(
        {kind,
         onMoving,
         onFixed,
         {MakeFraction(p[0], m_unit), MakeFraction(p[1], m_unit), MakeFraction(p[2], m_unit)}});
  }

  static bool IsInsideEdge(const WidePoint& p, const WideTriangle& t, std::size_t k) {
    const WidePoint e = t[After(k)] - t[k];
    const WidePoint r = p - t[k];
    if (Cross(e, r) != WidePoint{}) return false;
    const Wide at = Dot(e, r);
    return at > 0 && at < Dot(e, e);
  }

  /// Returns an axis along which the vector is not zero, or 3.
  static std::size_t AxisOf(const WidePoint& v) {
    return v[0] != 0 ? 0 : v[1] != 0 ? 1 : v[2] != 0 ? 2 : 3;
  }

  static bool IsInsideFace(const WidePoint& p, const WideTriangle& t) {
    const WidePoint normal = Cross(t[1] - t[0], t[2] - t[0]);
    const std::size_t axis = AxisOf(normal);
    if (axis == 3 || Dot(normal, p - t[0]) != 0) return false;
    for (std::size_t k = 0; k < 3; ++k) {
      const Wide side = Cross(t[After(k)] - t[k], p - t[k])[axis];
      if (normal[axis] > 0 ? side <= 0 : side >= 0) return false;
    }
    return true;
  }

  /// Notes where the insides of two edges cross.
  void CrossEdges(std::size_t i, std::size_t j) {
    const WidePoint e = m_moving[After(i)] - m_moving[i];
    const WidePoint f = m_fixed[After(j)] - m_fixed[j];
    const WidePoint r = m_fixed[j] - m_moving[i];
    const WidePoint normal = Cross(e, f);
    const std::size_t axis = AxisOf(normal);
    if (axis == 3 || Dot(normal, r) != 0) return;
    const Fraction onE = MakeFraction(Cross(r, f)[axis], normal[axis]);
    const Fraction onF = MakeFraction(Cross(r, e)[axis], normal[axis]);
    for (const Fraction& at : {onE, onF})
      if (at.numerator <= 0 || at.numerator >= at.denominator) return;
    const auto along = [&](std::size_t c) {
      return MakeFraction(m_moving[i][c] * onE.denominator + onE.numerator * e[c],
                          onE.denominator * m_unit);
    };
    m_found.push_back({MeetingKind::EdgeEdge, i, j, {along(0), along(1), along(2)}});
  }

  WideTriangle m_moving, m_fixed;
  Wide m_unit;
  std::vector<Meeting> m_found;
};

/// Returns how features meet after s times the direction.
inline std::vector<Meeting> MeetingsAfter(const IntPoint& d, const IntTriangle& moving,
                                          const IntTriangle& fixed, const Fraction& s) {
  WideTriangle a;
  WideTriangle b;
  for (std::size_t k = 0; k < 3; ++k) {
    for (std::size_t c = 0; c < 3; ++c) {
      a[k][c] = moving[k][c] * s.denominator + s.numerator * d[c];
      b[k][c] = fixed[k][c] * s.denominator;
    }
  }
  return MeetingsAtRest(a, b, s.denominator).All();
}

} // namespace oracle

#endif
