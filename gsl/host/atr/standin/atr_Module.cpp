#include "atr_Module.h"

#include "mem_LifeCycle.h"

namespace {
mem_LifeCycle lifeCycle("atr");
}

void atr_initialize(int& count) {
  lifeCycle.Initialize(count);
}

void atr_finalize(int& count) {
  lifeCycle.Finalize(count);
}

bool atr_isInitialized() {
  return lifeCycle.IsInitialized();
}
