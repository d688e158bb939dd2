#include "mem_Modules.h"

#include "mem_LifeCycle.h"

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
};

const Library kLibraries[] = {
    {"mem", &mem_initialize, &mem_finalize}, {"typ", &typ_initialize, &typ_finalize},
    {"pnt", &pnt_initialize, &pnt_finalize}, {"omni", &omni_initialize, &omni_finalize},
    {"atr", &atr_initialize, &atr_finalize}, {"cow", &cow_initialize, &cow_finalize},
    {"nex", &nex_initialize, &nex_finalize}, {"g3d", &g3d_initialize, &g3d_finalize},
    {"omu", &omu_initialize, &omu_finalize}};

} // namespace

TEST(MemModules, EveryLibraryLeavesTheCountAndReportsItsName) {
  const mem_LifeCycle::Listener before = mem_LifeCycle::SetListener(&Note);
  for (const Library& library : kLibraries) {
    events.clear();
    int count = 3;
    EXPECT_FALSE(mem_IsInitialized(library.prefix));
    library.initialize(count);
    for (const Library& other : kLibraries)
      EXPECT_EQ(mem_IsInitialized(other.prefix), &other == &library) << other.prefix;
    library.finalize(count);
    EXPECT_FALSE(mem_IsInitialized(library.prefix));
    EXPECT_EQ(count, 3);
    EXPECT_EQ(events, std::string("+") + library.prefix + "3-" + library.prefix + "3");
  }
  EXPECT_EQ(mem_LifeCycle::SetListener(before), &Note);
}

TEST(MemModules, StartsNest) {
  int count = 0;
  omni_initialize(count);
  omni_initialize(count);
  omni_finalize(count);
  EXPECT_TRUE(mem_IsInitialized("omni"));
  omni_finalize(count);
  EXPECT_FALSE(mem_IsInitialized("omni"));
}

TEST(MemModules, UnknownPrefixIsNotInitialized) {
  EXPECT_FALSE(mem_IsInitialized("cls"));
  EXPECT_FALSE(mem_IsInitialized(""));
}
