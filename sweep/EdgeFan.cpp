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

  /// Returns whether p has a smaller angle than q. Angles are from 0 to the full turn,
  /// counterclockwise as seen against the direction of the edge.
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
    m_leaves.push_back({k, 0, uses[k].isAlong});
  const auto isBefore = [&](const Leaf& a, const Leaf& b) {
    return angles.IsBefore(uses[a.use].apex, uses[b.use].apex);
  };
  std::sort(m_leaves.begin(), m_leaves.end(), [&](const Leaf& a, const Leaf& b) {
    if (isBefore(a, b)) return true;
    return !isBefore(b, a) && a.isEnd && !b.isEnd;
  });
  for (std::size_t k = 1; k < m_leaves.size(); ++k) {
    Leaf& leaf = m_leaves[k];
    const Leaf& last = m_leaves[k - 1];
    const bool isNext = isBefore(last, leaf);
    leaf.angle = last.angle + (isNext ? 1 : 0);
    if (!isNext && leaf.isEnd == last.isEnd) m_isCertain = false;
  }
}

template <class Join>
void EdgeFan::PairWithinSheets(const std::vector<std::uint32_t>& sheets, const Join& join) const {
  std::vector<Leaf> leaves = m_leaves;
  std::stable_sort(leaves.begin(), leaves.end(),
                   [&](const Leaf& a, const Leaf& b) { return sheets[a.use] < sheets[b.use]; });
  for (std::size_t first = 0; first < leaves.size();) {
    std::vector<std::size_t> begins, ends;
    const std::uint32_t sheet = sheets[leaves[first].use];
    for (; first < leaves.size() && sheets[leaves[first].use] == sheet; ++first)
      (leaves[first].isEnd ? ends : begins).push_back(leaves[first].use);
    for (std::size_t k = 0; k < std::min(begins.size(), ends.size()); ++k)
      join(begins[k], ends[k]);
  }
}

std::vector<std::size_t> EdgeFan::Pair(const std::vector<std::uint32_t>& sheets) const {
  const std::size_t none = m_leaves.size();
  std::vector<std::size_t> other(m_leaves.size(), none);
  const auto join = [&](std::size_t begin, std::size_t end) {
    other[begin] = end;
    other[end] = begin;
  };
  PairWithinSheets(sheets, join);
  // Two rounds, because a part may begin before the first angle and end after it.
  std::vector<std::size_t> open; // beginnings without an end
  for (int round = 0; round < 2; ++round) {
    for (const Leaf& leaf : m_leaves) {
      if (other[leaf.use] != none) continue;
      if (!leaf.isEnd) {
        if (round == 0) open.push_back(leaf.use);
      } else if (!open.empty()) {
        join(open.back(), leaf.use);
        open.pop_back();
      }
    }
  }
  return other;
}

} // namespace gsl_sweep
