#include "mem_Module.h"

#include "mem_LifeCycle.h"

namespace {
mem_LifeCycle lifeCycle("mem");
}

void mem_initialize(int& count) {
  lifeCycle.Initialize(count);
}

void mem_finalize(int& count) {
  lifeCycle.Finalize(count);
}

bool mem_isInitialized() {
  return lifeCycle.IsInitialized();
}
