#ifndef TESTS_ALLOCATION_COUNTER_H
#define TESTS_ALLOCATION_COUNTER_H

/// Returns how often the process has allocated so far, by operator new or by malloc and its family,
/// in any library. Programs that use it link AllocationCounter.cpp.
long AllocationCount();

#endif
