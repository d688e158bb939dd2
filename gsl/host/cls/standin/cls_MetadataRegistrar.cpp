#include "cls_MetadataRegistrar.h"

template class omi_Singleton<cls_MetadataRegistrar>;

namespace {

/// Restores the flags, also when the registration of a class throws.
class FlagsForNewClasses {
public:
  FlagsForNewClasses(int& place, int flags) : target(place), previous(place) { target = flags; }
  ~FlagsForNewClasses() { target = previous; }
  FlagsForNewClasses(const FlagsForNewClasses&) = delete;
  FlagsForNewClasses& operator=(const FlagsForNewClasses&) = delete;

private:
  int& target;
  int previous;
};

} // namespace

void cls_MetadataRegistrar::initClassMetadata(InitializeMetadata function, int flags) {
  const FlagsForNewClasses scope(registrar.flagsOfNewClasses, flags);
  function(registrar);
}
