#ifndef GSL_INHERITANCE_CHECK_H
#define GSL_INHERITANCE_CHECK_H

#include "cls_MetadataRegistrar.h"

/// Returns whether `dynType` is `queried` or derives from it, according to the class registrar of
/// the process.
inline bool gsl_InheritanceCheck(unsigned int dynType, unsigned int queried) {
  const cls_ClassRegistrar& classes =
      omi_Singleton<cls_MetadataRegistrar>::Instance().ClassRegistrar();
  return classes.InheritanceCheck(dynType, queried);
}

#endif
