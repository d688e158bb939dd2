#include "SingletonProbe.h"

template class omi_Singleton<SingletonProbe>;

namespace {
int constructed = 0;
int destroyed = 0;
} // namespace

SingletonProbe::SingletonProbe() {
  ++constructed;
  seenByConstructor = &omi_Singleton<SingletonProbe>::Instance();
}

SingletonProbe::~SingletonProbe() {
  ++destroyed;
}

int SingletonProbe::Constructed() {
  return constructed;
}

int SingletonProbe::Destroyed() {
  return destroyed;
}

ProbeAddresses AddressesInFirstLibrary() {
  return {&omi_Singleton<SingletonProbe>::Instance(),
          &HeaderOnlyStatic<HeaderOnlyProbe>::Instance()};
}
