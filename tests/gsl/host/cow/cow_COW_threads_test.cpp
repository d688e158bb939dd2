#include "cow_COW.h"
#include "cow_Virtual.h"
#include "gsl_ModelSegment.h"

#include "CountedDot.h"
#include "TestScale.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

using DotHolder = cow_COW<gsl_Dot, cow_Virtual<gsl_Dot>>;

constexpr int kThreads = 4;

template <class Work>
void InThreads(const Work& work) {
  std::atomic<int> ready{0};
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&ready, &work, t] {
      // All start together, so that they meet.
      ++ready;
      while (ready < kThreads)
        std::this_thread::yield();
      work(t);
    });
  }
  for (std::thread& thread : threads)
    thread.join();
}

TEST(CowCOWThreads, CopiesOfOneHolderAreMadeAndDroppedAtOnce) {
  const int before = CountedDot::live;
  {
    const DotHolder source = DotHolder::Adopt(new CountedDot(gsl_Point(1.0, 2.0, 3.0)));
    const long rounds = Scaled(100000);
    InThreads([&](int) {
      for (long i = 0; i < rounds; ++i) {
        const DotHolder copy(source);
        DotHolder other;
        other = copy;
        ASSERT_EQ(other->GetPoint().x, 1.0);
      }
    });
    EXPECT_EQ(source.Owners(), 1u);
    EXPECT_EQ(CountedDot::live, before + 1);
  }
  EXPECT_EQ(CountedDot::live, before);
}

TEST(CowCOWThreads, EveryHolderThatUnsharesGetsAnObjectOfItsOwn) {
  const int before = CountedDot::live;
  for (long round = 0; round < Scaled(2000); ++round) {
    std::vector<DotHolder> holders(kThreads,
                                   DotHolder::Adopt(new CountedDot(gsl_Point(1.0, 2.0, 3.0))));
    InThreads([&holders](int t) {
      gsl_Dot* const own = holders[static_cast<std::size_t>(t)].Unshared();
      own->SetValues(t, t, t);
    });
    for (int t = 0; t < kThreads; ++t) {
      const DotHolder& holder = holders[static_cast<std::size_t>(t)];
      ASSERT_EQ(holder->GetPoint().x, t);
      ASSERT_EQ(holder.Owners(), 1u);
    }
    ASSERT_EQ(CountedDot::live, before + kThreads);
  }
  EXPECT_EQ(CountedDot::live, before);
}

TEST(CowCOWThreads, LastHolderSeesTheWritesOfTheOthers) {
  const int before = CountedDot::live;
  for (long round = 0; round < Scaled(2000); ++round) {
    std::vector<DotHolder> holders(kThreads, DotHolder::Adopt(new CountedDot(gsl_Point())));
    InThreads([&holders](int t) { holders[static_cast<std::size_t>(t)].Clear(); });
    ASSERT_EQ(CountedDot::live, before);
  }
}

TEST(CowCOWThreads, CopiesOfAModelSegmentRegenerateIndependently) {
  const int before = CountedDot::live;
  {
    const gsl_ModelSegment source(CountedDot(gsl_Point(0.0, 0.0, 0.0)),
                                  CountedDot(gsl_Point(100.0, 0.0, 0.0)));
    const long rounds = Scaled(5000);
    InThreads([&](int) {
      for (long i = 0; i < rounds; ++i) {
        gsl_ModelSegment copy(source);
        copy.Regenerate(nullptr);
        copy.Regenerate(nullptr);
        ASSERT_EQ(copy.Point1().GetPoint().x, 2.0);
        ASSERT_EQ(copy.Length(), 100.0);
        ASSERT_EQ(source.Point1().GetPoint().x, 0.0);
      }
    });
  }
  EXPECT_EQ(CountedDot::live, before);
}

} // namespace
