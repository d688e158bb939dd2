#include "Leaves.h"

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
Array<std::uint64_t> SortedAlongCurve(const Reader& reader, std::size_t count) {
  constexpr std::uint32_t kDigits = 4096;
  const auto middle = [&](std::size_t place, int axis) {
    return static_cast<double>(reader.At(place, 0)[axis]) +
           (static_cast<double>(reader.At(place, 1)[axis]) + reader.At(place, 2)[axis]);
  };
  const MortonCurve curve(count, middle);
  std::vector<std::uint32_t> low(kDigits + 1), high(kDigits + 1);
  Array<std::uint64_t> keys(count), other(count);
  for (std::size_t place = 0; place < count; ++place) {
    if (place + kFetchAhead < count) {
      __builtin_prefetch(reader.At(place + kFetchAhead, 0));
      __builtin_prefetch(reader.At(place + kFetchAhead, 1));
    }
    const std::uint32_t number =
        curve.Number(middle(place, 0), middle(place, 1), middle(place, 2)) >> 6;
    ++low[number % kDigits + 1];
    ++high[number / kDigits + 1];
    keys[place] = static_cast<std::uint64_t>(number) << 32 | place;
  }
  for (std::uint32_t digit = 0; digit < kDigits; ++digit) {
    low[digit + 1] += low[digit];
    high[digit + 1] += high[digit];
  }
  for (const std::uint64_t key : keys)
    other[low[(key >> 32) % kDigits]++] = key;
  for (const std::uint64_t key : other)
    keys[high[(key >> 32) / kDigits]++] = key;
  return keys;
}

void SortIfScattered(Corners& corners) {
  Array<std::uint64_t> keys;
  corners.Read([&](const auto& reader) {
    const Measure measure(reader, corners.Count());
    const bool isScattered = WithMeasured(reader, measure, [&](const auto& measured) {
      return IsScattered(measured, corners.Count());
    });
    if (isScattered) keys = SortedAlongCurve(reader, corners.Count());
  });
  if (keys.size() == 0) return;
  corners.Reorder(keys.size(), [&](std::size_t k) { return static_cast<std::uint32_t>(keys[k]); });
}

/// Calls `take` with the place and the box of each triangle, and `close` with each run and its box.
template <class Reader, class Take, class Close>
Leaves CutRuns(const Reader& reader, std::size_t count, const Take& take, const Close& close) {
  // In the worst case every triangle is a leaf. Pages that are not touched cost nothing.
  Leaves leaves{Array<std::uint32_t>(count + 1)};
  RunCutter cutter;
  std::size_t leafCount = 0;
  Float4 low{};
  Float4 high{};
  for (std::size_t place = 0; place < count; ++place) {
    const TriangleBox box(reader, place);
    take(place, box);
    if (cutter.Begins(box)) {
      if (leafCount > 0) close(leafCount - 1, low, high);
      leaves.begin[leafCount++] = static_cast<std::uint32_t>(place);
    }
    low = cutter.Low();
    high = cutter.High();
  }
  if (leafCount > 0) close(leafCount - 1, low, high);
  leaves.begin[leafCount] = static_cast<std::uint32_t>(count);
  leaves.begin.Shorten(leafCount + 1);
  return leaves;
}

template <class Scalar, bool kIndexed>
Leaves CutAndMeasure(const CornerReader<Scalar, kIndexed>& reader, std::size_t count,
                     LeafBoxes& boxes) {
  boxes.boxes = Array<Box<float>>(count);
  Bounds<Scalar> bounds;
  const auto take = [&](std::size_t place, const TriangleBox& box) {
    bounds.Include(reader, place, box);
  };
  const auto close = [&](std::size_t leaf, const Float4& low, const Float4& high) {
    boxes.boxes[leaf] = Stored(low, high);
    if constexpr (sizeof(Scalar) != sizeof(float)) WidenByOnePlace(boxes.boxes[leaf]);
  };
  Leaves leaves = CutRuns(reader, count, take, close);
  boxes.boxes.Shorten(leaves.Count());
  boxes.bounds = bounds.Get();
  return leaves;
}

} // namespace

Leaves MakeLeaves(Corners& corners, LeafBoxes& boxes) {
  SortIfScattered(corners);
  Leaves leaves;
  corners.Read([&](const auto& reader) {
    const Measure measure(reader, corners.Count());
    if (measure.IsPlain()) {
      leaves = CutAndMeasure(reader, corners.Count(), boxes);
      return;
    }
    const MeasuredReader<std::decay_t<decltype(reader)>> measured{reader, measure};
    leaves = CutRuns(
        measured, corners.Count(), [](std::size_t, const TriangleBox&) {},
        [](std::size_t, const Float4&, const Float4&) {});
    MeasureLeaves(corners, leaves, boxes);
  });
  return leaves;
}

void MeasureLeaves(const Corners& corners, const Leaves& leaves, LeafBoxes& boxes) {
  boxes.boxes = Array<Box<float>>(leaves.Count());
  corners.Read([&](const auto& reader) {
    using Scalar = std::decay_t<decltype(*reader.vertices)>;
    Bounds<Scalar> bounds;
    for (std::size_t leaf = 0; leaf < leaves.Count(); ++leaf) {
      TriangleBox all(reader, leaves.begin[leaf]);
      for (std::size_t place = leaves.begin[leaf]; place < leaves.begin[leaf + 1]; ++place) {
        const TriangleBox triangle(reader, place);
        all.low = Least(triangle.low, all.low);
        all.high = Most(triangle.high, all.high);
        bounds.Include(reader, place, triangle);
      }
      boxes.boxes[leaf] = Stored(all.low, all.high);
      if (sizeof(Scalar) != sizeof(float)) WidenByOnePlace(boxes.boxes[leaf]);
    }
    boxes.bounds = bounds.Get();
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
