#include "cow_Module.h"

#include "mem_LifeCycle.h"

namespace {
mem_LifeCycle lifeCycle("cow");
}

void cow_initialize(int& count) {
  lifeCycle.Initialize(count);
}

void cow_finalize(int& count) {
  lifeCycle.Finalize(count);
}

bool cow_isInitialized() {
  return lifeCycle.IsInitialized();
}
