#include "g3d_Module.h"

#include "mem_LifeCycle.h"

namespace {
mem_LifeCycle lifeCycle("g3d");
}

void g3d_initialize(int& count) {
  lifeCycle.Initialize(count);
}

void g3d_finalize(int& count) {
  lifeCycle.Finalize(count);
}

bool g3d_isInitialized() {
  return lifeCycle.IsInitialized();
}
