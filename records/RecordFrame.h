#ifndef RECORDS_RECORD_FRAME_H
#define RECORDS_RECORD_FRAME_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace gsl_records {

// The frame around the records of the byte form, all numbers little-endian:
//
//   offset 0   "gslr"
//          4   byte      format version, 2
//          5   byte      features that a reader must know, one a bit; none is defined
//          6   2 bytes   0
//          8   8 bytes   length of the body
//         16   4 bytes   CRC-32C of the 16 bytes before
//         20   the body
//   then for each block of 2^20 bytes of the body, the last of which may be shorter:
//              4 bytes   CRC-32C of the block's number from 0 (8 bytes) and its bytes

constexpr unsigned int kFormatVersion = 2;
constexpr std::size_t kHeaderSize = 20;
constexpr std::size_t kBlockSize = std::size_t{1} << 20;

struct Bytes {
  const unsigned char* begin;
  std::size_t count;
};

/// The header of a body of that size.
std::array<unsigned char, kHeaderSize> HeaderOf(std::uint64_t bodySize);

/// The checksums of a body whose bytes come in order.
class BlockSums {
public:
  /// Of a body of that many bytes. Nothing else allocates.
  explicit BlockSums(std::size_t bodySize);
  /// The bytes that the checksums take.
  std::size_t Size() const { return m_sums.capacity(); }
  void Add(Bytes bytes);
  /// Ends the body. Returns the checksums of its blocks, as they follow it.
  std::vector<unsigned char> Finish();

private:
  void StartBlock();
  void EndBlock();

  std::vector<unsigned char> m_sums;
  std::uint64_t m_block = 0;
  std::size_t m_inBlock = 0;
  std::uint32_t m_sum = 0;
};

/// Starts a byte form: room for its header. The caller appends the body.
std::vector<unsigned char> StartFrame();

/// Fills in the header and appends the checksums.
void FinishFrame(std::vector<unsigned char>& bytes);

/// The body within the bytes, whose checksums are compared while the body is read: each piece is
/// summed just before it is read, so that it is fetched from memory once.
///
/// What is noticed for certain: a change of up to three bits, a changed length, and blocks that
/// changed places. Any other change goes unnoticed with a probability of 2^-32.
class CheckedBody {
public:
  /// Throws gsl_RecordError for bytes that are not a byte form of this version, or that were cut or
  /// extended.
  explicit CheckedBody(Bytes bytes);

  Bytes Body() const { return m_body; }
  /// Sums the body up to a place after `at`, or up to its end. Returns that place. Throws
  /// gsl_RecordError for a block that does not have its checksum.
  const unsigned char* SumPast(const unsigned char* at) {
    while (m_summed <= at && m_summed != End())
      SumPiece();
    return m_summed;
  }
  /// Sums what is left. Does nothing after an error.
  void SumAll();

private:
  const unsigned char* End() const { return m_body.begin + m_body.count; }
  void SumPiece();
  void Compare(std::size_t block);

  Bytes m_body;
  const unsigned char* m_summed;
  std::uint32_t m_sum = 0; ///< of the block up to there
  bool m_isDamaged = false;
};

} // namespace gsl_records

#endif
