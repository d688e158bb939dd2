#ifndef FAILING_ALLOCATION_H
#define FAILING_ALLOCATION_H

/// While an object of this class lives, allocations of this thread that may return null do so after
/// the first `successes` allocations. Programs that use it link FailingAllocation.cpp, which
/// replaces the global allocation operators.
class FailingAllocation {
public:
  explicit FailingAllocation(int successes);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  /// Returns how many allocations were refused so far.
  int Refused() const;
};

#endif
