#include "Corners.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

namespace gsl_sweep {

namespace {

/// The count of numbers that are converted and compared at once, within the nearest cache.
constexpr std::size_t kBlock = 4096;
/// The count of numbers that a thread takes at once.
constexpr std::size_t kTaken = std::size_t{1} << 16;

constexpr double kLeastComfortable = 0x1p-100;
constexpr double kMostComfortable = 0x1p120;

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
bool ConvertBlock(const double* from, float* to, std::size_t count) {
  std::size_t k = 0;
#if defined(__SSE2__)
  __m128d differs = _mm_setzero_pd();
  for (; k + 4 <= count; k += 4) {
    const __m128d low = _mm_loadu_pd(from + k);
    const __m128d high = _mm_loadu_pd(from + k + 2);
    const __m128 lowSingle = _mm_cvtpd_ps(low);
    const __m128 highSingle = _mm_cvtpd_ps(high);
    differs = _mm_or_pd(differs, _mm_cmpneq_pd(_mm_cvtps_pd(lowSingle), low));
    differs = _mm_or_pd(differs, _mm_cmpneq_pd(_mm_cvtps_pd(highSingle), high));
    _mm_storeu_ps(to + k, _mm_movelh_ps(lowSingle, highSingle));
  }
  // A block in which something differs is rare, or the last: a NaN differs from itself.
  if (_mm_movemask_pd(differs) != 0 && !AreTheSame(from, to, k)) return false;
#endif
  for (; k < count; ++k) {
    volatile float single = static_cast<float>(from[k]);
    to[k] = single;
    if (!AreTheSame(from + k, to + k, 1)) return false;
  }
  return true;
}

bool CopyBlock(const double* from, double* to, std::size_t count) {
  std::copy_n(from, count, to);
  return true;
}

template <class Scalar>
bool IsEachComfortable(const Scalar* numbers, std::size_t count) {
  unsigned outside = 0;
  for (std::size_t k = 0; k < count; ++k) {
    const Scalar magnitude = std::fabs(numbers[k]);
    outside |= static_cast<unsigned>(!(magnitude <= static_cast<Scalar>(kMostComfortable))) |
               (static_cast<unsigned>(magnitude < static_cast<Scalar>(kLeastComfortable)) &
                static_cast<unsigned>(magnitude > Scalar{0}));
  }
  return outside == 0;
}

/// Copies numbers with `copy`, a block at a time while it is in the nearest cache, and a zero after
/// the last. Returns false when `copy` does. `areComfortable` receives whether all are.
template <class Scalar, class Copy>
bool CopyNumbers(const double* from, std::size_t count, const Copy& copy, Team& team,
                 Array<Scalar>& to, bool& areComfortable) {
  to = Array<Scalar>(count + 1);
  to[count] = Scalar{0};
  std::atomic<bool> isCopied{true};
  std::atomic<bool> isOutside{false};
  const Blocks taken(count, kTaken);
  taken.ForEach(team, [&](std::size_t k) {
    for (std::size_t begin = taken.Begin(k); begin < taken.End(k) && isCopied; begin += kBlock) {
      const std::size_t size = std::min(kBlock, taken.End(k) - begin);
      if (!copy(from + begin, to.data() + begin, size)) {
        isCopied = false;
      } else if (!IsEachComfortable(to.data() + begin, size)) {
        isOutside = true;
      }
    }
  });
  areComfortable = !isOutside;
  return isCopied;
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

[[noreturn]] void RefuseCorners(const TriangleView& view) {
  const std::uint32_t* bad = std::find_if(view.corners, view.corners + 3 * view.triangleCount,
                                          [&](std::uint32_t c) { return c >= view.vertexCount; });
  throw std::invalid_argument("corner " + std::to_string(bad - view.corners) + " is vertex " +
                              std::to_string(*bad) + ", expected less than " +
                              std::to_string(view.vertexCount));
}

/// Copies the corners, and a zero after the last.
Array<std::uint32_t> CopyOfCorners(const TriangleView& view, Team& team) {
  const std::size_t count = 3 * view.triangleCount;
  Array<std::uint32_t> corners(count + 1);
  corners[count] = 0;
  std::atomic<bool> isRefused{false};
  const Blocks taken(count, kTaken);
  taken.ForEach(team, [&](std::size_t taking) {
    for (std::size_t begin = taken.Begin(taking); begin < taken.End(taking); begin += kBlock) {
      if (isRefused) return;
      const std::size_t end = std::min(begin + kBlock, taken.End(taking));
      std::copy(view.corners + begin, view.corners + end, corners.data() + begin);
      std::uint32_t greatest = 0;
      for (std::size_t k = begin; k < end; ++k)
        greatest = std::max(greatest, corners[k]);
      if (greatest >= view.vertexCount) isRefused = true;
    }
  });
  if (isRefused) RefuseCorners(view);
  return corners;
}

} // namespace

Corners::Corners(const TriangleView& view, Team& team)
    : m_count(view.triangleCount), m_vertexCount(view.vertexCount),
      m_isIndexed(view.corners != nullptr) {
  RequireCounts(view);
  if (view.corners != nullptr) m_corners = CopyOfCorners(view, team);
  TakeVertices(view.vertices, team);
}

Corners::Corners(const Corners& other, const double* vertices, Team& team)
    : m_count(other.m_count), m_vertexCount(other.m_vertexCount), m_skipped(other.m_skipped),
      m_isIndexed(other.m_isIndexed) {
  m_corners = other.m_corners.Copy();
  m_numbers = other.m_numbers.Copy();
  TakeVertices(vertices, team);
}

void Corners::TakeVertices(const double* vertices, Team& team) {
  CopyVertices(vertices, team);
  m_leastMagnitude = kLeastComfortable;
  if (m_isComfortable) return; // and finite
  SkipUnfit(team);
  SettleComfort();
}

void Corners::CopyVertices(const double* vertices, Team& team) {
  const std::size_t count = 3 * m_vertexCount;
  m_isSingle = CopyNumbers(vertices, count, ConvertBlock, team, m_single, m_isComfortable);
  if (m_isSingle) return;
  m_single = Array<float>();
  CopyNumbers(vertices, count, CopyBlock, team, m_double, m_isComfortable);
}

/// Every vertex counts at first. One that is outside may belong to no triangle, or to a triangle
/// that is skipped, so then the corners are looked at.
void Corners::SettleComfort() {
  double least = std::numeric_limits<double>::infinity();
  double most = 0.0;
  for (std::size_t place = 0; place < m_count; ++place) {
    for (int corner = 0; corner < 3; ++corner) {
      const Coord3 p = At(place, corner);
      for (const double c : {p.x, p.y, p.z}) {
        const double magnitude = std::fabs(c);
        if (magnitude != 0.0) least = std::min(least, magnitude);
        most = std::max(most, magnitude);
      }
    }
  }
  m_leastMagnitude = least;
  m_isComfortable = least >= kLeastComfortable && most <= kMostComfortable;
}

/// Drops the triangles with a NaN or infinite corner.
void Corners::SkipUnfit(Team& team) {
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
  Reorder(
      fitCount, [&fit](std::size_t k) { return fit[k]; }, team);
}

} // namespace gsl_sweep
