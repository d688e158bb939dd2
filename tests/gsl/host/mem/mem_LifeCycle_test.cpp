#include "mem_LifeCycle.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string events;

void Note(const char* prefix, bool isStart, int count) {
  events += std::string(isStart ? "+" : "-") + prefix + std::to_string(count);
}

} // namespace

TEST(MemLifeCycle, ListenerReceivesEveryStartAndStop) {
  const mem_LifeCycle::Listener before = mem_LifeCycle::SetListener(&Note);
  events.clear();
  mem_LifeCycle lifeCycle("test");
  EXPECT_STREQ(lifeCycle.Prefix(), "test");
  lifeCycle.Initialize(3);
  lifeCycle.Finalize(2);
  EXPECT_EQ(events, "+test3-test2");
  EXPECT_EQ(mem_LifeCycle::SetListener(before), &Note);
  lifeCycle.Initialize(4);
  EXPECT_EQ(events, "+test3-test2");
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
