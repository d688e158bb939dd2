#ifndef TESTS_SETTINGS_GUARD_H
#define TESTS_SETTINGS_GUARD_H

#include "gsl_Util.h"

/// The settings, to be changed freely: what they were comes back at the end of the scope.
class SettingsGuard {
public:
  SettingsGuard()
      : linear(Get().linearTolerance), zero(Get().zeroTolerance), cosine(Get().cosineTolerance),
        coarse(Get().coarseTolerance), factor(Get().displayFactor) {}
  SettingsGuard(const SettingsGuard&) = delete;
  SettingsGuard& operator=(const SettingsGuard&) = delete;
  ~SettingsGuard() {
    Get().linearTolerance = linear;
    Get().zeroTolerance = zero;
    Get().cosineTolerance = cosine;
    Get().coarseTolerance = coarse;
    Get().displayFactor = factor;
  }

  gsl_Util* operator->() const { return &Get(); }

private:
  static gsl_Util& Get() { return omi_Singleton<gsl_Util>::Instance(); }

  double linear, zero, cosine, coarse, factor;
};

#endif
