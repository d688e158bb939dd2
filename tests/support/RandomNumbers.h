#ifndef RANDOM_NUMBERS_H
#define RANDOM_NUMBERS_H

#include "Numbers.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// The random numbers of the tests. Generator and distributions are its own, so that a seed makes
/// the same numbers with every standard library.
class RandomNumbers {
public:
  explicit RandomNumbers(std::uint64_t seed) : m_state(seed) {}

  /// 64 random bits.
  std::uint64_t Next() {
    std::uint64_t z = (m_state += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }

  /// Uniform in [0, 1).
  double Unit() { return static_cast<double>(Next() >> 11) * 0x1p-53; }
  /// Uniform in [low, high).
  double In(double low, double high) { return low + (high - low) * Unit(); }
  /// One of 0 .. count - 1.
  int Below(int count) { return static_cast<int>(Next() % static_cast<std::uint64_t>(count)); }
  bool Chance(double probability) { return Unit() < probability; }

  /// One of the values that no caller would choose.
  double Hostile() {
    const std::vector<double>& all = numbers::Hostile();
    return all[static_cast<std::size_t>(Below(static_cast<int>(all.size())))];
  }

private:
  std::uint64_t m_state;
};

#endif
