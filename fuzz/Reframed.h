#ifndef FUZZ_REFRAMED_H
#define FUZZ_REFRAMED_H

#include "FuzzInput.h"
#include "RecordFrame.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// The bytes with checksums that match, so that a changed body reaches the reader. What does not
/// begin like a byte form stays as it is.
inline std::vector<unsigned char> Reframed(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kSumSize = 4;
  const bool isForm = size >= gsl_records::kHeaderSize + kSumSize && data[0] == 'g';
  if (!isForm) return std::vector<unsigned char>(data, data + size);
  std::vector<unsigned char> bytes = gsl_records::StartFrame();
  bytes.insert(bytes.end(), data + gsl_records::kHeaderSize, data + size - kSumSize);
  gsl_records::FinishFrame(bytes);
  return bytes;
}

#endif
