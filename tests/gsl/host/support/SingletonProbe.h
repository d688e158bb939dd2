#ifndef TESTS_SINGLETON_PROBE_H
#define TESTS_SINGLETON_PROBE_H

#include "omi_Singleton.h"

/// A class of a host library. The first of two shared libraries instantiates it, and both reach it.
#define PROBE_API __attribute__((visibility("default")))

class PROBE_API SingletonProbe {
public:
  SingletonProbe();
  ~SingletonProbe();

  int value = 0;
  /// The instance that the constructor found.
  SingletonProbe* seenByConstructor = nullptr;

  static int Constructed();
  static int Destroyed();
};

extern template class PROBE_API omi_Singleton<SingletonProbe>;

/// The same class without a library: a static variable of an inline function.
template <class T>
struct HeaderOnlyStatic {
  static T& Instance() {
    static T object;
    return object;
  }
};

struct HeaderOnlyProbe {
  int value = 0;
};

struct ProbeAddresses {
  const void* singleton;
  const void* headerOnly;
};

PROBE_API ProbeAddresses AddressesInFirstLibrary();
PROBE_API ProbeAddresses AddressesInSecondLibrary();

/// Each raises one exception of the host's family through its Throw.
PROBE_API void RaiseAssertInSecondLibrary();
PROBE_API void RaiseCommandInSecondLibrary();
PROBE_API void RaisePlainInSecondLibrary();

#endif
