#ifndef FUZZ_FUZZ_INPUT_H
#define FUZZ_FUZZ_INPUT_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

/// Ends the program where a promise does not hold.
inline void Require(bool holds) {
  if (!holds) std::abort();
}

/// Any result is acceptable.
inline void Ignore(bool) {}

/// Returns whether two numbers have the same bits, or both are NaN.
inline bool SameNumber(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return std::memcmp(&a, &b, sizeof a) == 0;
}

/// Takes numbers from an input, and zeros after its end. The first byte chooses how the input
/// spells doubles: as their 64 bits, or as one byte each, a multiple of a quarter, so that numbers
/// coincide. It also chooses whether lengths may be stale, and whether tolerances follow.
class FuzzInput {
public:
  FuzzInput(const std::uint8_t* bytes, std::size_t count) : m_next(bytes), m_left(count) {
    const std::uint8_t choice = Byte();
    m_isLattice = (choice & 1u) != 0;
    m_hasStaleLengths = (choice & 2u) != 0;
    m_hasTolerances = (choice & 4u) != 0;
  }

  std::uint8_t Byte() {
    if (m_left == 0) return 0;
    --m_left;
    return *m_next++;
  }

  std::uint8_t Below(std::uint8_t count) { return static_cast<std::uint8_t>(Byte() % count); }

  double Number() {
    if (m_isLattice) return 0.25 * static_cast<std::int8_t>(Byte());
    double value = 0.0;
    const std::size_t size = std::min(m_left, sizeof value);
    std::memcpy(&value, m_next, size);
    m_next += size;
    m_left -= size;
    return value;
  }

  std::size_t Left() const { return m_left; }
  bool HasStaleLengths() const { return m_hasStaleLengths; }
  bool HasTolerances() const { return m_hasTolerances; }

private:
  const std::uint8_t* m_next;
  std::size_t m_left;
  bool m_isLattice = false, m_hasStaleLengths = false, m_hasTolerances = false;
};

#endif
