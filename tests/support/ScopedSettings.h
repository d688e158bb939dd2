#ifndef SCOPED_SETTINGS_H
#define SCOPED_SETTINGS_H

#include "gsl_Util.h"

/// Restores the tolerances of the process when it goes out of scope.
class ScopedSettings {
public:
  ScopedSettings()
      : linear((*this)->linearTolerance), zero((*this)->zeroTolerance),
        cosine((*this)->cosineTolerance) {}
  ~ScopedSettings() {
    (*this)->linearTolerance = linear;
    (*this)->zeroTolerance = zero;
    (*this)->cosineTolerance = cosine;
  }
  ScopedSettings(const ScopedSettings&) = delete;
  ScopedSettings& operator=(const ScopedSettings&) = delete;

  gsl_Util* operator->() const { return &omi_Singleton<gsl_Util>::Instance(); }

private:
  double linear;
  double zero;
  double cosine;
};

#endif
