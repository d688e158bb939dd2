#ifndef GSL_SWEEP_KEY_SORT_H
#define GSL_SWEEP_KEY_SORT_H

#include "Array.h"
#include "Jobs.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace gsl_sweep {

/// A place, and a number by which places are sorted.
using Key = std::uint64_t;

inline Key KeyOf(std::uint32_t number, std::size_t place) {
  return static_cast<Key>(number) << 32 | place;
}
inline std::uint32_t NumberOf(Key key) {
  return static_cast<std::uint32_t>(key >> 32);
}
inline std::size_t PlaceOf(Key key) {
  return static_cast<std::size_t>(key & 0xffffffffu);
}

/// Sorts places by numbers below 2^(kDigitBits * kPasses), a digit at a time from the last. Equal
/// numbers keep their order. The result is the same for any team.
template <int kDigitBits, int kPasses>
class KeySort {
public:
  KeySort(std::size_t count, Team& team)
      : m_team(team), m_blocks(count, team.IsAlone() ? count : kBlock), m_keys(count),
        m_begin(m_blocks.Count() * kPasses * kDigits) {}

  /// Returns the keys of 0 .. count - 1 in order. number(place) may be called from any thread.
  template <class Number>
  Array<Key> Sorted(const Number& number) {
    // The digits of a single block stay in it, so they are counted once.
    const bool isOneBlock = m_blocks.Count() == 1;
    m_blocks.ForEach(m_team, [&](std::size_t block) {
      if (isOneBlock) {
        Fill<kPasses>(block, number);
      } else {
        Fill<1>(block, number);
      }
    });
    Array<Key> other(m_keys.size());
    for (int pass = 0; pass < kPasses; ++pass) {
      if (pass > 0 && !isOneBlock) Count(pass);
      SumUp(pass);
      m_blocks.ForEach(m_team, [&](std::size_t block) { Spread(block, pass, other.data()); });
      m_keys.swap(other);
    }
    return std::move(m_keys);
  }

private:
  static constexpr std::size_t kBlock = std::size_t{1} << 15;
  static constexpr std::size_t kDigits = std::size_t{1} << kDigitBits;

  static std::size_t Digit(Key key, int pass) {
    return static_cast<std::size_t>(key >> (32 + pass * kDigitBits)) % kDigits;
  }

  std::uint32_t* BeginOf(std::size_t block, int pass) {
    return m_begin.data() + (block * kPasses + static_cast<std::size_t>(pass)) * kDigits;
  }

  /// Sets the keys of a block and counts the digits of the first passes.
  template <int kCounted, class Number>
  void Fill(std::size_t block, const Number& number) {
    Key* keys = m_keys.data();
    std::uint32_t* begin = BeginOf(block, 0);
    const std::size_t end = m_blocks.End(block);
    for (std::size_t place = m_blocks.Begin(block); place < end; ++place) {
      const Key key = KeyOf(number(place), place);
      keys[place] = key;
      for (int pass = 0; pass < kCounted; ++pass)
        ++begin[static_cast<std::size_t>(pass) * kDigits + Digit(key, pass)];
    }
  }

  void Spread(std::size_t block, int pass, Key* to) {
    const Key* keys = m_keys.data();
    std::uint32_t* begin = BeginOf(block, pass);
    const std::size_t end = m_blocks.End(block);
    for (std::size_t k = m_blocks.Begin(block); k < end; ++k)
      to[begin[Digit(keys[k], pass)]++] = keys[k];
  }

  void Count(int pass) {
    m_blocks.ForEach(m_team, [&](std::size_t block) {
      std::uint32_t* begin = BeginOf(block, pass);
      for (std::size_t k = m_blocks.Begin(block); k < m_blocks.End(block); ++k)
        ++begin[Digit(m_keys[k], pass)];
    });
  }

  /// Turns the counts of digits into the places where each block puts its first key of each digit.
  void SumUp(int pass) {
    std::uint32_t sum = 0;
    for (std::size_t digit = 0; digit < kDigits; ++digit) {
      for (std::size_t block = 0; block < m_blocks.Count(); ++block)
        sum += std::exchange(BeginOf(block, pass)[digit], sum);
    }
  }

  Team& m_team;
  const Blocks m_blocks;
  Array<Key> m_keys;
  std::vector<std::uint32_t> m_begin;
};

} // namespace gsl_sweep

#endif
