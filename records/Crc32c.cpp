#include "Crc32c.h"

#include <array>
#include <cstring>

namespace gsl_records {

namespace {

/// The polynomial 0x1EDC6F41 with its bits reversed: the lowest bit of a byte comes first.
constexpr std::uint32_t kPolynomial = 0x82F63B78u;
constexpr std::size_t kStep = 8;

using Tables = std::array<std::array<std::uint32_t, 256>, kStep>;

/// Table k holds the remainder of each byte value that k further bytes of zeros follow.
constexpr Tables MakeTables() {
  Tables tables = {};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    std::uint32_t remainder = byte;
    for (int bit = 0; bit < 8; ++bit)
      remainder = (remainder >> 1) ^ ((remainder & 1u) != 0 ? kPolynomial : 0u);
    tables[0][byte] = remainder;
  }
  for (std::size_t k = 1; k < kStep; ++k) {
    for (std::size_t byte = 0; byte < 256; ++byte) {
      const std::uint32_t shorter = tables[k - 1][byte];
      tables[k][byte] = (shorter >> 8) ^ tables[0][shorter & 0xFFu];
    }
  }
  return tables;
}

constexpr Tables kTables = MakeTables();

#if defined(__x86_64__)
__attribute__((target("sse4.2"))) std::uint32_t
ByInstruction(const unsigned char* bytes, std::size_t count, std::uint32_t remainder) {
  std::uint64_t wide = remainder;
  for (; count >= kStep; bytes += kStep, count -= kStep) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, kStep);
    wide = __builtin_ia32_crc32di(wide, word);
  }
  auto sum = static_cast<std::uint32_t>(wide);
  for (; count != 0; ++bytes, --count)
    sum = __builtin_ia32_crc32qi(sum, *bytes);
  return sum;
}

/// Whether the processor computes this checksum itself.
[[nodiscard]] bool HasInstruction() {
  static const bool kHas = __builtin_cpu_supports("sse4.2") != 0;
  return kHas;
}
#endif

} // namespace

std::uint32_t Crc32c(const unsigned char* bytes, std::size_t count, std::uint32_t before) {
#if defined(__x86_64__)
  if (HasInstruction()) return ~ByInstruction(bytes, count, ~before);
#endif
  return Crc32cByTables(bytes, count, before);
}

std::uint32_t Crc32cByTables(const unsigned char* bytes, std::size_t count, std::uint32_t before) {
  std::uint32_t remainder = ~before;
  for (; count >= kStep; bytes += kStep, count -= kStep) {
    // The remainder is added to the first four bytes; the eight table entries are independent.
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < kStep; ++i) {
      const std::uint32_t added = i < 4 ? (remainder >> (8 * i)) & 0xFFu : 0u;
      sum ^= kTables[kStep - 1 - i][bytes[i] ^ added];
    }
    remainder = sum;
  }
  for (; count != 0; ++bytes, --count)
    remainder = (remainder >> 8) ^ kTables[0][(remainder ^ *bytes) & 0xFFu];
  return ~remainder;
}

} // namespace gsl_records
