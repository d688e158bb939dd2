#include "nex_Module.h"

#include "mem_LifeCycle.h"

namespace {
mem_LifeCycle lifeCycle("nex");
}

void nex_initialize(int& count) {
  lifeCycle.Initialize(count);
}

void nex_finalize(int& count) {
  lifeCycle.Finalize(count);
}

bool nex_isInitialized() {
  return lifeCycle.IsInitialized();
}
