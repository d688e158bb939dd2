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

void RecordDuplicates::Insert(std::uint32_t hash, Number record) {
  constexpr std::size_t kFirst = 64;
  if (2 * (m_used + 1) > m_slots.size()) {
    Rebuild(m_slots.empty() ? kFirst : 2 * m_slots.size(), kNone);
  }
  Put({hash, record});
}

void RecordDuplicates::Truncate(Number first) {
  if (m_used != 0) Rebuild(m_slots.size(), first);
}

void RecordDuplicates::Put(const Slot& slot) {
  std::size_t i = slot.hash & Mask();
  while (m_slots[i].record != kNone)
    i = (i + 1) & Mask();
  m_slots[i] = slot;
  ++m_used;
}

void RecordDuplicates::Rebuild(std::size_t size, Number end) {
  std::vector<Slot> old(size);
  old.swap(m_slots);
  m_used = 0;
  for (const Slot& slot : old) {
    if (slot.record < end) Put(slot);
  }
}

} // namespace gsl_records
