#ifndef ONE_FAILING_ALLOCATION_H
#define ONE_FAILING_ALLOCATION_H

/// While an object of this class lives, one allocation of this thread fails: the one after the
/// first `successes` allocations. Programs that use it link OneFailingAllocation.cpp, which
/// replaces malloc and its family. Under a sanitizer it replaces operator new alone.
class OneFailingAllocation {
public:
  explicit OneFailingAllocation(long successes);
  ~OneFailingAllocation();
  OneFailingAllocation(const OneFailingAllocation&) = delete;
  OneFailingAllocation& operator=(const OneFailingAllocation&) = delete;

  [[nodiscard]] bool HasFailed() const;
};

#endif
