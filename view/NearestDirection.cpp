#include "NearestDirection.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

namespace gsl_view {

using gsl_arithmetic::Coord3;

namespace {

constexpr std::size_t kLeaf = 6; // directions of a range that is not divided

double Along(const Coord3& v, int axis) {
  return axis == 0 ? v.x : axis == 1 ? v.y : v.z;
}

int NextAxis(int axis) {
  return axis == 2 ? 0 : axis + 1;
}

} // namespace

NearestDirection::NearestDirection(std::vector<Coord3> directions)
    : m_directions(std::move(directions)), m_numbers(m_directions.size()) {
  std::iota(m_numbers.begin(), m_numbers.end(), std::size_t{0});
  Sort(0, m_numbers.size(), 0);
}

void NearestDirection::Sort(std::size_t begin, std::size_t end, int axis) {
  if (end - begin <= kLeaf) return;
  const auto at = [&](std::size_t k) { return m_numbers.begin() + static_cast<std::ptrdiff_t>(k); };
  const std::size_t middle = begin + (end - begin) / 2;
  std::nth_element(at(begin), at(middle), at(end), [&](std::size_t a, std::size_t b) {
    return Along(m_directions[a], axis) < Along(m_directions[b], axis);
  });
  Sort(begin, middle, NextAxis(axis));
  Sort(middle + 1, end, NextAxis(axis));
}

void NearestDirection::Try(const Coord3& v, std::size_t number, Best& best) const {
  const Coord3& d = m_directions[number];
  const double x = d.x - v.x, y = d.y - v.y, z = d.z - v.z;
  const double square = x * x + y * y + z * z;
  if (square < best.square || (square == best.square && number < best.number)) {
    best = {square, number};
  }
}

void NearestDirection::Search(const Coord3& v, std::size_t begin, std::size_t end, int axis,
                              Best& best) const {
  if (end - begin <= kLeaf) {
    for (std::size_t k = begin; k < end; ++k)
      Try(v, m_numbers[k], best);
    return;
  }
  const std::size_t middle = begin + (end - begin) / 2;
  const double side = Along(v, axis) - Along(m_directions[m_numbers[middle]], axis);
  const int next = NextAxis(axis);
  Try(v, m_numbers[middle], best);
  if (side < 0.0) {
    Search(v, begin, middle, next, best);
    if (side * side <= best.square) Search(v, middle + 1, end, next, best);
  } else {
    Search(v, middle + 1, end, next, best);
    if (side * side <= best.square) Search(v, begin, middle, next, best);
  }
}

std::size_t NearestDirection::Find(const Coord3& v, std::size_t guess) const {
  Best best{std::numeric_limits<double>::infinity(), m_directions.size()};
  Try(v, guess, best);
  Search(v, 0, m_numbers.size(), 0, best);
  return best.number;
}

} // namespace gsl_view
