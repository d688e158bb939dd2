#ifndef GSL_SETTINGS_H
#define GSL_SETTINGS_H

#include "gsl_Util.h"

/// Returns the settings. A public operation fetches them once.
inline const gsl_Util& Settings() {
  return omi_Singleton<gsl_Util>::Instance();
}

#endif
