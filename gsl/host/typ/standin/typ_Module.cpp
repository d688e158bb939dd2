#include "typ_Module.h"

#include "mem_LifeCycle.h"

namespace {
mem_LifeCycle lifeCycle("typ");
}

void typ_initialize(int& count) {
  lifeCycle.Initialize(count);
}

void typ_finalize(int& count) {
  lifeCycle.Finalize(count);
}

bool typ_isInitialized() {
  return lifeCycle.IsInitialized();
}
