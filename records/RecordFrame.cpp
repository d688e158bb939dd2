#include "RecordFrame.h"

#include "Crc32c.h"
#include "gsl_RecordError.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

namespace gsl_records {

namespace {

constexpr unsigned char kMagic[] = {'g', 's', 'l', 'r'};
constexpr std::size_t kVersionAt = 4;
constexpr std::size_t kFeaturesAt = 5;
constexpr std::size_t kUnusedAt = 6;
constexpr std::size_t kLengthAt = 8;
constexpr std::size_t kHeaderSumAt = 16;
constexpr std::size_t kSumSize = 4;

void Put(unsigned char* at, std::uint64_t value, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i)
    at[i] = static_cast<unsigned char>((value >> (8 * i)) & 0xFFu);
}

std::uint64_t Get(const unsigned char* at, std::size_t size) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < size; ++i)
    value |= static_cast<std::uint64_t>(at[i]) << (8 * i);
  return value;
}

std::uint64_t BlockCount(std::uint64_t bodySize) {
  return bodySize / kBlockSize + (bodySize % kBlockSize != 0 ? 1 : 0);
}

/// The checksum of a block of which only the number was summed.
std::uint32_t StartOfBlock(std::uint64_t block) {
  unsigned char number[8];
  Put(number, block, sizeof number);
  return Crc32c(number, sizeof number);
}

std::string Hex(Bytes bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.count; ++i) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%s%02x", i == 0 ? "" : " ", bytes.begin[i]);
    text += digits;
  }
  return text;
}

void CheckStart(Bytes bytes) {
  const std::size_t size = std::min(bytes.count, sizeof kMagic);
  if (size < sizeof kMagic || std::memcmp(bytes.begin, kMagic, size) != 0) {
    const std::string found =
        size == 0 ? "there are no bytes" : "they start with " + Hex({bytes.begin, size});
    throw gsl_RecordError("The bytes are not records: " + found +
                          ", but records start with 67 73 6c 72 (\"gslr\")");
  }
  if (bytes.count <= kVersionAt) {
    throw gsl_RecordError("The records are cut after 4 bytes, before their format version");
  }
  const unsigned int version = bytes.begin[kVersionAt];
  if (version != kFormatVersion) {
    throw gsl_RecordError("The records have format version " + std::to_string(version) +
                          (version > kFormatVersion ? ", which is newer" : "") +
                          ", but this library reads version " + std::to_string(kFormatVersion));
  }
}

std::uint64_t CheckedBodySize(Bytes bytes) {
  if (bytes.count < kHeaderSize) {
    throw gsl_RecordError("The records are cut after " + std::to_string(bytes.count) +
                          " bytes, within their header of " + std::to_string(kHeaderSize));
  }
  if (Crc32c(bytes.begin, kHeaderSumAt) != Get(bytes.begin + kHeaderSumAt, kSumSize)) {
    throw gsl_RecordError("The records are damaged: the checksum of their header does not match");
  }
  const unsigned int features = bytes.begin[kFeaturesAt];
  if (features != 0) {
    char text[8];
    std::snprintf(text, sizeof text, "0x%02x", features);
    throw gsl_RecordError(std::string("The records use the features ") + text +
                          ", but this library knows none");
  }
  if (Get(bytes.begin + kUnusedAt, kLengthAt - kUnusedAt) != 0) {
    throw gsl_RecordError("Bytes 6 and 7 of the records are not 0, but must be");
  }
  return Get(bytes.begin + kLengthAt, 8);
}

} // namespace

std::array<unsigned char, kHeaderSize> HeaderOf(std::uint64_t bodySize) {
  std::array<unsigned char, kHeaderSize> header = {};
  std::memcpy(header.data(), kMagic, sizeof kMagic);
  header[kVersionAt] = kFormatVersion;
  Put(&header[kLengthAt], bodySize, 8);
  Put(&header[kHeaderSumAt], Crc32c(header.data(), kHeaderSumAt), kSumSize);
  return header;
}

BlockSums::BlockSums(std::size_t bodySize) {
  m_sums.reserve(static_cast<std::size_t>(BlockCount(bodySize)) * kSumSize);
}

void BlockSums::Add(Bytes bytes) {
  while (bytes.count != 0) {
    if (m_inBlock == 0) StartBlock();
    const std::size_t size = std::min(kBlockSize - m_inBlock, bytes.count);
    m_sum = Crc32c(bytes.begin, size, m_sum);
    m_inBlock += size;
    bytes = {bytes.begin + size, bytes.count - size};
    if (m_inBlock == kBlockSize) EndBlock();
  }
}

void BlockSums::StartBlock() {
  m_sum = StartOfBlock(m_block++);
}

void BlockSums::EndBlock() {
  m_sums.resize(m_sums.size() + kSumSize);
  Put(m_sums.data() + m_sums.size() - kSumSize, m_sum, kSumSize);
  m_inBlock = 0;
}

std::vector<unsigned char> BlockSums::Finish() {
  if (m_inBlock != 0) EndBlock();
  return std::move(m_sums);
}

std::vector<unsigned char> StartFrame() {
  return std::vector<unsigned char>(kHeaderSize, 0);
}

void FinishFrame(std::vector<unsigned char>& bytes) {
  const std::size_t bodySize = bytes.size() - kHeaderSize;
  const std::array<unsigned char, kHeaderSize> header = HeaderOf(bodySize);
  std::memcpy(bytes.data(), header.data(), kHeaderSize);
  BlockSums body(bodySize);
  body.Add({bytes.data() + kHeaderSize, bodySize});
  const std::vector<unsigned char> sums = body.Finish();
  bytes.insert(bytes.end(), sums.begin(), sums.end());
}

CheckedBody::CheckedBody(Bytes bytes) : m_body{}, m_summed(nullptr) {
  CheckStart(bytes);
  const std::uint64_t bodySize = CheckedBodySize(bytes);
  const std::uint64_t available = bytes.count - kHeaderSize;
  const std::uint64_t blocks = BlockCount(bodySize);
  // The first test keeps the sum from wrapping around.
  const bool isWhole = bodySize <= available && bodySize + blocks * kSumSize == available;
  if (!isWhole) {
    throw gsl_RecordError("The records have " + std::to_string(bytes.count) +
                          " bytes, but their header announces a body of " +
                          std::to_string(bodySize));
  }
  m_body = {bytes.begin + kHeaderSize, static_cast<std::size_t>(bodySize)};
  m_summed = m_body.begin;
}

void CheckedBody::SumPiece() {
  // A piece stays in the first cache, and is a multiple of what the sum takes at once.
  constexpr std::size_t kPiece = std::size_t{3} << 13;
  const auto done = static_cast<std::size_t>(m_summed - m_body.begin);
  const std::size_t block = done / kBlockSize;
  if (done % kBlockSize == 0) m_sum = StartOfBlock(block);
  const std::size_t restOfBlock = std::min(kBlockSize - done % kBlockSize, m_body.count - done);
  const std::size_t size = std::min(kPiece, restOfBlock);
  m_sum = Crc32c(m_summed, size, m_sum);
  m_summed += size;
  if ((done + size) % kBlockSize == 0 || m_summed == End()) Compare(block);
}

void CheckedBody::Compare(std::size_t block) {
  if (m_sum == Get(End() + block * kSumSize, kSumSize)) return;
  m_isDamaged = true;
  const std::size_t begin = kHeaderSize + block * kBlockSize;
  const std::size_t end = std::min(begin + kBlockSize, kHeaderSize + m_body.count);
  throw gsl_RecordError("The records are damaged: the checksum of bytes " + std::to_string(begin) +
                        " to " + std::to_string(end - 1) + " does not match");
}

void CheckedBody::SumAll() {
  while (!m_isDamaged && m_summed != End())
    SumPiece();
}

} // namespace gsl_records
