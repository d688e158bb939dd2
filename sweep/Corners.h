#ifndef GSL_SWEEP_CORNERS_H
#define GSL_SWEEP_CORNERS_H

#include "Array.h"
#include "Jobs.h"
#include "Lanes.h"

#include "gsl_Sweep.h"

#include <cstddef>
#include <cstdint>

namespace gsl_sweep {

/// Reads corners of one storage, for loops over many triangles. A place is the position at which a
/// triangle is stored; its number is the caller's.
template <class Scalar, bool kIndexed>
struct CornerReader {
  const Scalar* vertices;
  const std::uint32_t* corners;

  std::size_t Vertex(std::size_t place, int corner) const {
    const std::size_t k = 3 * place + static_cast<std::size_t>(corner);
    return kIndexed ? corners[k] : k;
  }
  const Scalar* At(std::size_t place, int corner) const {
    return vertices + 3 * Vertex(place, corner);
  }
  /// Rounds to nearest. The fourth number is arbitrary.
  Float4 Single(std::size_t place, int corner) const {
    if constexpr (sizeof(Scalar) == sizeof(float)) {
      return Float4::At(At(place, corner));
    } else {
      return Rounded(At(place, corner));
    }
  }
};

/// The triangles of a body that take part. They are in single precision where single precision
/// holds every coordinate, and otherwise in double.
class Corners {
public:
  /// Errors     see Body.
  explicit Corners(const TriangleView& view, Team& team = Team::Alone());
  /// Holds the same triangles with other vertices, three numbers each.
  Corners(const Corners& other, const double* vertices, Team& team = Team::Alone());

  std::size_t Count() const { return m_count; }
  std::size_t VertexCount() const { return m_vertexCount; }
  std::size_t SkippedCount() const { return m_skipped; }
  bool IsSingle() const { return m_isSingle; }
  /// Returns true when each coordinate is zero or from 2^-100 to 2^120 in magnitude.
  bool AreComfortable() const { return m_isComfortable; }
  /// Returns a magnitude that no coordinate other than zero is below.
  double LeastMagnitude() const { return m_leastMagnitude; }
  bool IsReordered() const { return m_numbers.size() > 0; }
  std::uint32_t Number(std::size_t place) const {
    return IsReordered() ? m_numbers[place] : static_cast<std::uint32_t>(place);
  }
  Coord3 VertexAt(std::size_t vertex) const {
    if (m_isSingle) {
      const float* p = m_single.data() + 3 * vertex;
      return {p[0], p[1], p[2]};
    }
    const double* p = m_double.data() + 3 * vertex;
    return {p[0], p[1], p[2]};
  }
  std::size_t VertexNumber(std::size_t place, int corner) const {
    const std::size_t k = 3 * place + static_cast<std::size_t>(corner);
    return IsIndexed() ? m_corners[k] : k;
  }
  Coord3 At(std::size_t place, int corner) const { return VertexAt(VertexNumber(place, corner)); }
  std::size_t Bytes() const {
    return m_single.Bytes() + m_double.Bytes() + m_corners.Bytes() + m_numbers.Bytes();
  }

  /// Calls `work` with the reader of this storage.
  template <class Work>
  void Read(const Work& work) const {
    if (m_isSingle) {
      if (IsIndexed()) {
        work(CornerReader<float, true>{m_single.data(), m_corners.data()});
      } else {
        work(CornerReader<float, false>{m_single.data(), nullptr});
      }
    } else if (IsIndexed()) {
      work(CornerReader<double, true>{m_double.data(), m_corners.data()});
    } else {
      work(CornerReader<double, false>{m_double.data(), nullptr});
    }
  }

  /// Puts the triangle of place order(k) at place k, for k below `count`; the others are dropped.
  template <class Order>
  void Reorder(std::size_t count, const Order& order, Team& team = Team::Alone());

private:
  bool IsIndexed() const { return m_isIndexed; }
  void TakeVertices(const double* vertices, Team& team);
  void CopyVertices(const double* vertices, Team& team);
  void SkipUnfit(Team& team);
  void SettleComfort();

  std::size_t m_count = 0, m_vertexCount = 0, m_skipped = 0;
  bool m_isSingle = true, m_isComfortable = true, m_isIndexed = false;
  double m_leastMagnitude;
  // Loops read four numbers at a time, so the array has one number more than is used.
  Array<float> m_single;
  Array<double> m_double;
  Array<std::uint32_t> m_corners;
  Array<std::uint32_t> m_numbers; ///< empty: in the caller's order
};

/// The number of triangles that a gather fetches ahead.
constexpr std::size_t kFetchAhead = 16;

/// The number of triangles that a thread works on at a time.
constexpr std::size_t kTriangleBlock = std::size_t{1} << 14;

template <class T, class Order>
void GatherTriples(Array<T>& triples, std::size_t width, std::size_t count, const Order& order,
                   Team& team) {
  Array<T> gathered(width * count + 1);
  const Blocks blocks(count, kTriangleBlock);
  blocks.ForEach(team, [&](std::size_t block) {
    for (std::size_t k = blocks.Begin(block); k < blocks.End(block); ++k) {
      if (k + kFetchAhead < count) {
        __builtin_prefetch(triples.data() + width * order(k + kFetchAhead));
      }
      std::memcpy(gathered.data() + width * k, triples.data() + width * order(k),
                  width * sizeof(T));
    }
  });
  gathered[width * count] = T{};
  triples = std::move(gathered);
}

template <class Order>
void Corners::Reorder(std::size_t count, const Order& order, Team& team) {
  Array<std::uint32_t> numbers(count);
  const Blocks blocks(count, kTriangleBlock);
  blocks.ForEach(team, [&](std::size_t block) {
    for (std::size_t k = blocks.Begin(block); k < blocks.End(block); ++k)
      numbers[k] = Number(order(k));
  });
  if (IsIndexed()) {
    GatherTriples(m_corners, 3, count, order, team);
  } else if (m_isSingle) {
    GatherTriples(m_single, 9, count, order, team);
  } else {
    GatherTriples(m_double, 9, count, order, team);
  }
  m_numbers = std::move(numbers);
  m_count = count;
  if (!IsIndexed()) m_vertexCount = 3 * count;
}

} // namespace gsl_sweep

#endif
