#include "Leaves.h"

#include "KeySort.h"
#include "Morton.h"

#include <cmath>

namespace gsl_sweep {

namespace {

/// A run ends where a further triangle would make its box this much longer than both boxes apart.
constexpr float kJump = 1.25f;
/// A run also ends where a triangle is this many times as large as the run, or the run as the
/// triangle: one huge triangle must not swell the box of small triangles.
constexpr float kHugeTriangle = 8.0f;
constexpr float kTinyTriangle = 16.0f;

float Size(const Float4& low, const Float4& high) {
  const Float4 edge = high - low;
  return (edge[0] + edge[1]) + edge[2];
}

/// The coordinates in which runs are measured. They are those of the body, unless single precision
/// would be too coarse for its triangles or does not reach that far. Then a few points in the
/// middle of a sample are the measure, which no stray point changes.
class Measure {
public:
  template <class Reader>
  Measure(const Reader& reader, std::size_t count) {
    constexpr std::size_t kSampleSize = 255;
    if (count == 0) return;
    const std::size_t step = std::max<std::size_t>(1, count / kSampleSize);
    std::vector<double> sample;
    const auto middleOf = [&sample](const auto& numberOf) {
      for (double& c : sample)
        c = numberOf(c);
      const auto middle = sample.begin() + static_cast<std::ptrdiff_t>(sample.size() / 2);
      std::nth_element(sample.begin(), middle, sample.end());
      return *middle;
    };
    double size = 0.0;
    double reach = 0.0;
    for (int k = 0; k < 3; ++k) {
      sample.clear();
      for (std::size_t place = 0; place < count; place += step)
        sample.push_back(static_cast<double>(reader.At(place, 0)[k]));
      m_origin[k] = middleOf([](double c) { return c; });
      reach = std::max(reach, std::fabs(m_origin[k]));
      size = std::max(size, middleOf([this, k](double c) { return std::fabs(c - m_origin[k]); }));
    }
    const bool isFine = sizeof(*reader.vertices) == sizeof(float) || reach <= kCoarseFrom * size;
    m_isPlain = size == 0.0 || (isFine && size >= 1.0 / kFarthest && size <= kFarthest);
    int exponent = 0;
    std::frexp(size, &exponent);
    m_factor = std::ldexp(1.0, std::min(-exponent, 1023));
  }

  bool IsPlain() const { return m_isPlain; }
  Float4 At(const double (&p)[3]) const {
    const double measured[3] = {(p[0] - m_origin[0]) * m_factor, (p[1] - m_origin[1]) * m_factor,
                                (p[2] - m_origin[2]) * m_factor};
    return Rounded(measured);
  }

private:
  static constexpr double kFarthest = 0x1p100;
  /// A body at this many times its size from the origin has lost four of the 24 bits.
  static constexpr double kCoarseFrom = 16.0;

  double m_origin[3] = {};
  double m_factor = 1.0;
  bool m_isPlain = true;
};

/// Reads corners in the coordinates of a measure.
template <class Reader>
struct MeasuredReader {
  const Reader& reader;
  const Measure& measure;

  Float4 Single(std::size_t place, int corner) const {
    const auto* p = reader.At(place, corner);
    return measure.At(
        {static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2])});
  }
};

/// Calls work with the reader, or with a reader in the coordinates of the measure.
template <class Reader, class Work>
auto WithMeasured(const Reader& reader, const Measure& measure, const Work& work) {
  if (measure.IsPlain()) return work(reader);
  return work(MeasuredReader<Reader>{reader, measure});
}

/// Returns the box of one triangle, rounded to nearest.
struct TriangleBox {
  template <class Reader>
  TriangleBox(const Reader& reader, std::size_t place) {
    const Float4 a = reader.Single(place, 0);
    const Float4 b = reader.Single(place, 1);
    const Float4 c = reader.Single(place, 2);
    low = Least(a, Least(b, c));
    high = Most(a, Most(b, c));
  }

  Float4 low, high;
};

Box<float> Stored(const Float4& low, const Float4& high) {
  return {{low[0], low[1], low[2]}, {high[0], high[1], high[2]}};
}

/// Moves each bound to the next float outwards: rounding to nearest loses less than that. A zero
/// moves to 2^-100 in magnitude, because arithmetic on subnormal numbers is slow.
void WidenByOnePlace(Box<float>& box) {
  constexpr float kLeast = 0x1p-100f;
  for (int k = 0; k < 3; ++k) {
    float& low = box.low[k];
    float& high = box.high[k];
    low = low == 0.0f ? -kLeast : std::nextafter(low, -Box<float>::kFar);
    high = high == 0.0f ? kLeast : std::nextafter(high, Box<float>::kFar);
  }
}

/// Returns the exact bounds of triangles. In single precision their boxes are exact, and enough.
template <class Scalar>
class Bounds {
public:
  template <class Reader>
  void Include(const Reader& reader, std::size_t place, const TriangleBox& box) {
    if constexpr (sizeof(Scalar) == sizeof(float)) {
      m_low = Least(box.low, m_low);
      m_high = Most(box.high, m_high);
    } else {
      for (int corner = 0; corner < 3; ++corner) {
        const Scalar* p = reader.At(place, corner);
        const Scalar padded[4] = {p[0], p[1], p[2], p[2]};
        const Four<Scalar> four = Four<Scalar>::At(padded);
        m_low = Least(four, m_low);
        m_high = Most(four, m_high);
      }
    }
  }
  /// Takes bounds of triangles that come later. Of equal zeros, the first keeps its sign.
  void Include(const Bounds& later) {
    m_low = Least(later.m_low, m_low);
    m_high = Most(later.m_high, m_high);
  }
  Box<double> Get() const {
    return {{m_low[0], m_low[1], m_low[2]}, {m_high[0], m_high[1], m_high[2]}};
  }

private:
  Four<Scalar> m_low = Four<Scalar>::Of(Box<Scalar>::kFar);
  Four<Scalar> m_high = Four<Scalar>::Of(-Box<Scalar>::kFar);
};

/// Cuts runs, one triangle after the other.
class RunCutter {
public:
  /// Takes this triangle in either case, and returns whether it begins a new run.
  bool Begins(const TriangleBox& triangle) {
    const float own = Size(triangle.low, triangle.high);
    if (m_count > 0) {
      const Float4 low = Least(triangle.low, m_low);
      const Float4 high = Most(triangle.high, m_high);
      const float both = Size(low, high);
      const bool ends = m_count == kLeafSize || both > kJump * (m_size + own) ||
                        own > kHugeTriangle * m_size || m_size > kTinyTriangle * own;
      if (!ends) {
        m_low = low;
        m_high = high;
        m_size = both;
        ++m_count;
        return false;
      }
    }
    m_low = triangle.low;
    m_high = triangle.high;
    m_size = own;
    m_count = 1;
    return true;
  }

  const Float4& Low() const { return m_low; }
  const Float4& High() const { return m_high; }

private:
  Float4 m_low{}, m_high{};
  float m_size = 0.0f;
  int m_count = 0;
};

/// Returns true when runs would be short: four triangles or fewer on average, in samples along the
/// order.
template <class Reader>
bool IsScattered(const Reader& reader, std::size_t count) {
  constexpr std::size_t kSampleSize = 64;
  constexpr std::size_t kSampleCount = 64;
  const std::size_t samples = count / kSampleSize;
  if (samples < 4) return false;
  const std::size_t step = std::max<std::size_t>(1, samples / kSampleCount);
  std::size_t seen = 0;
  std::size_t runs = 0;
  for (std::size_t sample = 0; sample < samples; sample += step) {
    RunCutter cutter;
    for (std::size_t k = 0; k < kSampleSize; ++k)
      runs += cutter.Begins(TriangleBox(reader, sample * kSampleSize + k)) ? 1 : 0;
    seen += kSampleSize;
  }
  return 4 * runs > seen;
}

/// Sorts by eight bits of each coordinate, in two passes.
template <class Reader>
Array<Key> SortedAlongCurve(const Reader& reader, std::size_t count, Team& team) {
  const auto middle = [&](std::size_t place, int axis) {
    return static_cast<double>(reader.At(place, 0)[axis]) +
           (static_cast<double>(reader.At(place, 1)[axis]) + reader.At(place, 2)[axis]);
  };
  const MortonCurve curve(count, middle);
  KeySort<12, 2> sort(count, team);
  return sort.Sorted([&](std::size_t place) {
    if (place + kFetchAhead < count) {
      __builtin_prefetch(reader.At(place + kFetchAhead, 0));
      __builtin_prefetch(reader.At(place + kFetchAhead, 1));
    }
    return curve.Number(middle(place, 0), middle(place, 1), middle(place, 2)) >> 6;
  });
}

void SortIfScattered(Corners& corners, Team& team) {
  Array<Key> keys;
  corners.Read([&](const auto& reader) {
    const Measure measure(reader, corners.Count());
    const bool isScattered = WithMeasured(reader, measure, [&](const auto& measured) {
      return IsScattered(measured, corners.Count());
    });
    if (isScattered) keys = SortedAlongCurve(reader, corners.Count(), team);
  });
  if (keys.size() == 0) return;
  corners.Reorder(
      keys.size(), [&](std::size_t k) { return static_cast<std::uint32_t>(keys[k]); }, team);
}

/// Runs, and their boxes unless they are measured later.
struct RunList {
  RunList() = default;
  // In the worst case every triangle is a run. Pages that are not touched cost nothing.
  explicit RunList(std::size_t triangles) : begin(triangles + 1), boxes(triangles) {}

  Array<std::uint32_t> begin;
  Array<Box<float>> boxes;
  std::size_t count = 0;
};

/// Cuts a body into runs, block by block: no run is in two blocks, so that threads can cut blocks
/// side by side. A `Bounded` includes the triangles of each block, and boxOf(low, high) returns the
/// box of a run.
template <class Reader, class Bounded, class BoxOf>
class BodyCutter {
public:
  BodyCutter(const Reader& reader, std::size_t count, const BoxOf& boxOf)
      : m_reader(reader), m_blocks(count, kTriangleBlock), m_count(count), m_boxOf(boxOf),
        m_bounds(m_blocks.Count()) {}

  /// Returns the bounds of all triangles, after Cut.
  Bounded AllBounds() const {
    Bounded all;
    for (const Bounded& ofBlock : m_bounds)
      all.Include(ofBlock);
    return all;
  }

  RunList Cut(Team& team) {
    RunList runs = team.IsAlone() || m_blocks.Count() < 2 ? OneAfterTheOther() : OnTeam(team);
    runs.begin[runs.count] = static_cast<std::uint32_t>(m_count);
    runs.begin.Shorten(runs.count + 1);
    runs.boxes.Shorten(runs.count);
    return runs;
  }

private:
  RunList OneAfterTheOther() {
    RunList runs(m_count);
    for (std::size_t block = 0; block < m_blocks.Count(); ++block)
      CutBlock(block, runs);
    return runs;
  }

  RunList OnTeam(Team& team) {
    std::vector<RunList> parts(m_blocks.Count());
    m_blocks.ForEach(team, [&](std::size_t block) {
      parts[block] = RunList(m_blocks.End(block) - m_blocks.Begin(block));
      CutBlock(block, parts[block]);
    });
    std::vector<std::size_t> at;
    std::size_t count = 0;
    for (const RunList& part : parts) {
      at.push_back(count);
      count += part.count;
    }
    RunList runs(count);
    runs.count = count;
    m_blocks.ForEach(team, [&](std::size_t block) {
      const RunList part = std::move(parts[block]);
      std::copy_n(part.begin.data(), part.count, runs.begin.data() + at[block]);
      std::copy_n(part.boxes.data(), part.count, runs.boxes.data() + at[block]);
    });
    return runs;
  }

  void CutBlock(std::size_t block, RunList& runs) {
    const Reader reader = m_reader;
    const std::size_t end = m_blocks.End(block);
    RunCutter cutter;
    Bounded bounds;
    Float4 low{};
    Float4 high{};
    std::size_t count = runs.count;
    for (std::size_t place = m_blocks.Begin(block); place < end; ++place) {
      const TriangleBox box(reader, place);
      bounds.Include(reader, place, box);
      if (cutter.Begins(box)) {
        if (count > runs.count) runs.boxes[count - 1] = m_boxOf(low, high);
        runs.begin[count++] = static_cast<std::uint32_t>(place);
      }
      low = cutter.Low();
      high = cutter.High();
    }
    runs.boxes[count - 1] = m_boxOf(low, high);
    runs.count = count;
    m_bounds[block] = bounds;
  }

  const Reader& m_reader;
  const Blocks m_blocks;
  const std::size_t m_count;
  const BoxOf m_boxOf;
  std::vector<Bounded> m_bounds; ///< of each block
};

/// Bounds that nobody needs.
struct NoBounds {
  template <class Reader>
  void Include(const Reader&, std::size_t, const TriangleBox&) {}
};

template <class Scalar, bool kIndexed>
Leaves CutAndMeasure(const CornerReader<Scalar, kIndexed>& reader, std::size_t count,
                     LeafBoxes& boxes, Team& team) {
  const auto boxOf = [](const Float4& low, const Float4& high) {
    Box<float> box = Stored(low, high);
    if constexpr (sizeof(Scalar) != sizeof(float)) WidenByOnePlace(box);
    return box;
  };
  BodyCutter<CornerReader<Scalar, kIndexed>, Bounds<Scalar>, decltype(boxOf)> cutter(reader, count,
                                                                                     boxOf);
  RunList runs = cutter.Cut(team);
  boxes.boxes = std::move(runs.boxes);
  boxes.bounds = cutter.AllBounds().Get();
  return {std::move(runs.begin)};
}

template <class Reader>
Leaves CutMeasured(const MeasuredReader<Reader>& reader, std::size_t count, Team& team) {
  BodyCutter<MeasuredReader<Reader>, NoBounds, decltype(&Stored)> cutter(reader, count, &Stored);
  return {cutter.Cut(team).begin};
}

} // namespace

Leaves MakeLeaves(Corners& corners, LeafBoxes& boxes, Team& team) {
  SortIfScattered(corners, team);
  Leaves leaves;
  corners.Read([&](const auto& reader) {
    const Measure measure(reader, corners.Count());
    if (measure.IsPlain()) {
      leaves = CutAndMeasure(reader, corners.Count(), boxes, team);
      return;
    }
    const MeasuredReader<std::decay_t<decltype(reader)>> measured{reader, measure};
    leaves = CutMeasured(measured, corners.Count(), team);
    MeasureLeaves(corners, leaves, boxes, team);
  });
  return leaves;
}

void MeasureLeaves(const Corners& corners, const Leaves& leaves, LeafBoxes& boxes, Team& team) {
  boxes.boxes = Array<Box<float>>(leaves.Count());
  corners.Read([&](const auto& reader) {
    using Scalar = std::decay_t<decltype(*reader.vertices)>;
    const Blocks blocks(leaves.Count(), kLeafBlock);
    std::vector<Bounds<Scalar>> bounds(blocks.Count());
    blocks.ForEach(team, [&](std::size_t block) {
      Bounds<Scalar> ofBlock;
      for (std::size_t leaf = blocks.Begin(block); leaf < blocks.End(block); ++leaf) {
        TriangleBox all(reader, leaves.begin[leaf]);
        for (std::size_t place = leaves.begin[leaf]; place < leaves.begin[leaf + 1]; ++place) {
          const TriangleBox triangle(reader, place);
          all.low = Least(triangle.low, all.low);
          all.high = Most(triangle.high, all.high);
          ofBlock.Include(reader, place, triangle);
        }
        boxes.boxes[leaf] = Stored(all.low, all.high);
        if (sizeof(Scalar) != sizeof(float)) WidenByOnePlace(boxes.boxes[leaf]);
      }
      bounds[block] = ofBlock;
    });
    Bounds<Scalar> all;
    for (const Bounds<Scalar>& ofBlock : bounds)
      all.Include(ofBlock);
    boxes.bounds = all.Get();
  });
}

std::uint32_t LeastNumber(const Corners& corners, const Leaves& leaves, std::size_t leaf) {
  std::uint32_t least = corners.Number(leaves.begin[leaf]);
  if (!corners.IsReordered()) return least;
  for (std::size_t place = leaves.begin[leaf] + 1; place < leaves.begin[leaf + 1]; ++place)
    least = std::min(least, corners.Number(place));
  return least;
}

} // namespace gsl_sweep
