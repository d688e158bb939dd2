#include "Corners.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

namespace gsl_sweep {

namespace {

/// The count of numbers that are converted and compared at once, within the nearest cache.
constexpr std::size_t kBlock = 4096;

/// Returns true when each number is a NaN or equals its single-precision form.
bool AreTheSame(const double* numbers, const float* single, std::size_t count) {
  for (std::size_t k = 0; k < count; ++k) {
    if (static_cast<double>(single[k]) != numbers[k] && !std::isnan(numbers[k])) return false;
  }
  return true;
}

/// Writes the numbers in single precision. Returns false when a number does not equal its
/// single-precision form. A NaN may have any form, because its triangles take no part. The numbers
/// are compared from memory, because compilers have dropped the rounding of a pair that is
/// converted to float and back in registers.
bool ConvertToSingle(const double* from, float* to, std::size_t count) {
  for (std::size_t begin = 0; begin < count; begin += kBlock) {
    const std::size_t end = std::min(begin + kBlock, count);
    std::size_t k = begin;
#if defined(__SSE2__)
    __m128d differs = _mm_setzero_pd();
    for (; k + 4 <= end; k += 4) {
      const __m128d low = _mm_loadu_pd(from + k);
      const __m128d high = _mm_loadu_pd(from + k + 2);
      const __m128 lowSingle = _mm_cvtpd_ps(low);
      const __m128 highSingle = _mm_cvtpd_ps(high);
      differs = _mm_or_pd(differs, _mm_cmpneq_pd(_mm_cvtps_pd(lowSingle), low));
      differs = _mm_or_pd(differs, _mm_cmpneq_pd(_mm_cvtps_pd(highSingle), high));
      _mm_storeu_ps(to + k, _mm_movelh_ps(lowSingle, highSingle));
    }
    // A block in which something differs is rare, or the last: a NaN differs from itself.
    if (_mm_movemask_pd(differs) != 0 && !AreTheSame(from + begin, to + begin, k - begin)) {
      return false;
    }
#endif
    for (; k < end; ++k) {
      volatile float single = static_cast<float>(from[k]);
      to[k] = single;
      if (!AreTheSame(from + k, to + k, 1)) return false;
    }
  }
  return true;
}

/// Returns true when one of the numbers is NaN or infinite: then its product with zero is not zero.
template <class Scalar>
bool HasUnfit(const Scalar* numbers, std::size_t count) {
  Scalar sum = 0;
  for (std::size_t begin = 0; begin < count; begin += kBlock) {
    const std::size_t end = std::min(begin + kBlock, count);
    Scalar lanes[4] = {};
    std::size_t k = begin;
    for (; k + 4 <= end; k += 4) {
      for (std::size_t lane = 0; lane < 4; ++lane)
        lanes[lane] += numbers[k + lane] * Scalar{0};
    }
    for (; k < end; ++k)
      sum += numbers[k] * Scalar{0};
    sum += (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]);
    if (!(sum == Scalar{0})) return true;
  }
  return false;
}

void RequireCounts(const TriangleView& view) {
  if (view.triangleCount > 0x7fffffffu) {
    throw std::length_error("a body must have at most 2147483647 triangles (got " +
                            std::to_string(view.triangleCount) + ")");
  }
  if (view.corners == nullptr && view.vertexCount != 3 * view.triangleCount) {
    throw std::invalid_argument(
        "without corners there must be three vertices for each triangle (got " +
        std::to_string(view.vertexCount) + " vertices, " + std::to_string(view.triangleCount) +
        " triangles)");
  }
  if (view.vertices == nullptr && view.vertexCount > 0) {
    throw std::invalid_argument("the vertices are null, expected " +
                                std::to_string(view.vertexCount));
  }
}

void RequireVertices(const TriangleView& view) {
  const std::size_t count = 3 * view.triangleCount;
  std::uint32_t greatest = 0;
  for (std::size_t k = 0; k < count; ++k)
    greatest = std::max(greatest, view.corners[k]);
  if (count == 0 || greatest < view.vertexCount) return;
  const std::uint32_t* bad = std::find_if(view.corners, view.corners + count,
                                          [&](std::uint32_t c) { return c >= view.vertexCount; });
  throw std::invalid_argument("corner " + std::to_string(bad - view.corners) + " is vertex " +
                              std::to_string(*bad) + ", expected less than " +
                              std::to_string(view.vertexCount));
}

} // namespace

Corners::Corners(const TriangleView& view)
    : m_count(view.triangleCount), m_vertexCount(view.vertexCount),
      m_isIndexed(view.corners != nullptr) {
  RequireCounts(view);
  if (view.corners != nullptr) {
    RequireVertices(view);
    m_corners = Array<std::uint32_t>(3 * m_count + 1);
    std::copy_n(view.corners, 3 * m_count, m_corners.data());
    m_corners[3 * m_count] = 0;
  }
  CopyVertices(view.vertices);
  SkipUnfit();
}

Corners::Corners(const Corners& other, const double* vertices)
    : m_count(other.m_count), m_vertexCount(other.m_vertexCount), m_skipped(other.m_skipped),
      m_isIndexed(other.m_isIndexed) {
  const auto copy = [](const Array<std::uint32_t>& from) {
    Array<std::uint32_t> result(from.size());
    std::copy(from.begin(), from.end(), result.begin());
    return result;
  };
  m_corners = copy(other.m_corners);
  m_numbers = copy(other.m_numbers);
  CopyVertices(vertices);
  SkipUnfit();
}

void Corners::CopyVertices(const double* vertices) {
  const std::size_t count = 3 * m_vertexCount;
  m_single = Array<float>(count + 1);
  m_isSingle = ConvertToSingle(vertices, m_single.data(), count);
  if (m_isSingle) {
    m_single[count] = 0.0f;
    return;
  }
  m_single = Array<float>();
  m_double = Array<double>(count + 1);
  std::copy_n(vertices, count, m_double.data());
  m_double[count] = 0.0;
}

/// Drops the triangles with a NaN or infinite corner.
void Corners::SkipUnfit() {
  const std::size_t count = 3 * m_vertexCount;
  const bool anyUnfit =
      m_isSingle ? HasUnfit(m_single.data(), count) : HasUnfit(m_double.data(), count);
  if (!anyUnfit) return;
  const auto isFinite = [](const Coord3& p) {
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
  };
  Array<std::uint32_t> fit(m_count);
  std::size_t fitCount = 0;
  for (std::size_t place = 0; place < m_count; ++place) {
    if (!isFinite(At(place, 0)) || !isFinite(At(place, 1)) || !isFinite(At(place, 2))) continue;
    fit[fitCount++] = static_cast<std::uint32_t>(place);
  }
  if (fitCount == m_count) return;
  m_skipped += m_count - fitCount;
  Reorder(fitCount, [&fit](std::size_t k) { return fit[k]; });
}

} // namespace gsl_sweep
