#include "cls_MetadataRegistrar.h"

template class omi_Singleton<cls_MetadataRegistrar>;

namespace {

/// Restores the flags when the registration of a class ends or throws.
class FlagsForNewClasses {
public:
  FlagsForNewClasses(int& place, int flags) : m_target(place), m_previous(place) {
    m_target = flags;
  }
  ~FlagsForNewClasses() { m_target = m_previous; }
  FlagsForNewClasses(const FlagsForNewClasses&) = delete;
  FlagsForNewClasses& operator=(const FlagsForNewClasses&) = delete;

private:
  int& m_target;
  int m_previous;
};

} // namespace

void cls_MetadataRegistrar::initClassMetadata(InitializeMetadata function, int flags) {
  const FlagsForNewClasses scope(m_registrar.m_flagsOfNewClasses, flags);
  function(m_registrar);
}
