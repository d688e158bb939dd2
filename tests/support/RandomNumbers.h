#ifndef RANDOM_NUMBERS_H
#define RANDOM_NUMBERS_H

#include "Numbers.h"

#include <cstddef>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

/// The engine that the corpus of the golden numbers is made with.
class SplitMix {
public:
  explicit SplitMix(std::uint64_t seed) : m_state(seed) {}

  std::uint64_t operator()() {
    std::uint64_t z = (m_state += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }

private:
  std::uint64_t m_state;
};

/// Returns 64 bits from any engine of the standard library. These engines are the same everywhere,
/// and the distributions of the library are not.
template <class Engine>
std::uint64_t RandomBits(Engine& engine) {
  static_assert(Engine::min() == 0, "every pattern of bits must be possible");
  if constexpr (Engine::max() == ~std::uint64_t{0}) {
    return engine();
  } else {
    static_assert(Engine::max() == 0xFFFFFFFFu, "an engine of 32 or 64 bits");
    const std::uint64_t high = engine();
    return (high << 32) | engine();
  }
}

/// Uniform in [low, high).
class RealsIn {
public:
  RealsIn(double low, double high) : m_low(low), m_high(high) {}

  template <class Engine>
  double operator()(Engine& engine) const {
    return m_low + (m_high - m_low) * (static_cast<double>(RandomBits(engine) >> 11) * 0x1p-53);
  }

private:
  double m_low, m_high;
};

/// One of low .. high, both included. Their difference is far below 2^64, so that the remainder of
/// a division is nearly uniform.
template <class Whole>
class WholesIn {
public:
  WholesIn(Whole low, Whole high)
      : m_low(low),
        m_count(static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(low) + 1) {}

  template <class Engine>
  Whole operator()(Engine& engine) const {
    return m_low + static_cast<Whole>(RandomBits(engine) % m_count);
  }

private:
  Whole m_low;
  std::uint64_t m_count;
};

/// Puts the elements into a random order.
template <class Element>
void Shuffle(std::vector<Element>& elements, std::uint64_t seed) {
  std::mt19937_64 engine(seed);
  for (std::size_t count = elements.size(); count > 1; --count)
    std::swap(elements[count - 1], elements[WholesIn<std::size_t>(0, count - 1)(engine)]);
}

/// Random numbers of the tests. The distributions are their own, so that a seed makes the same
/// numbers with every standard library.
template <class Engine>
class RandomNumbersOf {
public:
  explicit RandomNumbersOf(std::uint64_t seed) : m_engine(seed) {}

  /// 64 random bits.
  std::uint64_t Next() { return m_engine(); }

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
  Engine m_engine;
};

using RandomNumbers = RandomNumbersOf<std::mt19937_64>;
/// The stored hashes depend on this engine.
using CorpusNumbers = RandomNumbersOf<SplitMix>;

#endif
