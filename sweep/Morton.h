#ifndef GSL_SWEEP_MORTON_H
#define GSL_SWEEP_MORTON_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace gsl_sweep {

/// Numbers along a curve on which near points stay near: the bits of three coordinates,
/// interleaved.
///
/// A few stray points must not widen the bounds of the coordinates. So the bounds span the middle
/// 96 % of a sample, widened by the same length on either side, and coordinates beyond are cut off.
class MortonCurve {
public:
  static constexpr int kBits = 10; ///< of each coordinate

  /// middle(k, axis) is a coordinate of point k.
  template <class Middle>
  MortonCurve(std::size_t count, const Middle& middle);

  /// Returns a number below 2^30. A NaN counts as least.
  std::uint32_t Number(double x, double y, double z) const {
    return Spread(Cell(x, 0)) | Spread(Cell(y, 1)) << 1 | Spread(Cell(z, 2)) << 2;
  }

private:
  static constexpr double kCells = 1 << kBits;

  std::uint32_t Cell(double c, int axis) const {
    const double cell = (c - m_low[axis]) * m_scale;
    return cell > 0.0 ? static_cast<std::uint32_t>(std::min(cell, kCells - 1.0)) : 0u;
  }

  /// Puts two zero bits before each of ten bits.
  static constexpr std::uint32_t Spread(std::uint32_t x) {
    x = (x | (x << 16)) & 0x030000FFu;
    x = (x | (x << 8)) & 0x0300F00Fu;
    x = (x | (x << 4)) & 0x030C30C3u;
    return (x | (x << 2)) & 0x09249249u;
  }

  double m_low[3] = {};
  double m_scale = 0.0;
};

template <class Middle>
MortonCurve::MortonCurve(std::size_t count, const Middle& middle) {
  constexpr std::size_t kSampleSize = 4096;
  const std::size_t step = std::max<std::size_t>(1, count / kSampleSize);
  std::vector<double> sample;
  double size = 0.0;
  for (int axis = 0; axis < 3; ++axis) {
    sample.clear();
    for (std::size_t k = 0; k < count; k += step) {
      const double c = middle(k, axis);
      if (c == c) sample.push_back(c);
    }
    if (sample.empty()) continue;
    const auto beyond = static_cast<std::ptrdiff_t>(sample.size() / 50);
    const auto lowAt = sample.begin() + beyond;
    const auto highAt = sample.end() - 1 - beyond;
    std::nth_element(sample.begin(), lowAt, sample.end());
    const double low = *lowAt;
    const double least = *std::min_element(sample.begin(), lowAt + 1);
    std::nth_element(lowAt, highAt, sample.end());
    const double high = *highAt;
    const double most = *std::max_element(highAt, sample.end());
    m_low[axis] = std::max(least, low - (high - low));
    size = std::max(size, std::min(most, high + (high - low)) - m_low[axis]);
  }
  m_scale = size > 0.0 ? (kCells - 1.0) / size : 0.0;
}

} // namespace gsl_sweep

#endif
