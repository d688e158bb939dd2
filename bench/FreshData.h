#ifndef BENCH_FRESH_DATA_H
#define BENCH_FRESH_DATA_H

#include "Agreement.h"
#include "RandomNumbers.h"
#include "gsl_Matrix.h"
#include "gsl_Point.h"
#include "gsl_Vector.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Random inputs of the benchmarks, and rows that run over them.
namespace fresh_data {

/// A branch predictor learns a few hundred inputs by heart, and cannot learn so many.
constexpr std::size_t kCount = 4096;
/// So many it learns.
constexpr std::size_t kLearnedCount = 256;

/// Returns how many inputs a row takes in turn, which is a power of two.
inline std::size_t& InputsInTurn() {
  static std::size_t count = kCount;
  return count;
}

class Numbers {
public:
  explicit Numbers(std::uint64_t seed) : m_random(seed) {}
  double In(double low, double high) { return m_random.In(low, high); }
  gsl_Point Point(double size) {
    const double x = In(-size, size);
    const double y = In(-size, size);
    return {x, y, In(-size, size)};
  }
  gsl_Vector Vector(double size) {
    const double x = In(-size, size);
    const double y = In(-size, size);
    return {x, y, In(-size, size)};
  }

private:
  RandomNumbers m_random;
};

template <class T, class Make>
std::vector<T> Corpus(std::uint64_t seed, Make make) {
  Numbers numbers(seed);
  std::vector<T> values;
  values.reserve(kCount);
  for (std::size_t i = 0; i < kCount; ++i)
    values.push_back(make(numbers));
  return values;
}

/// Returns vectors or points of any type that is made from three numbers.
template <class T>
std::vector<T> Triples() {
  return Corpus<T>(20240229, [](Numbers& n) {
    const gsl_Point p = n.Point(10.0);
    return T(p.x, p.y, p.z);
  });
}

template <std::size_t Size>
using Points = std::array<gsl_Point, Size>;

template <std::size_t Size>
Points<Size> AnyPoints(Numbers& n) {
  Points<Size> points;
  for (gsl_Point& p : points)
    p = n.Point(5.0);
  return points;
}

/// The same points, in a type of a peer.
template <class Peer, std::size_t Size, class Convert>
std::vector<std::array<Peer, Size>> PeerCorpus(std::uint64_t seed, Convert convert) {
  return Corpus<std::array<Peer, Size>>(seed, [&](Numbers& n) {
    const Points<Size> points = AnyPoints<Size>(n);
    std::array<Peer, Size> peers;
    for (std::size_t i = 0; i < Size; ++i)
      peers[i] = convert(points[i]);
    return peers;
  });
}

/// Returns opposite corners of boxes, in any order.
inline std::vector<Points<2>> BoxCorners() {
  return Corpus<Points<2>>(20240611, [](Numbers& n) {
    const gsl_Point a = n.Point(10.0);
    return Points<2>{a, n.Point(10.0)};
  });
}

/// A point on a line, and the direction, which has any length.
struct LineInput {
  gsl_Point on;
  gsl_Vector direction;
};

inline LineInput AnyLineInput(Numbers& n) {
  const gsl_Point on = n.Point(5.0);
  return {on, n.Vector(1.0)};
}

/// A point beside a line.
struct PointAndLineInput {
  gsl_Point p;
  LineInput line;
};

inline PointAndLineInput AnyPointAndLineInput(Numbers& n) {
  const gsl_Point p = n.Point(5.0);
  return {p, AnyLineInput(n)};
}

/// Returns a point of the plane that lines and points meet.
inline gsl_Point PlanePoint() {
  return {1.0, 2.0, 3.0};
}

/// Returns the normal of that plane. Its length is 1, for the peers that want it so.
inline gsl_Vector PlaneNormal() {
  return {0.6, 0.0, 0.8};
}

/// Returns the transform of every row that moves something.
inline gsl_Matrix SomeTransform() {
  gsl_Matrix m;
  m.AxisRotation(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(1.0, -1.0, 2.0), 0.7);
  return m;
}

/// An axis of any length through a point, and an angle.
struct Turn {
  gsl_Point p;
  gsl_Vector axis;
  double angle;
};

inline Turn AnyTurn(Numbers& n) {
  const gsl_Point p = n.Point(5.0);
  const gsl_Vector axis = n.Vector(1.0);
  return {p, axis, n.In(-3.0, 3.0)};
}

/// Registers a row, Work/who. What it returns is compared with the other rows of the work.
template <class Run>
void AddRow(const std::string& name, Run run) {
  benchmark::RegisterBenchmark(name.c_str(), [name, run](benchmark::State& state) {
    agreement::Begin(name);
    run(state);
  });
}

/// Registers Work/ours for a work that branches, and Work/learned, which is the same on inputs that
/// a branch predictor learns.
template <class Run>
void AddBranchingRow(const std::string& work, Run run) {
  AddRow(work + "/ours", run);
  AddRow(work + "/learned", [run](benchmark::State& state) {
    InputsInTurn() = kLearnedCount;
    run(state);
    InputsInTurn() = kCount;
  });
}

/// Times `work` on each value in turn.
// It is not inlined, so that the comparison takes no registers from the loop.
template <class T, class Work>
[[gnu::noinline]] void TimeEach(benchmark::State& state, const std::vector<T>& values, Work work) {
  const std::size_t mask = InputsInTurn() - 1;
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(work(values[i]));
    i = (i + 1) & mask;
  }
}

/// Times `work` on each value and its successor in turn.
template <class T, class Work>
[[gnu::noinline]] void TimePairs(benchmark::State& state, const std::vector<T>& values, Work work) {
  const std::size_t mask = InputsInTurn() - 1;
  std::size_t i = 0;
  for (auto _ : state) {
    const std::size_t next = (i + 1) & mask;
    benchmark::DoNotOptimize(work(values[i], values[next]));
    i = next;
  }
}

/// Compares what `work` returns for each value with the other rows, and times it.
template <class T, class Work>
void OnEach(benchmark::State& state, const std::vector<T>& values, Work work) {
  if (agreement::IsAgreedOnEach(state, values, work)) TimeEach(state, values, work);
}

/// Compares what `work` returns for each value and its successor with the other rows, and times it.
template <class T, class Work>
void OnPairs(benchmark::State& state, const std::vector<T>& values, Work work) {
  if (agreement::IsAgreedOnPairs(state, values, work)) TimePairs(state, values, work);
}

} // namespace fresh_data

#endif
