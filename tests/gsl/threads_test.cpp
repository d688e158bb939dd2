#include "Numbers.h"
#include "atr_String.h"
#include "cls_Uid.h"
#include "cow_String.h"
#include "gsl_Matrix.h"
#include "gsl_Plane.h"
#include "gsl_Point.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"
#include "gsl_Vector.h"
#include "gsl_utils.h"
#include "nex_AssertException.h"
#include "typ_DebugFlags.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int kThreads = 8;

/// Runs work(i) on kThreads threads that all start together.
template <class Work>
void OnAllThreads(const Work& work) {
  std::atomic<int> ready{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      ready.fetch_add(1);
      while (ready.load() < kThreads)
        std::this_thread::yield();
      work(i);
    });
  }
  for (std::thread& thread : threads)
    thread.join();
}

/// Serials first to last of one prefix, allocated without a gap.
struct SerialRun {
  cls_Uid first, last;
};

void Record(std::vector<SerialRun>& runs, const cls_Uid& uid) {
  const bool follows = !runs.empty() && runs.back().last.Prefix() == uid.Prefix() &&
                       runs.back().last.Serial() + 1 == uid.Serial();
  if (follows) {
    runs.back().last = uid;
  } else {
    runs.push_back({uid, uid});
  }
}

/// The number of identifiers in runs that must not overlap.
std::uint64_t CountDisjoint(std::vector<SerialRun> runs) {
  std::sort(runs.begin(), runs.end(),
            [](const SerialRun& a, const SerialRun& b) { return a.first < b.first; });
  std::uint64_t count = 0;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    if (i > 0) {
      EXPECT_LT(runs[i - 1].last, runs[i].first);
    }
    count += runs[i].last.Serial() - runs[i].first.Serial() + 1;
  }
  return count;
}

} // namespace

TEST(ThreadsUid, EightThreadsNeverGetTheSame) {
  constexpr std::uint64_t kEach = 1000000;
  std::vector<SerialRun> runs[kThreads];
  OnAllThreads([&](int i) {
    std::vector<SerialRun> own;
    for (std::uint64_t n = 0; n < kEach; ++n)
      Record(own, cls_Uid::AllocateUid());
    runs[i] = own;
  });
  std::vector<SerialRun> all;
  for (const std::vector<SerialRun>& own : runs)
    all.insert(all.end(), own.begin(), own.end());
  EXPECT_EQ(CountDisjoint(all), kThreads * kEach);
  EXPECT_EQ(all.front().first.Prefix(), all.back().first.Prefix()) << "one process, one prefix";
}

TEST(ThreadsUid, ThreadsThatComeAndGoNeverGetTheSame) {
  std::vector<SerialRun> all;
  for (int round = 0; round < 25; ++round) {
    std::vector<SerialRun> runs[kThreads];
    OnAllThreads([&](int i) {
      for (int n = 0; n < 5; ++n)
        Record(runs[i], cls_Uid::AllocateUid());
    });
    for (const std::vector<SerialRun>& own : runs)
      all.insert(all.end(), own.begin(), own.end());
  }
  EXPECT_EQ(CountDisjoint(all), 25u * kThreads * 5u);
}

TEST(ThreadsString, CopiesInManyThreadsAreIndependent) {
  const cow_String shared("one buffer for all");
  OnAllThreads([&](int i) {
    cow_String mine(shared);
    for (int n = 0; n < 20000; ++n) {
      cow_String copy(mine);
      if (n % 16 == 0) copy = cow_String(i % 2 == 0 ? "even" : "odd");
      mine = n % 3 == 0 ? shared : copy;
      if (n % 5 == 0) mine = cow_String();
    }
    EXPECT_TRUE(mine.IsEmpty() || mine == shared || mine.Length() <= 4);
  });
  EXPECT_STREQ(shared.CStr(), "one buffer for all");
}

TEST(ThreadsString, TheLastOwnerMayBeAnyThread) {
  for (int round = 0; round < 200; ++round) {
    std::vector<cow_String> copies(kThreads, cow_String("handed over"));
    OnAllThreads([&](int i) {
      EXPECT_EQ(copies[static_cast<std::size_t>(i)].Length(), 11u);
      copies[static_cast<std::size_t>(i)] = cow_String();
    });
  }
}

TEST(ThreadsHost, FlagsAndTranslationsMayBeSetWhileTheyAreRead) {
  OnAllThreads([](int i) {
    for (int n = 0; n < 2000; ++n) {
      typ_DebugFlags::SetDebugFlags(5000 + n % 7, i);
      const int level = typ_DebugFlags::GetDebugFlags(5000 + n % 7);
      EXPECT_TRUE(level >= 0 && level < kThreads);
      atr_SetTranslation("threads %d", i % 2 == 0 ? "Faden %d" : nullptr);
      atr_String message = atr_translate("threads %d");
      EXPECT_TRUE(atr_SubstituteFormat(message, 1, n));
      const std::string number = std::to_string(n);
      EXPECT_TRUE(message == atr_String("threads " + number) ||
                  message == atr_String("Faden " + number));
    }
  });
  atr_SetTranslation("threads %d", nullptr);
}

TEST(ThreadsHost, ExceptionsBelongToTheirThread) {
  OnAllThreads([](int i) {
    for (int n = 0; n < 500; ++n) {
      try {
        const std::string text = std::to_string(i);
        nex_Exception::Throw(nex_AssertException(text.c_str()), "threads", n);
      } catch (const nex_AssertException& e) {
        EXPECT_EQ(e.Message().CStr(), std::to_string(i));
        EXPECT_EQ(e.LineNumber(), n);
      }
    }
  });
}

namespace {

/// Entities that all threads read and no thread changes.
struct Scene {
  gsl_Point p{0.3, -0.4, 2.0};
  gsl_Point q{1.5, 0.25, -1.0};
  gsl_Point r{-2.0, 1.0, 0.5};
  gsl_Vector v{1.0, 2.0, -0.5};
  gsl_Vector w{-0.25, 1.0, 3.0};
  gsl_StLine line{p, v};
  gsl_StLine other{q, w};
  gsl_Plane plane{r, w};
  gsl_Segment segment{p, q};
  gsl_Segment skew{r, gsl_Point(0.0, 0.0, 4.0)};
  gsl_Matrix turn;

  Scene() {
    turn.AxisRotation(q, v, 0.7);
    // A matrix with an unknown flag settles the flag at the first call of IsIdentity.
    EXPECT_FALSE(turn.IsIdentity());
  }
};

/// The results of const operations, without identities, which are fresh at every call.
std::vector<double> AskConst(const Scene& s) {
  gsl_Point out;
  gsl_Segment connection;
  gsl_Vector axis;
  double number = 0.0, weights[3] = {};
  std::vector<double> all = {s.v.DotProduct(s.w),
                             s.v.CrossProduct(s.w).magnitude,
                             s.v.AngleWith(s.w, false),
                             s.v.AnyOrthogonalUnit().x,
                             s.v.BestAlignedOrthogonalUnit().y,
                             s.v.ProjectOn(s.plane).z,
                             s.p.GetDistance(s.q),
                             s.p.GetDistance(s.line),
                             s.p.GetDistance(s.plane),
                             s.p.GetDistance(s.plane, s.v),
                             s.p.GetDistance(s.segment, out),
                             s.p.GetDistance(s.p, s.q, s.r)};
  const auto add = [&all](bool answer, double value) {
    all.push_back(answer ? 1.0 : 0.0);
    all.push_back(value);
  };
  add(s.v.IsOn(s.w), 0.0);
  add(s.v == s.w, 0.0);
  add(s.v.AngleBetween(s.w, s.w, number), number);
  add(s.p == s.q, 0.0);
  add(s.p.ProjectOn(s.skew, out, number), number);
  add(s.p.ProjectOn(s.p, s.q, s.r, out, weights), weights[1]);
  add(s.p.RayIntersect(s.v, s.plane, out), out.x);
  add(s.line.Intersect(s.other, out, number), number);
  add(s.line.Intersect(s.plane, out), out.y);
  add(s.segment.Intersect(s.other, out), out.z);
  s.segment.GetDistance(s.skew, connection);
  add(true, connection.Length());
  gsl_Point moved(s.p);
  s.turn.Transform(moved);
  add(s.turn.IsIdentity(), moved.x);
  s.turn.GetAxisRotation(moved, axis, number);
  add(true, number);
  const gsl_Point corners[3] = {s.p + s.w, s.q + s.w, s.r + s.w};
  const bool twoSided[2] = {true, true};
  gsl_Point contacts[2];
  number = 1e10;
  add(gsl_TriTriMinDirectionalDist(s.w, s.p, s.q, s.r, corners[0], corners[1], corners[2], twoSided,
                                   0.0, contacts, number),
      number);
  const gsl_StLine lineCopy(s.line);
  const gsl_Plane planeCopy(s.plane);
  add(lineCopy.PointOn() == planeCopy.PointOn(), gsl_RoundFloat(s.v.magnitude, 5));
  return all;
}

} // namespace

TEST(ThreadsGeometry, ConstOperationsOnSharedObjectsAgree) {
  // As in the start-up of a host, the settings exist before there are threads.
  omi_Singleton<gsl_Util>::Instance();
  const Scene scene;
  const std::vector<double> expected = AskConst(scene);
  OnAllThreads([&](int) {
    for (int n = 0; n < 200; ++n) {
      const std::vector<double> found = AskConst(scene);
      ASSERT_EQ(found.size(), expected.size());
      EXPECT_EQ(std::memcmp(found.data(), expected.data(), found.size() * sizeof(double)), 0);
    }
  });
}
