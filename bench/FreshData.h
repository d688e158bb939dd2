#ifndef BENCH_FRESH_DATA_H
#define BENCH_FRESH_DATA_H

#include "RandomNumbers.h"
#include "gsl_Point.h"
#include "gsl_Vector.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <vector>

/// Random inputs of the benchmarks.
namespace fresh_data {

/// A branch predictor learns a few hundred inputs by heart, and cannot learn so many.
constexpr std::size_t kCount = 4096;

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

/// Runs `work` on each value in turn.
template <class T, class Work>
void OnEach(benchmark::State& state, const std::vector<T>& values, Work work) {
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(work(values[i]));
    i = (i + 1) % kCount;
  }
}

/// Runs `work` on each value and its successor in turn.
template <class T, class Work>
void OnPairs(benchmark::State& state, const std::vector<T>& values, Work work) {
  std::size_t i = 0;
  for (auto _ : state) {
    const std::size_t next = (i + 1) % kCount;
    benchmark::DoNotOptimize(work(values[i], values[next]));
    i = next;
  }
}

} // namespace fresh_data

#endif
