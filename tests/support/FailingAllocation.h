#ifndef FAILING_ALLOCATION_H
#define FAILING_ALLOCATION_H

/// While it lives, the allocations of this thread that may answer null do so after the first
/// `successes` of them. Programs that use it link FailingAllocation.cpp, which replaces the global
/// allocation operators.
class FailingAllocation {
public:
  explicit FailingAllocation(int successes);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  /// How many were refused so far.
  int Refused() const;
};

#endif
