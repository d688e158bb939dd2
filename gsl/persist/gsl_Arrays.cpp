#include "cls_TypeAdapter.h"
#include "cls_xo1DArrayList.h"
#include "omu_xoObjVarray.h"

// These classes are instantiated and exported here and nowhere else.

template class omu_ObjVarray<gsl_Dot>;
template class omu_ObjVarray<gsl_Plane>;
template class omu_ObjVarray<gsl_StLine>;
template class omu_xoObjVarray<gsl_Dot>;
template class omu_xoObjVarray<gsl_Plane>;
template class omu_xoObjVarray<gsl_StLine>;
template class cls_TypeAdapter<omu_xoObjVarray<gsl_Dot>>;
template class cls_TypeAdapter<omu_xoObjVarray<gsl_Plane>>;
template class cls_TypeAdapter<omu_xoObjVarray<gsl_StLine>>;

template class cow_1DArray<gsl_ModelSegment>;
template class cow_1DArray<gsl_Point>;
template class cls_xo1DArrayList<gsl_ModelSegment>;
template class cls_xo1DArrayList<gsl_Point>;
