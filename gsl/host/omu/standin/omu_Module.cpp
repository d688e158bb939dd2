#include "omu_Module.h"

#include "mem_LifeCycle.h"

namespace {
mem_LifeCycle lifeCycle("omu");
}

void omu_initialize(int& count) {
  lifeCycle.Initialize(count);
}

void omu_finalize(int& count) {
  lifeCycle.Finalize(count);
}

bool omu_isInitialized() {
  return lifeCycle.IsInitialized();
}
