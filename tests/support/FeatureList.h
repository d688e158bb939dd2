#ifndef FEATURE_LIST_H
#define FEATURE_LIST_H

#include "ftr_FeatureList.h"

#include <cstdint>

/// A list of features that whoever looks into it does not survive.
inline const ftr_FeatureList* UnreadableList() {
  return reinterpret_cast<const ftr_FeatureList*>(std::uintptr_t{8});
}

#endif
