#ifndef RECORDS_CRC32C_H
#define RECORDS_CRC32C_H

#include <cstddef>
#include <cstdint>

namespace gsl_records {

/// Returns the checksum CRC-32C of bytes that follow those with the checksum `before`, which is 0
/// for none. In a message of at most 2^28 bytes it notices every change of up to three bits, and
/// every change within 32 neighbouring bits.
///
/// Source  G. Castagnoli, S. Brauer, M. Herrmann: Optimization of cyclic redundancy-check codes
///         with 24 and 32 parity bits. IEEE Transactions on Communications 41 (1993).
std::uint32_t Crc32c(const unsigned char* bytes, std::size_t count, std::uint32_t before = 0);

/// The same for a processor without an instruction for it.
std::uint32_t Crc32cByTables(const unsigned char* bytes, std::size_t count, std::uint32_t before);

} // namespace gsl_records

#endif
