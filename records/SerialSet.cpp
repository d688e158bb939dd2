#include "SerialSet.h"

namespace gsl_records {

void SparseSerials::Grow() {
  constexpr std::size_t kFirst = 64;
  std::vector<Slot> old(m_slots.empty() ? kFirst : 2 * m_slots.size());
  old.swap(m_slots);
  for (const Slot& slot : old) {
    if (slot.bits == 0) continue;
    std::size_t i = PlaceOf(slot.shape, slot.prefix, slot.page);
    while (m_slots[i].bits != 0)
      i = (i + 1) & Mask();
    m_slots[i] = slot;
  }
}

SerialSet::Dense& SerialSet::FindSet(std::uint64_t key, Number shape) {
  Dense& set = m_sets[key];
  m_recent[shape % kRecent] = {key, &set};
  return set;
}

bool SerialSet::Grow(Dense& set, std::uint64_t page) {
  constexpr std::uint64_t kFewest = 8;
  constexpr std::uint64_t kPagesOfSerial = 4;
  if (set.pages.empty()) set.firstPage = page;
  // The array begins where its first serial is.
  if (page < set.firstPage) return false;
  const std::uint64_t needed = page - set.firstPage + 1;
  if (needed > kFewest + kPagesOfSerial * set.count) return false;
  set.pages.resize(static_cast<std::size_t>(needed));
  return true;
}

std::size_t SerialSet::BytesHeld() const {
  std::size_t sum = m_sparse.BytesHeld();
  for (const auto& [key, set] : m_sets)
    sum += sizeof key + sizeof set + 3 * sizeof(void*) + 8 * set.pages.capacity();
  return sum;
}

} // namespace gsl_records
