#include "omni_Module.h"

#include "mem_LifeCycle.h"

namespace {
mem_LifeCycle lifeCycle("omni");
}

void omni_initialize(int& count) {
  lifeCycle.Initialize(count);
}

void omni_finalize(int& count) {
  lifeCycle.Finalize(count);
}

bool omni_isInitialized() {
  return lifeCycle.IsInitialized();
}
