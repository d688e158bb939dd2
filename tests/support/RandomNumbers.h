#ifndef RANDOM_NUMBERS_H
#define RANDOM_NUMBERS_H

#include <cstdint>
#include <random>

/// Random numbers that are the same with every standard library.
class RandomNumbers {
public:
  explicit RandomNumbers(std::uint64_t seed) : engine(seed) {}

  /// Uniform in [0, 1).
  double Unit() { return static_cast<double>(engine() >> 11) * 0x1p-53; }
  /// Uniform in [low, high).
  double In(double low, double high) { return low + (high - low) * Unit(); }
  /// One of 0 .. count - 1.
  int Below(int count) { return static_cast<int>(engine() % static_cast<std::uint64_t>(count)); }
  bool Chance(double probability) { return Unit() < probability; }

private:
  std::mt19937_64 engine;
};

#endif
