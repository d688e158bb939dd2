#ifndef GSL_VIEW_LITTLE_ENDIAN_H
#define GSL_VIEW_LITTLE_ENDIAN_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace gsl_view {

/// Appends the four or eight bytes of a number, the lowest first.
template <class Number>
void AppendBytes(Number number, std::string& bytes) {
  static_assert(sizeof(Number) == 4 || sizeof(Number) == 8, "numbers of 32 or 64 bits");
  constexpr int kBits = 8 * sizeof(Number);
  std::conditional_t<kBits == 32, std::uint32_t, std::uint64_t> bits = 0;
  std::memcpy(&bits, &number, sizeof bits);
  for (int shift = 0; shift < kBits; shift += 8)
    bytes += static_cast<char>(bits >> shift & 0xffu);
}

/// Calls `send` with the bytes of all numbers, block after block.
template <class Number, class Send>
void SendBytes(const std::vector<Number>& numbers, const Send& send) {
  constexpr std::size_t kAtOnce = 4096;
  std::string bytes;
  for (std::size_t from = 0; from < numbers.size(); from += kAtOnce) {
    bytes.clear();
    const std::size_t end = std::min(from + kAtOnce, numbers.size());
    for (std::size_t k = from; k < end; ++k)
      AppendBytes(numbers[k], bytes);
    send(bytes);
  }
}

} // namespace gsl_view

#endif
