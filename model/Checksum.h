#ifndef MODEL_CHECKSUM_H
#define MODEL_CHECKSUM_H

#include <cstdint>
#include <cstring>
#include <string_view>

namespace gsl_model {

/// Returns another number for each number: every bit of the result depends on every bit of `x`.
///
/// Source  G. L. Steele, D. Lea, C. H. Flood: Fast splittable pseudorandom number generators.
///         OOPSLA 2014.
constexpr std::uint64_t Mixed(std::uint64_t x) {
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBu;
  return x ^ (x >> 31);
}

/// The checksum of a row of 64-bit words. It notices every change of one word. Any other change
/// goes unnoticed in about one of 2^64 cases.
// A step has a different result for each word, and for each sum before it. So a row that differs in
// one word has another sum after it, and after each later word.
class Checksum {
public:
  void Add(std::uint64_t word) {
    m_sum = Mixed((m_sum ^ word) + 0x9E3779B97F4A7C15u);
    ++m_count;
  }
  /// Adds the length, then the bytes in words of eight, lowest first, the last one filled with 0.
  void AddText(std::string_view text) {
    Add(text.size());
    for (std::size_t at = 0; at < text.size(); at += 8) {
      std::uint64_t word = 0;
      for (std::size_t i = at; i < text.size() && i < at + 8; ++i)
        word |= std::uint64_t{static_cast<unsigned char>(text[i])} << (8 * (i - at));
      Add(word);
    }
  }
  void AddDouble(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    Add(bits);
  }

  std::uint64_t Sum() const { return m_sum; }
  /// How many words there were.
  std::uint64_t Count() const { return m_count; }

private:
  std::uint64_t m_sum = 0;
  std::uint64_t m_count = 0;
};

} // namespace gsl_model

#endif
