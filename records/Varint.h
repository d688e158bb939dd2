#ifndef RECORDS_VARINT_H
#define RECORDS_VARINT_H

#include <cstddef>
#include <cstdint>
#include <cstring>

/// The numbers of the byte form: groups of seven bits, lowest first, and eight bytes for a double.
namespace gsl_records {

constexpr std::size_t kMostVarintBytes = 10;

inline unsigned char* PutVarint(unsigned char* at, std::uint64_t value) {
  while (value >= 0x80u) {
    *at++ = static_cast<unsigned char>(value | 0x80u);
    value >>= 7;
  }
  *at++ = static_cast<unsigned char>(value);
  return at;
}

/// Reads a number that is known to be whole.
inline const unsigned char* GetVarint(const unsigned char* at, std::uint64_t& value) {
  value = *at & 0x7Fu;
  for (unsigned int shift = 7; *at++ >= 0x80u; shift += 7)
    value |= static_cast<std::uint64_t>(*at & 0x7Fu) << shift;
  return at;
}

inline std::uint64_t ZigzagOf(std::int64_t value) {
  return (static_cast<std::uint64_t>(value) << 1) ^ (value < 0 ? ~std::uint64_t{0} : 0u);
}

inline std::int32_t OfZigzag(std::uint64_t bits) {
  const std::uint64_t value = (bits >> 1) ^ (0 - (bits & 1u));
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

inline unsigned char* PutFixed64(unsigned char* at, std::uint64_t value) {
  for (int shift = 0; shift < 64; shift += 8)
    *at++ = static_cast<unsigned char>((value >> shift) & 0xFFu);
  return at;
}

inline std::uint32_t GetFixed32(const unsigned char* at) {
  std::uint32_t value = 0;
  std::memcpy(&value, at, sizeof value);
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  value = __builtin_bswap32(value);
#endif
  return value;
}

inline std::uint64_t GetFixed64(const unsigned char* at) {
  std::uint64_t value = 0;
  std::memcpy(&value, at, sizeof value);
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  value = __builtin_bswap64(value);
#endif
  return value;
}

/// Returns how many bytes a number takes whose first eight bytes these are, where it takes at most
/// four and not more than it needs; 0 elsewhere. No branch depends on the length.
inline std::size_t LengthOfShortVarint(std::uint64_t word) {
  const std::uint64_t ends = ~word & 0x80808080u;
  const auto lastBit = static_cast<unsigned int>(__builtin_ctzll(ends | (std::uint64_t{1} << 39)));
  const bool isLong = lastBit > 31;
  const bool endsInZero = (word >> (lastBit - 7) & 0xFFu) == 0;
  const bool isRefused = isLong | (endsInZero & (lastBit != 7));
  return isRefused ? 0 : (lastBit + 1) / 8;
}

/// Returns how many bytes two numbers take together that begin these eight bytes, where each takes
/// at most four and not more than it needs; 0 elsewhere. The second number does not wait for the
/// first.
inline std::size_t LengthOfTwoShortVarints(std::uint64_t word) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080u;
  const std::uint64_t goOn = word & kHighBits;
  const std::uint64_t ends = goOn ^ kHighBits;
  const std::uint64_t fromSecond = ends & (ends - 1);
  const std::uint64_t upToSecond = fromSecond ^ (fromSecond - 1);
  const std::uint64_t nonZero = ((word & ~kHighBits) + ~kHighBits) | word;
  const std::uint64_t endsInZero = ~nonZero & (goOn << 8) & kHighBits;
  const std::uint64_t isLong = goOn & (goOn >> 8) & (goOn >> 16) & (goOn >> 24);
  const bool isRefused = fromSecond == 0 || ((endsInZero | isLong) & upToSecond) != 0;
  return isRefused ? 0 : (static_cast<std::size_t>(__builtin_ctzll(fromSecond)) + 1) / 8;
}

/// Returns where a number ends that takes at most four bytes, and not more than it needs; null
/// elsewhere. Four bytes can be read. A length that is mostly the same costs nothing.
inline const unsigned char* SkipUsualVarint(const unsigned char* at) {
  if (*at < 0x80u) return at + 1;
  const std::uint32_t word = GetFixed32(at);
  if ((word & 0x80808080u) == 0x00808080u && word > 0x00FFFFFFu) return at + 4;
  if ((word & 0x00808080u) == 0x00008080u && (word & 0x00FF0000u) != 0) return at + 3;
  if ((word & 0x00008080u) == 0x00000080u && (word & 0x0000FF00u) != 0) return at + 2;
  return nullptr;
}

/// Reads such a number, and returns where it ends.
inline const unsigned char* GetUsualVarint(const unsigned char* at, std::uint64_t& value) {
  value = *at;
  if (*at < 0x80u) return at + 1;
  const unsigned char* const next = SkipUsualVarint(at);
  if (next == nullptr) return nullptr;
  // Bytes after the number go.
  const std::uint32_t word = GetFixed32(at) << (8 * (4 - (next - at))) >> (8 * (4 - (next - at)));
  value =
      (word & 0x7Fu) | (word >> 1 & 0x3F80u) | (word >> 2 & 0x1FC000u) | (word >> 3 & 0xFE00000u);
  return next;
}

inline unsigned char* PutDouble(unsigned char* at, double value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return PutFixed64(at, bits);
}

inline double GetDouble(const unsigned char* at) {
  const std::uint64_t bits = GetFixed64(at);
  double value = 0.0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

} // namespace gsl_records

#endif
