#include "pnt_Module.h"

#include "mem_LifeCycle.h"

namespace {
mem_LifeCycle lifeCycle("pnt");
}

void pnt_initialize(int& count) {
  lifeCycle.Initialize(count);
}

void pnt_finalize(int& count) {
  lifeCycle.Finalize(count);
}

bool pnt_isInitialized() {
  return lifeCycle.IsInitialized();
}
