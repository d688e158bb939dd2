#ifndef TESTS_ALLOCATION_COUNTER_H
#define TESTS_ALLOCATION_COUNTER_H

/// How often the process has allocated so far, by operator new or by malloc and its family, in any
/// library. Link AllocationCounter.cpp into the program.
long AllocationCount();

#endif
