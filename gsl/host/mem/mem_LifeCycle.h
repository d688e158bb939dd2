#ifndef MEM_LIFE_CYCLE_H
#define MEM_LIFE_CYCLE_H

#include "mem_Export.h"

/// Counts the starts and stops of one host library. Both need the process's one starting thread.
class GSL_HOST_API mem_LifeCycle {
public:
  /// Receives every start and stop: the library's prefix, true for a start, and the host's count.
  using Listener = void (*)(const char* prefix, bool isStart, int count);

  /// `libraryPrefix` is a literal.
  constexpr explicit mem_LifeCycle(const char* libraryPrefix)
      : m_prefix(libraryPrefix), m_starts(0) {}

  /// Adds one start.
  void Initialize(int count);
  /// Ends one start. A stop without a start changes nothing.
  void Finalize(int count);
  /// Returns whether the module is started.
  [[nodiscard]] bool IsInitialized() const { return m_starts > 0; }
  const char* Prefix() const { return m_prefix; }

  /// Replaces the listener of the process. Null removes it. Returns the previous listener.
  static Listener SetListener(Listener listener);

private:
  const char* m_prefix;
  int m_starts;
};

#endif
