#ifndef FAIL_EACH_ALLOCATION_H
#define FAIL_EACH_ALLOCATION_H

#include "HostAllocator.h"

#include <gtest/gtest.h>

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
};

/// Runs an operation again and again. In the n-th run the n-th allocation fails, until a run needs
/// fewer. After each run there must be as many blocks as before, and the operation must succeed
/// with all memory.
///
/// `operation` returns whether its result is right. Returns false, or throws std::bad_alloc,
/// without memory. Whatever else it throws fails the test.
/// `isUnchanged` returns whether what the operation must not change is as before.
///
/// Returns the number of allocations of the operation, or -1 after a fault.
template <class Operation, class IsUnchanged>
long FailEachAllocation(const char* what, const Operation& operation,
                        const IsUnchanged& isUnchanged, const Failing& failing = {}) {
  bool isGood = true;
  const auto check = [&isGood](bool condition) { return isGood = condition && isGood; };
  EXPECT_TRUE(check(Attempt(operation))) << what << ", with all memory";
  for (long n = 0; isGood; ++n) {
    const std::string run = what + (", after " + std::to_string(n) + " allocations");
    const long live = LiveBlocks();
    const long around = AllocationsAround();
    bool succeeded = false;
    bool failed = false;
    {
      const FailingNth failure(n, failing.which);
      succeeded = Attempt(operation);
      failed = failure.HasFailed();
    }
    EXPECT_TRUE(check(LiveBlocks() == live))
        << run << " loses " << LiveBlocks() - live << " blocks";
    if (failing.which == Allocations::OfTheHost) {
      EXPECT_TRUE(check(AllocationsAround() == around))
          << run << ", takes memory around the host: " << LastAllocationAround();
    }
    EXPECT_TRUE(check(isUnchanged())) << run << " changes something";
    if (!failed) {
      EXPECT_TRUE(check(succeeded)) << run;
      return isGood ? n : -1;
    }
    if (failing.without == WithoutMemory::Refuses) {
      EXPECT_TRUE(check(!succeeded)) << run << " hides that the next failed";
    }
    EXPECT_TRUE(check(Attempt(operation))) << run << " fails for good";
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
