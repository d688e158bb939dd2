#include "Morton.h"

#include "RandomNumbers.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace gsl_sweep;

/// A curve over the cells themselves: coordinate c is in cell c.
MortonCurve CurveOfCells() {
  return {1024, [](std::size_t k, int) { return static_cast<double>(k); }};
}

/// Puts bit b of each coordinate at 3 b, 3 b + 1 and 3 b + 2, one by one.
std::uint32_t Interleaved(std::uint32_t x, std::uint32_t y, std::uint32_t z) {
  std::uint32_t number = 0;
  for (int bit = 0; bit < MortonCurve::kBits; ++bit) {
    number |= (x >> bit & 1u) << 3 * bit | (y >> bit & 1u) << (3 * bit + 1) |
              (z >> bit & 1u) << (3 * bit + 2);
  }
  return number;
}

TEST(Morton, InterleavesTheBitsOfTheCells) {
  const MortonCurve curve = CurveOfCells();
  for (std::uint32_t x = 0; x < 1024; ++x) {
    const std::uint32_t y = 1023 - x;
    const std::uint32_t z = x * 37 % 1024;
    ASSERT_EQ(curve.Number(x, y, z), Interleaved(x, y, z));
    ASSERT_EQ(curve.Number(x + 0.5, y, z), Interleaved(x, y, z));
  }
}

TEST(Morton, CutsOffWhatIsBeyondTheCells) {
  const MortonCurve curve = CurveOfCells();
  for (const double far : {1024.0, 1025.5, 0x1p40, std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(curve.Number(far, 0.0, 0.0), Interleaved(1023, 0, 0));
    EXPECT_EQ(curve.Number(-far, far, 5.0), Interleaved(0, 1023, 5));
  }
  EXPECT_EQ(curve.Number(std::numeric_limits<double>::quiet_NaN(), 0.0, 7.0), Interleaved(0, 0, 7));
}

TEST(Morton, AllIsOneCellWhereTheSampleIsOnePoint) {
  const MortonCurve curve(100, [](std::size_t, int) { return 3.0; });
  EXPECT_EQ(curve.Number(3.0, 3.0, 3.0), 0u);
  EXPECT_EQ(curve.Number(4.0, 2.0, 1e300), 0u);
}

/// Of 200 coordinates, four at either end are left out: the bounds are 3 and 194, widened by 191 on
/// either side to 573 in all.
TEST(Morton, StrayPointsAndTheOrderOfTheSampleDoNotMatter) {
  std::vector<double> numbers;
  for (int k = 0; k < 198; ++k)
    numbers.push_back(k);
  numbers.push_back(1e6);
  numbers.push_back(-1e6);
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    Shuffle(numbers, seed);
    const MortonCurve curve(numbers.size(), [&](std::size_t k, int) { return numbers[k]; });
    // 188 * 1023 / 573 = 335.6 and 385 * 1023 / 573 = 687.4.
    EXPECT_EQ(curve.Number(0.0, 197.0, -188.5), Interleaved(335, 687, 0));
    EXPECT_EQ(curve.Number(384.0, 1e6, -1e6), Interleaved(1021, 1023, 0));
  }
}

} // namespace
