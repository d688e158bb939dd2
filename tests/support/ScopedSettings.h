#ifndef SCOPED_SETTINGS_H
#define SCOPED_SETTINGS_H

#include "gsl_Util.h"

/// Lets a test change the settings, and restores them at the end of the scope.
class ScopedSettings {
public:
  ScopedSettings() : m_before(*Get()) {}
  ~ScopedSettings() { *Get() = m_before; }
  ScopedSettings(const ScopedSettings&) = delete;
  ScopedSettings& operator=(const ScopedSettings&) = delete;

  gsl_Util* operator->() const { return Get(); }

private:
  static gsl_Util* Get() { return &omi_Singleton<gsl_Util>::Instance(); }

  const gsl_Util m_before;
};

#endif
