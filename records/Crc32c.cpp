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
/// What a remainder becomes when zeros follow: the sum of what its bits become.
using OfBits = std::array<std::uint32_t, 32>;
/// The same for each byte of a remainder.
using OfBytes = std::array<std::array<std::uint32_t, 256>, 4>;

constexpr std::uint32_t Applied(const OfBits& ofBits, std::uint32_t remainder) {
  std::uint32_t sum = 0;
  for (std::size_t bit = 0; bit < 32; ++bit)
    sum ^= ((remainder >> bit) & 1u) != 0 ? ofBits[bit] : 0u;
  return sum;
}

/// After 2^doublings bytes of zeros.
constexpr OfBytes AfterZeros(int doublings) {
  OfBits ofBits = {};
  for (std::size_t bit = 0; bit < 32; ++bit) {
    const std::uint32_t remainder = std::uint32_t{1} << bit;
    ofBits[bit] = (remainder >> 8) ^ kTables[0][remainder & 0xFFu];
  }
  for (; doublings != 0; --doublings) {
    OfBits doubled = {};
    for (std::size_t bit = 0; bit < 32; ++bit)
      doubled[bit] = Applied(ofBits, ofBits[bit]);
    ofBits = doubled;
  }
  OfBytes ofBytes = {};
  for (std::size_t k = 0; k < 4; ++k) {
    for (std::uint32_t byte = 0; byte < 256; ++byte)
      ofBytes[k][byte] = Applied(ofBits, byte << (8 * k));
  }
  return ofBytes;
}

/// The instruction takes three cycles and starts in every cycle, so three lanes run side by side.
constexpr int kLaneDoublings = 10;
constexpr std::size_t kLane = std::size_t{1} << kLaneDoublings;
constexpr std::size_t kLine = 64;
constexpr OfBytes kAfterOneLane = AfterZeros(kLaneDoublings);
constexpr OfBytes kAfterTwoLanes = AfterZeros(kLaneDoublings + 1);

std::uint64_t Shifted(const OfBytes& ofBytes, std::uint64_t remainder) {
  return ofBytes[0][remainder & 0xFFu] ^ ofBytes[1][(remainder >> 8) & 0xFFu] ^
         ofBytes[2][(remainder >> 16) & 0xFFu] ^ ofBytes[3][(remainder >> 24) & 0xFFu];
}

__attribute__((target("sse4.2"))) std::uint64_t With(std::uint64_t remainder,
                                                     const unsigned char* bytes) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, kStep);
  return __builtin_ia32_crc32di(remainder, word);
}

__attribute__((target("sse4.2"))) std::uint32_t
ByInstruction(const unsigned char* bytes, std::size_t count, std::uint32_t remainder) {
  std::uint64_t wide = remainder;
  // The remainder of a sum is the sum of the remainders.
  for (; count >= 3 * kLane; bytes += 3 * kLane, count -= 3 * kLane) {
    std::uint64_t second = 0;
    std::uint64_t third = 0;
    for (std::size_t i = 0; i < kLane; i += kStep) {
      // One fetch for each line of what the next lanes are.
      if (i % kLine == 0) {
        // The next three lanes are fetched meanwhile.
        for (std::size_t lane = 3; lane < 6; ++lane)
          __builtin_prefetch(bytes + lane * kLane + i);
      }
      wide = With(wide, bytes + i);
      second = With(second, bytes + kLane + i);
      third = With(third, bytes + 2 * kLane + i);
    }
    wide = Shifted(kAfterTwoLanes, wide) ^ Shifted(kAfterOneLane, second) ^ third;
  }
  for (; count >= kStep; bytes += kStep, count -= kStep)
    wide = With(wide, bytes);
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
