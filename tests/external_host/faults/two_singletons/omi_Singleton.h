#ifndef OMI_SINGLETON_H
#define OMI_SINGLETON_H

/// The mistake that docs/host.md warns of: each library has an object of its own.
template <class T>
class __attribute__((visibility("hidden"))) omi_Singleton {
public:
  [[gnu::always_inline]] static T& Instance() {
    static T object;
    return object;
  }
  static bool Exists() { return true; }
};

#endif
