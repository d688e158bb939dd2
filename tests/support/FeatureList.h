#ifndef FEATURE_LIST_H
#define FEATURE_LIST_H

#include "ftr_FeatureList.h"

#include <cstdint>

/// Returns a list of features that ends the program when a function reads it.
inline const ftr_FeatureList* UnreadableList() {
  return reinterpret_cast<const ftr_FeatureList*>(std::uintptr_t{8});
}

#endif
