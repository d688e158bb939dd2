#include "FailEachAllocation.h"
#include "Records.h"
#include "cls_MetadataRegistrar.h"
#include "gsl_Module.h"
#include "gsl_Plane.h"
#include "gsl_TransformIntObj.h"
#include "gsl_Util.h"
#include "mem_Modules.h"
#include "omu_PrimTuple.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

// What is made once in a process: the settings, the tables of types and classes, the names of
// enumerations. Each run has a process of its own, so this program does not use the library before
// it forks. These are its first tests.

namespace {

enum ChildStatus { kFailedWell, kNeededFewer, kHidFailure, kFailedForGood, kWentWrong };

/// Runs the operation in a child whose n-th allocation fails.
template <class Operation>
int StatusOfChild(long n, const Operation& operation) {
  const pid_t child = fork();
  if (child == 0) {
    bool succeeded = false;
    bool failed = false;
    {
      const FailingNth failure(n);
      succeeded = Attempt(operation);
      failed = failure.HasFailed();
    }
    if (!failed) _exit(succeeded ? kNeededFewer : kWentWrong);
    if (succeeded) _exit(kHidFailure);
    _exit(Attempt(operation) ? kFailedWell : kFailedForGood);
  }
  int status = 0;
  if (waitpid(child, &status, 0) != child) return kWentWrong;
  return WIFEXITED(status) ? WEXITSTATUS(status) : kWentWrong;
}

/// Returns the number of allocations of an operation that is the first of its process.
template <class Operation>
long FailEachInFreshProcesses(const Operation& operation,
                              WithoutMemory without = WithoutMemory::Refuses) {
  for (long n = 0;; ++n) {
    const int status = StatusOfChild(n, operation);
    if (status == kNeededFewer) return n;
    if (status == kHidFailure && without == WithoutMemory::MayManage) continue;
    EXPECT_EQ(status, kFailedWell) << "after " << n << " allocations";
    if (status != kFailedWell) return -1;
  }
}

/// Starts and stops the library. A start that fails must leave the process as it was.
bool StartsAndStops() {
  int count = 3;
  ChangeOrLeave([&] { gsl_initialize(count); },
                [&] {
                  return count == 3 && !mem_IsInitialized("mem") && !mem_IsInitialized("omu") &&
                         !omi_Singleton<gsl_Util>::Exists();
                });
  const cls_ClassRegistrar& classes =
      omi_Singleton<cls_MetadataRegistrar>::Instance().ClassRegistrar();
  const bool isStarted = count == 4 && mem_IsInitialized("mem") && mem_IsInitialized("omu") &&
                         omi_Singleton<gsl_Util>::Exists() && classes.ClassCount() == 12 &&
                         classes.FindClass(gsl_Plane::TypeId())->Attributes().size() == 7;
  gsl_finalize(count);
  return isStarted && count == 3 && !mem_IsInitialized("mem");
}

bool WritesAndReadsAPlane() {
  const gsl_RecordStore store = Written(gsl_Plane());
  return ReadBack<gsl_Plane>(store).Method() == FROM_POINT_VECTOR;
}

bool CallsAScriptObject() {
  gsl_TransformIntObj object(omu_Shortcut(), gsl_Matrix(), "text");
  const std::unique_ptr<omu_Primitive> result(object.CallMethod("matrix", omu_PrimTuple()));
  return static_cast<const omu_PrimTuple&>(*result).Count() == 12;
}

} // namespace

TEST(ColdStart, OfTheLibraryIsWholeOrNotAtAll) {
  EXPECT_GT(FailEachInFreshProcesses(&StartsAndStops), 12);
}

TEST(ColdStart, OfPersistenceFailsWell) {
  // A root that a visitor cannot end is ended by the call that reads the store.
  EXPECT_GT(FailEachInFreshProcesses(&WritesAndReadsAPlane, WithoutMemory::MayManage), 5);
}

TEST(ColdStart, OfScriptObjectsFailsWell) {
  EXPECT_GT(FailEachInFreshProcesses(&CallsAScriptObject), 5);
}

TEST(WarmStart, LosesNothing) {
  const auto startsAndForgets = [] {
    struct Forget {
      ~Forget() {
        omi_Singleton<cls_MetadataRegistrar>::Destroy();
        omi_Singleton<gsl_Util>::Destroy();
      }
    };
    const Forget whenDone;
    return StartsAndStops();
  };
  EXPECT_GT(FailEachAllocation("start", startsAndForgets), 12);
}

TEST(WarmStart, KeepsTheSettingsThatTheHostHadChanged) {
  omi_Singleton<gsl_Util>::Instance().linearTolerance = 0.25;
  int count = 0;
  {
    const FailingNth failure(0);
    EXPECT_THROW(gsl_initialize(count), std::bad_alloc);
  }
  EXPECT_EQ(omi_Singleton<gsl_Util>::Instance().linearTolerance, 0.25);
  omi_Singleton<gsl_Util>::Destroy();
}
