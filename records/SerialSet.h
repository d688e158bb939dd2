#ifndef RECORDS_SERIAL_SET_H
#define RECORDS_SERIAL_SET_H

#include "RecordTables.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace gsl_records {

/// Serials of identities, one set for each shape and prefix, wherever the serials are. 64 serials
/// take one slot, and neighbouring slots are neighbours in memory.
class SparseSerials {
public:
  [[nodiscard]] bool Contains(Number shape, Number prefix, std::uint64_t serial) const {
    if (m_slots.empty()) return false;
    const std::uint64_t page = serial / kSerialsOfSlot;
    for (std::size_t i = PlaceOf(shape, prefix, page); m_slots[i].bits != 0; i = (i + 1) & Mask()) {
      const Slot& slot = m_slots[i];
      if (slot.page != page || slot.shape != shape || slot.prefix != prefix) continue;
      return (slot.bits >> (serial % kSerialsOfSlot) & 1u) != 0;
    }
    return false;
  }
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

/// Serials of identities, one set for each shape and prefix. Serials mostly follow one another: a
/// set is an array of bits, as long as it takes memory in proportion to its serials. What does not
/// fit is kept apart.
class SerialSet {
public:
  SerialSet() = default;
  // The sets that were asked for last are found by their address.
  SerialSet(const SerialSet&) = delete;
  SerialSet& operator=(const SerialSet&) = delete;

  /// Returns whether the serial is new.
  [[nodiscard]] bool Insert(Number shape, Number prefix, std::uint64_t serial) {
    Dense& set = SetOf(shape, prefix);
    const std::uint64_t page = serial / kSerialsOfPage;
    if (!HasRoom(set, page)) {
      set.isElsewhere = true;
      return m_sparse.Insert(shape, prefix, serial);
    }
    const std::uint64_t bit = std::uint64_t{1} << (serial % kSerialsOfPage);
    std::uint64_t& bits = set.pages[static_cast<std::size_t>(page - set.firstPage)];
    // A serial that came before the array reached it is kept apart.
    if ((bits & bit) != 0 || (set.isElsewhere && m_sparse.Contains(shape, prefix, serial))) {
      return false;
    }
    bits |= bit;
    ++set.count;
    return true;
  }
  std::size_t BytesHeld() const;

private:
  static constexpr std::uint64_t kSerialsOfPage = 64;
  static constexpr std::size_t kRecent = 16;

  struct Dense {
    std::uint64_t firstPage = 0;
    std::vector<std::uint64_t> pages;
    std::size_t count = 0;
    bool isElsewhere = false; ///< some serials are not in the array
  };
  struct Recent {
    std::uint64_t key = ~std::uint64_t{0}; ///< no set has this key
    Dense* set = nullptr;
  };

  Dense& SetOf(Number shape, Number prefix) {
    const std::uint64_t key = (std::uint64_t{shape} << 32) | prefix;
    const Recent& recent = m_recent[shape % kRecent];
    return recent.key == key ? *recent.set : FindSet(key, shape);
  }
  /// Returns whether the array has that page, which is added where it may be.
  static bool HasRoom(Dense& set, std::uint64_t page) {
    return page - set.firstPage < set.pages.size() || Grow(set, page);
  }
  Dense& FindSet(std::uint64_t key, Number shape);
  static bool Grow(Dense& set, std::uint64_t page);

  /// The sets stay where they are.
  std::unordered_map<std::uint64_t, Dense, MixedHash> m_sets;
  std::array<Recent, kRecent> m_recent;
  SparseSerials m_sparse;
};

} // namespace gsl_records

#endif
