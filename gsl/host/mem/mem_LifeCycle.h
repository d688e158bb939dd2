#ifndef MEM_LIFE_CYCLE_H
#define MEM_LIFE_CYCLE_H

#include "mem_Export.h"

/// Counts the starts and stops of one host library. Both need the process's one starting thread.
class GSL_HOST_API mem_LifeCycle {
public:
  /// Receives every start and stop: the library's prefix, true for a start, and the host's count.
  using Listener = void (*)(const char* prefix, bool isStart, int count);

  /// `libraryPrefix` is a literal.
  constexpr explicit mem_LifeCycle(const char* libraryPrefix) : prefix(libraryPrefix), starts(0) {}

  void Initialize(int count);
  /// Ends one start. A stop without a start changes nothing.
  void Finalize(int count);
  [[nodiscard]] bool IsInitialized() const { return starts > 0; }
  const char* Prefix() const { return prefix; }

  /// Replaces the process's listener; null for none. Returns the previous listener.
  static Listener SetListener(Listener listener);

private:
  const char* prefix;
  int starts;
};

#endif
