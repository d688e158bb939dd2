#include "mem_LifeCycle.h"

#include <utility>

namespace {
mem_LifeCycle::Listener theListener = nullptr;
}

void mem_LifeCycle::Initialize(int count) {
  ++starts;
  if (theListener != nullptr) theListener(prefix, true, count);
}

void mem_LifeCycle::Finalize(int count) {
  if (starts > 0) --starts;
  if (theListener != nullptr) theListener(prefix, false, count);
}

mem_LifeCycle::Listener mem_LifeCycle::SetListener(Listener listener) {
  return std::exchange(theListener, listener);
}
