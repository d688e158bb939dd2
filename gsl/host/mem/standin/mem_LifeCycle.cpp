#include "mem_LifeCycle.h"

#include <utility>

namespace {
mem_LifeCycle::Listener theListener = nullptr;
}

void mem_LifeCycle::Initialize(int count) {
  ++m_starts;
  if (theListener != nullptr) theListener(m_prefix, true, count);
}

void mem_LifeCycle::Finalize(int count) {
  if (m_starts > 0) --m_starts;
  if (theListener != nullptr) theListener(m_prefix, false, count);
}

mem_LifeCycle::Listener mem_LifeCycle::SetListener(Listener listener) {
  return std::exchange(theListener, listener);
}
