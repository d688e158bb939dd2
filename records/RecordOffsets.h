#ifndef RECORDS_RECORD_OFFSETS_H
#define RECORDS_RECORD_OFFSETS_H

#include "PlainBuffer.h"

#include <cstddef>
#include <cstdint>

namespace gsl_records {

/// Where records begin: ascending numbers of four bytes each, or of eight bytes from the first
/// number on that needs more.
class RecordOffsets {
public:
  std::size_t Size() const { return m_short.Size() + m_long.Size(); }
  std::uint64_t operator[](std::size_t i) const {
    return i < m_short.Size() ? m_short[i] : m_long[i - m_short.Size()];
  }
  std::uint64_t Back() const { return (*this)[Size() - 1]; }
  /// The numbers of four bytes, where all numbers are; null elsewhere.
  const std::uint32_t* AllShort() const { return m_long.Size() == 0 ? m_short.Begin() : nullptr; }

  /// Makes room for that many further numbers, of which none is above `highest`.
  void MakeRoom(std::size_t count, std::uint64_t highest) {
    m_short.Room(count);
    if (highest > kMostShort) m_long.Room(count);
  }
  /// Throws nothing after MakeRoom.
  void Append(std::uint64_t offset) {
    if (offset <= kMostShort) {
      m_short.Append(static_cast<std::uint32_t>(offset));
    } else {
      m_long.Append(offset);
    }
  }
  /// Returns where the next numbers of four bytes go, after MakeRoom; null where one of them is
  /// above four bytes.
  std::uint32_t* ShortRoom(std::size_t count, std::uint64_t highest) {
    return highest <= kMostShort && m_long.Size() == 0 ? m_short.Room(count) : nullptr;
  }
  /// Appends the numbers that were written there.
  void AppendFilled(std::size_t count) { m_short.SetEnd(m_short.Room(count) + count); }
  void Truncate(std::size_t size) {
    const std::size_t shorts = m_short.Size();
    m_long.Truncate(size > shorts ? size - shorts : 0);
    if (size < shorts) m_short.Truncate(size);
  }
  std::size_t BytesHeld() const { return m_short.BytesHeld() + m_long.BytesHeld(); }

private:
  static constexpr std::uint64_t kMostShort = 0xFFFFFFFFu;

  PlainBuffer<std::uint32_t> m_short;
  PlainBuffer<std::uint64_t> m_long;
};

} // namespace gsl_records

#endif
