#ifndef FAIL_EACH_ALLOCATION_H
#define FAIL_EACH_ALLOCATION_H

#include "HostAllocator.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <string>

/// Returns what the operation returns, or false when memory ends it.
template <class Operation>
bool Attempt(const Operation& operation) {
  try {
    return operation();
  } catch (const std::bad_alloc&) {
    return false;
  }
}

/// Whether an operation may succeed although an allocation failed.
enum class WithoutMemory { Refuses, MayManage };

/// How FailEachAllocation fails an operation.
struct Failing {
  WithoutMemory without = WithoutMemory::Refuses;
  Allocations which = Allocations::OfTheHost;
  /// So many allocations fail each in their turn, and afterwards one in `stride`.
  long all = std::numeric_limits<long>::max();
  long stride = 1;
};

/// What one run of an operation did.
struct FailedRun {
  bool succeeded = false;
  bool failed = false; ///< an allocation failed
  long lost = 0;       ///< blocks
  long around = 0;     ///< allocations that the host did not see
};

template <class Operation>
FailedRun RunWithFailure(const Operation& operation, long n, Allocations which) {
  FailedRun run;
  const long live = LiveBlocks();
  const long around = AllocationsAround();
  {
    const FailingNth failure(n, which);
    run.succeeded = Attempt(operation);
    run.failed = failure.HasFailed();
  }
  run.lost = LiveBlocks() - live;
  run.around = AllocationsAround() - around;
  return run;
}

/// Runs an operation again and again. In the n-th run the n-th allocation fails, until a run needs
/// fewer. After each run there must be as many blocks as before, and the operation must succeed
/// with all memory.
///
/// `operation` returns whether its result is right. Returns false, or throws std::bad_alloc,
/// without memory. Whatever else it throws fails the test.
/// `isUnchanged` returns whether what the operation must not change is as before. It is called
/// after every run, and may undo what the operation is for.
///
/// Returns the number of allocations of the operation, up to the stride, or -1 after a fault.
template <class Operation, class IsUnchanged>
long FailEachAllocation(const char* what, const Operation& operation,
                        const IsUnchanged& isUnchanged, const Failing& failing = {}) {
  bool isGood = true;
  const auto check = [&isGood](bool condition) {
    if (!condition) isGood = false;
    return condition;
  };
  EXPECT_TRUE(check(Attempt(operation))) << what << ", with all memory";
  EXPECT_TRUE(check(isUnchanged())) << what << ", changes something";
  for (long n = 0; isGood; n += n < failing.all ? 1 : failing.stride) {
    const std::string when = what + (", after " + std::to_string(n) + " allocations");
    FailedRun run = RunWithFailure(operation, n, failing.which);
    EXPECT_TRUE(check(isUnchanged())) << when << ", changes something";
    if (run.lost != 0) {
      // The system makes some blocks at the first exception of their kind, and keeps them.
      run.lost = RunWithFailure(operation, n, failing.which).lost;
      EXPECT_TRUE(check(isUnchanged())) << when << ", changes something";
    }
    EXPECT_TRUE(check(run.lost == 0)) << when << ", loses " << run.lost << " blocks";
    if (failing.which == Allocations::OfTheHost) {
      EXPECT_TRUE(check(run.around == 0))
          << when << ", takes memory around the host: " << LastAllocationAround();
    }
    if (!run.failed) {
      EXPECT_TRUE(check(run.succeeded)) << when;
      return isGood ? n : -1;
    }
    if (failing.without == WithoutMemory::Refuses) {
      EXPECT_TRUE(check(!run.succeeded)) << when << ", hides that the next failed";
    }
    EXPECT_TRUE(check(Attempt(operation))) << when << ", fails for good";
    EXPECT_TRUE(check(isUnchanged())) << when << ", changes something afterwards";
  }
  return -1;
}

/// Does the same for an operation that has nothing to change.
template <class Operation>
long FailEachAllocation(const char* what, const Operation& operation, const Failing& failing = {}) {
  return FailEachAllocation(
      what, operation, [] { return true; }, failing);
}

/// Changes an object. When memory ends the change, the object must be as it was.
template <class Change, class IsAsBefore>
void ChangeOrLeave(const Change& change, const IsAsBefore& isAsBefore) {
  try {
    change();
  } catch (const std::bad_alloc&) {
    EXPECT_TRUE(isAsBefore()) << "half changed";
    throw;
  }
}

#endif
