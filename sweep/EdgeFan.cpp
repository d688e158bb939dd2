#include "EdgeFan.h"

#include "Determinant.h"

#include <algorithm>

namespace gsl_sweep {

namespace {

using gsl_exact::DeterminantSign;
using gsl_exact::VectorBetween;

constexpr Coord3 kOrigin{0.0, 0.0, 0.0};
constexpr Coord3 kAxes[3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};

/// The half-planes from an edge through points, in the order of their angles from one of them.
class Angles {
public:
  Angles(const Coord3& from, const Coord3& to) : m_from(from), m_to(to) {}

  /// Returns whether the point is not on the line of the edge.
  bool HasAngle(const Coord3& p) const { return AxisBeside(p) < 3; }

  void SetFirst(const Coord3& first) {
    m_first = first;
    m_axis = AxisBeside(first);
  }

  /// Returns whether p has a smaller angle than q. Angles are from 0 to the full turn, against the
  /// clock for one who sees the edge come towards him.
  bool IsBefore(const Coord3& p, const Coord3& q) const {
    const int part = PartOf(p), other = PartOf(q);
    if (part != other) return part < other;
    return (part == 1 || part == 3) && Turn(p, q) > 0;
  }

private:
  /// Returns the sign of the turn from p to q: 1 for less than half a turn, -1 for more, 0 where
  /// both are in one plane with the edge.
  int Turn(const Coord3& p, const Coord3& q) const {
    return DeterminantSign(VectorBetween{&m_from, &m_to}, VectorBetween{&m_from, &p},
                           VectorBetween{&m_from, &q});
  }

  /// Returns on which side of the plane through the edge and an axis the point is.
  int Side(int axis, const Coord3& p) const {
    return DeterminantSign(VectorBetween{&m_from, &m_to}, VectorBetween{&kOrigin, &kAxes[axis]},
                           VectorBetween{&m_from, &p});
  }

  /// Returns the first axis whose plane through the edge does not hold the point, or 3.
  int AxisBeside(const Coord3& p) const {
    int axis = 0;
    while (axis < 3 && Side(axis, p) == 0)
      ++axis;
    return axis;
  }

  /// Returns 0 for the angle of the first, 1 below half a turn, 2 at half a turn, 3 beyond.
  int PartOf(const Coord3& p) const {
    const int turn = Turn(m_first, p);
    if (turn != 0) return turn > 0 ? 1 : 3;
    return Side(m_axis, p) == Side(m_axis, m_first) ? 0 : 2;
  }

  Coord3 m_from, m_to;
  Coord3 m_first{0.0, 0.0, 0.0};
  int m_axis = 0;
};

} // namespace

EdgeFan::EdgeFan(const Coord3& from, const Coord3& to, const std::vector<EdgeUse>& uses) {
  Angles angles(from, to);
  m_hasAngles = std::all_of(uses.begin(), uses.end(),
                            [&](const EdgeUse& use) { return angles.HasAngle(use.apex); });
  if (!m_hasAngles || uses.empty()) return;
  angles.SetFirst(uses.front().apex);
  for (std::size_t k = 0; k < uses.size(); ++k)
    m_pages.push_back({k, 0, uses[k].isAlong});
  const auto isBefore = [&](const Page& a, const Page& b) {
    return angles.IsBefore(uses[a.use].apex, uses[b.use].apex);
  };
  std::sort(m_pages.begin(), m_pages.end(), [&](const Page& a, const Page& b) {
    if (isBefore(a, b)) return true;
    return !isBefore(b, a) && a.isEnd && !b.isEnd;
  });
  for (std::size_t k = 1; k < m_pages.size(); ++k) {
    Page& page = m_pages[k];
    const Page& last = m_pages[k - 1];
    const bool isNext = isBefore(last, page);
    page.angle = last.angle + (isNext ? 1 : 0);
    if (!isNext && page.isEnd == last.isEnd) m_isCertain = false;
  }
}

std::vector<std::size_t>
EdgeFan::Pair(const std::function<bool(std::size_t begin, std::size_t end)>& areJoined) const {
  const std::size_t none = m_pages.size();
  std::vector<std::size_t> other(m_pages.size(), none);
  std::vector<Page> open; // beginnings without an end
  // Closes one of the last beginnings by one of the ends at an angle.
  const auto close = [&](std::vector<std::size_t>& ends) {
    std::size_t begin = open.size() - 1, end = ends.size() - 1;
    for (std::size_t b = open.size(); b-- > 0 && open[b].angle == open.back().angle;) {
      for (std::size_t e = 0; e < ends.size(); ++e) {
        if (!areJoined(open[b].use, ends[e])) continue;
        begin = b;
        end = e;
      }
    }
    other[ends[end]] = open[begin].use;
    other[open[begin].use] = ends[end];
    open.erase(open.begin() + static_cast<std::ptrdiff_t>(begin));
    ends.erase(ends.begin() + static_cast<std::ptrdiff_t>(end));
  };
  // Two rounds, because a part may begin before the first angle and end after it.
  for (int round = 0; round < 2; ++round) {
    for (std::size_t k = 0; k < m_pages.size();) {
      const std::size_t angle = m_pages[k].angle;
      std::vector<std::size_t> ends;
      for (; k < m_pages.size() && m_pages[k].angle == angle && m_pages[k].isEnd; ++k) {
        if (other[m_pages[k].use] == none) ends.push_back(m_pages[k].use);
      }
      while (!ends.empty() && !open.empty())
        close(ends);
      for (; k < m_pages.size() && m_pages[k].angle == angle; ++k) {
        if (round == 0) open.push_back(m_pages[k]);
      }
    }
  }
  return other;
}

} // namespace gsl_sweep
