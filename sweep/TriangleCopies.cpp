#include "TriangleCopies.h"

#include <algorithm>
#include <tuple>

namespace gsl_sweep {

namespace {

using Point = std::tuple<double, double, double>;

/// A triangle with its corners in an order that all copies share.
struct Sorted {
  Point corner[3];
  int first;     ///< the corner with which the triangle begins
  bool isTurned; ///< it faces the other way than its sorted corners do
  std::uint32_t number, place;

  bool IsCopyOf(const Sorted& other) const { return std::equal(corner, corner + 3, other.corner); }
  bool Repeats(const Sorted& other) const {
    return IsCopyOf(other) && first == other.first && isTurned == other.isTurned;
  }
  bool operator<(const Sorted& other) const {
    return std::tie(corner[0], corner[1], corner[2], isTurned, first, number) <
           std::tie(other.corner[0], other.corner[1], other.corner[2], other.isTurned, other.first,
                    other.number);
  }
};

Sorted SortedAt(const Corners& corners, std::uint32_t place) {
  Sorted sorted{};
  for (int k = 0; k < 3; ++k) {
    const Coord3 p = corners.At(place, k);
    sorted.corner[k] = {p.x, p.y, p.z};
  }
  sorted.place = place;
  sorted.number = corners.Number(place);
  Point* p = sorted.corner;
  const auto least = std::min_element(p, p + 3);
  sorted.first = static_cast<int>(least - p);
  std::rotate(p, least, p + 3);
  sorted.isTurned = p[2] < p[1];
  if (sorted.isTurned) std::swap(p[1], p[2]);
  return sorted;
}

/// Takes all copies of one triangle.
void Take(const Sorted* first, const Sorted* last, TriangleCopies& copies) {
  if (last - first < 2) return;
  int weight = 0;
  for (const Sorted* copy = first; copy != last; ++copy) {
    weight += copy->isTurned == first->isTurned ? 1 : -1;
    if (copy == first) continue;
    copies.weights.push_back({copy->place, 0});
    if (copy->Repeats(copy[-1])) copies.repeated.push_back(copy->place);
  }
  if (weight != 1) copies.weights.push_back({first->place, weight});
}

} // namespace

TriangleCopies FindCopies(const Corners& corners, const std::vector<std::uint32_t>& places) {
  std::vector<Sorted> all;
  all.reserve(places.size());
  for (const std::uint32_t place : places)
    all.push_back(SortedAt(corners, place));
  std::sort(all.begin(), all.end());
  TriangleCopies copies;
  for (std::size_t first = 0; first < all.size();) {
    std::size_t last = first;
    while (last < all.size() && all[last].IsCopyOf(all[first]))
      ++last;
    Take(&all[first], &all[first] + (last - first), copies);
    first = last;
  }
  std::sort(copies.repeated.begin(), copies.repeated.end());
  std::sort(copies.weights.begin(), copies.weights.end(),
            [](const auto& a, const auto& b) { return a.place < b.place; });
  return copies;
}

} // namespace gsl_sweep
