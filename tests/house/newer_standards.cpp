// Code that newer standards judge differently from C++17. ./scripts/check headers compiles it as
// C++20 and C++23, after every public header.

#include "gsl_BBox.h"
#include "gsl_TransformIntObj.h"
#include "omu_PrimEnum.h"
#include "omu_PrimTuple.h"
#include "omu_xoObjVarray.h"

// It is not defined, because nothing here runs.
extern const omu_PrimTuple& tuple;
extern const omu_PrimEnum<gsl_DotMethod, 1>& dotMethod;
extern const omu_PrimEnum<gsl_LineMethod, 1>& lineMethod;
extern const omu_PrimEnumBase& method;
extern const omu_Primitive& primitive;
extern const gsl_TransformIntObj& transform;
extern const omu_InterfaceObj& object;

template <class T>
bool Compares(const T& value) {
  return value == value && !(value != value);
}

template <class A, class B>
bool CompareEitherWay(const A& a, const B& b) {
  return a == b && b == a && !(a != b) && !(b != a);
}

bool CompareEverything(const gsl_Vector& v, const gsl_Point& p, const gsl_Matrix& m,
                       const gsl_BBox& box, const omu_ObjVarray<gsl_Dot>& dots) {
  return Compares(tuple) && Compares(dotMethod) && Compares(method) && Compares(primitive) &&
         CompareEitherWay(tuple, dotMethod) && CompareEitherWay(dotMethod, lineMethod) &&
         CompareEitherWay(dotMethod, method) && CompareEitherWay(tuple, primitive) &&
         CompareEitherWay(method, primitive) && (transform == transform) && (transform == object) &&
         (object == transform) && Compares(v) && Compares(p) && Compares(m) && Compares(box) &&
         Compares(p.uid) && Compares(gsl_Interval(0.0, 1.0)) && Compares(cow_String("text")) &&
         Compares(cls_xp1DArrayListUint()) && Compares(dots.begin());
}
