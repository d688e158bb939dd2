#include "omu_TypeDescription.h"

#include "ScriptObjects.h"
#include "TestScale.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

TEST(OmuTypeDescriptionThreads, TypesAreEnteredAndFoundAtOnce) {
  static const char* const names[] = {"T0", "T1", "T2", "T3", "T4", "T5", "T6", "T7"};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([t] {
      for (long i = 0; i < Scaled(20000); ++i) {
        const char* const name = names[(i + t) % 8];
        const omu_TypeDescription& type =
            omu_TypeDescription::Enter({name, nullptr, nullptr, nullptr, nullptr});
        ASSERT_EQ(omu_TypeDescription::Find(name), &type);
        const Gauge gauge{omu_Shortcut()};
        ASSERT_TRUE(gauge.IsMethod("raise"));
      }
    });
  }
  for (std::thread& thread : threads)
    thread.join();
}

TEST(OmuTypeDescriptionThreads, ShortcutExpiresWhileOthersAsk) {
  omu_Shortcut shortcut("panel");
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&shortcut] {
      const Gauge gauge(shortcut);
      while (!gauge.IsStale())
        std::this_thread::yield();
    });
  }
  shortcut.Expire();
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(shortcut.Owners(), 1u);
}

} // namespace
