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

inline std::uint64_t GetFixed64(const unsigned char* at) {
  std::uint64_t value = 0;
  for (int i = 0; i < 8; ++i)
    value |= static_cast<std::uint64_t>(at[i]) << (8 * i);
  return value;
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
