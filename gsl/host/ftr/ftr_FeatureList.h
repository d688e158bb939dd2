#ifndef FTR_FEATURE_LIST_H
#define FTR_FEATURE_LIST_H

/// The host's list of features; this library passes pointers to it on and never looks inside.
class ftr_FeatureList;

#endif
