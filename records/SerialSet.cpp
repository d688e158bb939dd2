#include "SerialSet.h"

namespace gsl_records {

void SerialSet::Grow() {
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

} // namespace gsl_records
