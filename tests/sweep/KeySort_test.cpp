#include "KeySort.h"

#include "Bodies.h"
#include "TestScale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;

/// The standard library sorts the same numbers, stably.
template <int kDigitBits, int kPasses>
void ExpectSorted(const std::vector<std::uint32_t>& numbers, Team& team) {
  std::vector<std::size_t> places(numbers.size());
  for (std::size_t k = 0; k < places.size(); ++k)
    places[k] = k;
  std::stable_sort(places.begin(), places.end(),
                   [&](std::size_t a, std::size_t b) { return numbers[a] < numbers[b]; });
  KeySort<kDigitBits, kPasses> sort(numbers.size(), team);
  const Array<Key> keys = sort.Sorted([&](std::size_t place) { return numbers[place]; });
  ASSERT_EQ(keys.size(), places.size());
  for (std::size_t k = 0; k < places.size(); ++k) {
    ASSERT_EQ(PlaceOf(keys[k]), places[k]);
    ASSERT_EQ(NumberOf(keys[k]), numbers[places[k]]);
  }
}

TEST(KeySort, SortsStablyForAnyTeam) {
  std::mt19937_64 random(7);
  std::vector<std::size_t> counts{0, 2, 40000};
  if (kTestScaleDivisor == 1) counts = {0, 1, 2, 32768, 32769, 100000};
  for (const std::size_t count : counts) {
    for (const std::uint32_t most : {1u, 50u, (1u << 24) - 1}) {
      std::vector<std::uint32_t> numbers(count);
      for (std::uint32_t& number : numbers)
        number = static_cast<std::uint32_t>(random() % most);
      ExpectSorted<12, 2>(numbers, Team::Alone());
      ExpectSorted<10, 3>(numbers, Team::Alone());
      WithEachTeam([&](Team& team) {
        ExpectSorted<12, 2>(numbers, team);
        ExpectSorted<10, 3>(numbers, team);
      });
    }
  }
}

} // namespace
