#include "mem_LifeCycle.h"

#include "atr_Module.h"
#include "cow_Module.h"
#include "g3d_Module.h"
#include "mem_Module.h"
#include "nex_Module.h"
#include "omni_Module.h"
#include "omu_Module.h"
#include "pnt_Module.h"
#include "typ_Module.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string events;

void Note(const char* prefix, bool isStart, int count) {
  events += std::string(isStart ? "+" : "-") + prefix + std::to_string(count);
}

struct Library {
  const char* prefix;
  void (*initialize)(int&);
  void (*finalize)(int&);
  bool (*isInitialized)();
};

const Library kLibraries[] = {{"mem", &mem_initialize, &mem_finalize, &mem_isInitialized},
                              {"typ", &typ_initialize, &typ_finalize, &typ_isInitialized},
                              {"pnt", &pnt_initialize, &pnt_finalize, &pnt_isInitialized},
                              {"omni", &omni_initialize, &omni_finalize, &omni_isInitialized},
                              {"atr", &atr_initialize, &atr_finalize, &atr_isInitialized},
                              {"cow", &cow_initialize, &cow_finalize, &cow_isInitialized},
                              {"nex", &nex_initialize, &nex_finalize, &nex_isInitialized},
                              {"g3d", &g3d_initialize, &g3d_finalize, &g3d_isInitialized},
                              {"omu", &omu_initialize, &omu_finalize, &omu_isInitialized}};

} // namespace

TEST(MemLifeCycle, EveryHostLibraryLeavesTheCountAndTellsItsName) {
  const mem_LifeCycle::Listener before = mem_LifeCycle::SetListener(&Note);
  for (const Library& library : kLibraries) {
    events.clear();
    int count = 3;
    EXPECT_FALSE(library.isInitialized());
    library.initialize(count);
    EXPECT_TRUE(library.isInitialized());
    library.finalize(count);
    EXPECT_FALSE(library.isInitialized());
    EXPECT_EQ(count, 3);
    EXPECT_EQ(events, std::string("+") + library.prefix + "3-" + library.prefix + "3");
  }
  EXPECT_EQ(mem_LifeCycle::SetListener(before), &Note);
}

TEST(MemLifeCycle, StartsNestAndSurplusStopsAreIgnored) {
  mem_LifeCycle lifeCycle("test");
  lifeCycle.Finalize(0);
  lifeCycle.Initialize(0);
  EXPECT_TRUE(lifeCycle.IsInitialized());
  lifeCycle.Initialize(0);
  lifeCycle.Finalize(0);
  EXPECT_TRUE(lifeCycle.IsInitialized());
  lifeCycle.Finalize(0);
  EXPECT_FALSE(lifeCycle.IsInitialized());
}
