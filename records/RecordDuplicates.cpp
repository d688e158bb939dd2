#include "RecordDuplicates.h"

#include <cstring>

namespace gsl_records {

namespace {

std::uint64_t Mixed(std::uint64_t sum, std::uint64_t word) {
  sum = (sum ^ word) * 0x9E3779B97F4A7C15u;
  return sum ^ (sum >> 32);
}

} // namespace

std::uint32_t HashOfBytes(const unsigned char* bytes, std::size_t count) {
  std::uint64_t sum = count;
  std::uint64_t word = 0;
  for (; count >= sizeof word; bytes += sizeof word, count -= sizeof word) {
    std::memcpy(&word, bytes, sizeof word);
    sum = Mixed(sum, word);
  }
  word = 0;
  if (count != 0) std::memcpy(&word, bytes, count);
  return static_cast<std::uint32_t>(Mixed(Mixed(sum, word), 0));
}

void RecordDuplicates::MakeRoom() {
  constexpr std::size_t kFirst = 64;
  if (2 * (m_used + 1) <= m_slots.size()) return;
  std::vector<Slot> old(m_slots.empty() ? kFirst : 2 * m_slots.size());
  old.swap(m_slots);
  m_used = 0;
  for (const Slot& slot : old) {
    if (slot.record != kNone) Put(slot);
  }
}

void RecordDuplicates::Insert(std::uint32_t hash, Number record) {
  MakeRoom();
  Put({hash, record});
}

void RecordDuplicates::Truncate(Number first) noexcept {
  if (m_used == 0) return;
  for (std::size_t i = 0; i < m_slots.size(); ++i) {
    while (m_slots[i].record != kNone && m_slots[i].record >= first)
      Remove(i);
  }
}

void RecordDuplicates::Put(const Slot& slot) {
  std::size_t i = slot.hash & Mask();
  while (m_slots[i].record != kNone)
    i = (i + 1) & Mask();
  m_slots[i] = slot;
  ++m_used;
}

/// Moves later records of the run back, so that none is after a free place of its own run.
void RecordDuplicates::Remove(std::size_t place) noexcept {
  std::size_t gap = place;
  for (std::size_t i = (gap + 1) & Mask(); m_slots[i].record != kNone; i = (i + 1) & Mask()) {
    const std::size_t home = m_slots[i].hash & Mask();
    // A record whose first place is after the gap stays where it is.
    if (((i - home) & Mask()) < ((i - gap) & Mask())) continue;
    m_slots[gap] = m_slots[i];
    gap = i;
  }
  m_slots[gap] = {};
  --m_used;
}

} // namespace gsl_records
