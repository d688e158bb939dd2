#ifndef MODEL_ROW_BYTES_H
#define MODEL_ROW_BYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

/// Numbers as bytes of a blob, highest first, so that SQL's hex() shows them as people write them.
namespace gsl_model {

constexpr std::size_t kDoubleBytes = 8;
constexpr std::size_t kUnsignedBytes = 4;

inline void PutBytes(std::uint64_t value, std::size_t count, std::string& to) {
  for (std::size_t i = count; i-- != 0;)
    to += static_cast<char>(static_cast<unsigned char>(value >> (8 * i)));
}

inline std::uint64_t GetBytes(const char* bytes, std::size_t count) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < count; ++i)
    value = value << 8 | static_cast<unsigned char>(bytes[i]);
  return value;
}

inline void PutDouble(double value, std::string& to) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  PutBytes(bits, kDoubleBytes, to);
}

inline double GetDouble(const char* bytes) {
  const std::uint64_t bits = GetBytes(bytes, kDoubleBytes);
  double value = 0.0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

inline std::uint32_t GetUnsigned(const char* bytes) {
  return static_cast<std::uint32_t>(GetBytes(bytes, kUnsignedBytes));
}

} // namespace gsl_model

#endif
