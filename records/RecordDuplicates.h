#ifndef RECORDS_RECORD_DUPLICATES_H
#define RECORDS_RECORD_DUPLICATES_H

#include "RecordTables.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace gsl_records {

/// A hash of bytes, equal for equal bytes.
std::uint32_t HashOfBytes(const unsigned char* bytes, std::size_t count);

/// Records by a hash of their contents.
class RecordDuplicates {
public:
  /// Returns a record of that hash for which `isEqual` holds, or kNone.
  template <class IsEqual>
  Number Find(std::uint32_t hash, const IsEqual& isEqual) const {
    if (m_slots.empty()) return kNone;
    for (std::size_t i = hash & Mask(); m_slots[i].record != kNone; i = (i + 1) & Mask()) {
      if (m_slots[i].hash == hash && isEqual(m_slots[i].record)) return m_slots[i].record;
    }
    return kNone;
  }
  /// Makes room for one further record.
  void MakeRoom();
  /// Throws nothing after MakeRoom.
  void Insert(std::uint32_t hash, Number record);
  /// Forgets the records from number `first` on.
  void Truncate(Number first) noexcept;
  std::size_t BytesHeld() const { return m_slots.capacity() * sizeof(Slot); }

private:
  struct Slot {
    std::uint32_t hash = 0;
    Number record = kNone;
  };

  std::size_t Mask() const { return m_slots.size() - 1; }
  void Put(const Slot& slot);
  void Remove(std::size_t place) noexcept;

  std::vector<Slot> m_slots;
  std::size_t m_used = 0;
};

} // namespace gsl_records

#endif
