#ifndef FTR_FEATURE_LIST_H
#define FTR_FEATURE_LIST_H

/// The host's list of features. This library passes pointers to it on, and never reads it.
class ftr_FeatureList;

#endif
