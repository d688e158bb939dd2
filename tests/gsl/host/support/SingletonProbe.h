#ifndef TESTS_SINGLETON_PROBE_H
#define TESTS_SINGLETON_PROBE_H

#include "omi_Singleton.h"

/// What a library of the host does with a class of its own: instantiated once, by the first of two
/// shared libraries, and reached from both.
#define PROBE_API __attribute__((visibility("default")))

class PROBE_API SingletonProbe {
public:
  SingletonProbe();
  ~SingletonProbe();

  int value = 0;
  /// What the constructor found when it reached for the instance.
  SingletonProbe* seenByConstructor = nullptr;

  static int Constructed();
  static int Destroyed();
};

extern template class PROBE_API omi_Singleton<SingletonProbe>;

/// The same with nothing but a header: a static of an inline function.
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
