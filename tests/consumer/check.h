#ifndef CONSUMER_CHECK_H
#define CONSUMER_CHECK_H

#include <cstdio>
#include <cstdlib>

/// Ends the program with status 1 and prints the condition that failed.
inline void Check(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::exit(1);
}

#endif
