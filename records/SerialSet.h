#ifndef RECORDS_SERIAL_SET_H
#define RECORDS_SERIAL_SET_H

#include "RecordTables.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace gsl_records {

/// Serials of identities, one set for each shape and prefix. Serials are mostly dense: 64 of them
/// take one slot, and neighbouring slots are neighbours in memory.
class SerialSet {
public:
  /// Returns whether the serial is new.
  [[nodiscard]] bool Insert(Number shape, Number prefix, std::uint64_t serial) {
    const std::uint64_t bit = std::uint64_t{1} << (serial % kSerialsOfSlot);
    Slot& slot = SlotOf(shape, prefix, serial / kSerialsOfSlot);
    const bool isNew = (slot.bits & bit) == 0;
    slot.bits |= bit;
    return isNew;
  }
  std::size_t BytesHeld() const { return m_slots.capacity() * sizeof(Slot); }

private:
  static constexpr std::uint64_t kSerialsOfSlot = 64;
  static constexpr std::uint64_t kNeighbours = 64;

  struct Slot {
    std::uint64_t page = 0;
    std::uint64_t bits = 0; ///< none for a free slot
    Number shape = 0, prefix = 0;
  };

  std::size_t Mask() const { return m_slots.size() - 1; }
  std::size_t PlaceOf(Number shape, Number prefix, std::uint64_t page) const {
    const std::uint64_t owner = (std::uint64_t{shape} << 32) | prefix;
    const std::uint64_t group = page / kNeighbours + owner * 0x9E3779B97F4A7C15u;
    return (MixedHash()(group) + page % kNeighbours) & Mask();
  }
  Slot& SlotOf(Number shape, Number prefix, std::uint64_t page) {
    if (2 * (m_used + 1) > m_slots.size()) Grow();
    std::size_t i = PlaceOf(shape, prefix, page);
    for (; m_slots[i].bits != 0; i = (i + 1) & Mask()) {
      const Slot& slot = m_slots[i];
      if (slot.page == page && slot.shape == shape && slot.prefix == prefix) return m_slots[i];
    }
    m_slots[i] = {page, 0, shape, prefix};
    ++m_used;
    return m_slots[i];
  }
  void Grow();

  std::vector<Slot> m_slots;
  std::size_t m_used = 0;
};

} // namespace gsl_records

#endif
