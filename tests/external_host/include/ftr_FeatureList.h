#ifndef FTR_FEATURE_LIST_H
#define FTR_FEATURE_LIST_H

class ftr_FeatureList;

#endif
