#include "omu_PrimEnum.h"

namespace {

constexpr omu_PrimEnumEntry kDirMethods[] = {
    {"FROM_POINT_VECTOR", FROM_POINT_VECTOR}, {"FROM_FACE", FROM_FACE},
    {"FROM_DATUM_PLANE", FROM_DATUM_PLANE},   {"FROM_ELEM_FACE", FROM_ELEM_FACE},
    {"PLANE_INVALID", PLANE_INVALID},         {nullptr, 0}};

// dot-names-alone-carry-the-prefix: they are stored so.
constexpr omu_PrimEnumEntry kDotMethods[] = {
    {"gsl_FROM_POINT", gsl_FROM_POINT},
    {"gsl_FROM_VERTEX", gsl_FROM_VERTEX},
    {"gsl_FROM_DATUM_POINT", gsl_FROM_DATUM_POINT},
    {"gsl_FROM_EDGE_PARAM", gsl_FROM_EDGE_PARAM},
    {"gsl_FROM_FACE_DIM", gsl_FROM_FACE_DIM},
    {"gsl_FROM_EDGE_VTX", gsl_FROM_EDGE_VTX},
    {"gsl_FROM_FACE_VTX", gsl_FROM_FACE_VTX},
    {"gsl_FROM_IP_VTX_ONTO_EDGE", gsl_FROM_IP_VTX_ONTO_EDGE},
    {"gsl_FROM_IP_CENTER_OF_EDGE", gsl_FROM_IP_CENTER_OF_EDGE},
    {"gsl_FROM_IP_MIDPT_OF_EDGE", gsl_FROM_IP_MIDPT_OF_EDGE},
    {"gsl_FROM_NODE", gsl_FROM_NODE},
    {"gsl_DOT_INVALID", gsl_DOT_INVALID},
    {"gsl_FROM_DATUM_CSYS_ORIGIN", gsl_FROM_DATUM_CSYS_ORIGIN},
    {nullptr, 0}};

constexpr omu_PrimEnumEntry kLineMethods[] = {{"FROM_PNT_VECTOR", FROM_PNT_VECTOR},
                                              {"FROM_EDGE", FROM_EDGE},
                                              {"FROM_REVFACE", FROM_REVFACE},
                                              {"FROM_DATUM_AXIS", FROM_DATUM_AXIS},
                                              {"FROM_ELEM_EDGE", FROM_ELEM_EDGE},
                                              {"FROM_PNT_PNT", FROM_PNT_PNT},
                                              {"STLINE_INVALID", STLINE_INVALID},
                                              {"FROM_DATUM_CSYS", FROM_DATUM_CSYS},
                                              {nullptr, 0}};

} // namespace

const omu_PrimEnumEntry* omu_PrimEnumTable<gsl_DirMethod>::Entries() {
  return kDirMethods;
}

const omu_PrimEnumEntry* omu_PrimEnumTable<gsl_DotMethod>::Entries() {
  return kDotMethods;
}

const omu_PrimEnumEntry* omu_PrimEnumTable<gsl_LineMethod>::Entries() {
  return kLineMethods;
}

template class omu_PrimEnum<gsl_DirMethod, 1>;
template class omu_PrimEnum<gsl_DotMethod, 1>;
template class omu_PrimEnum<gsl_LineMethod, 1>;

template cow_String atr<gsl_DirMethod, const char*>(const char*, gsl_DirMethod, const char*);
template cow_String atr<gsl_DotMethod, const char*>(const char*, gsl_DotMethod, const char*);
template cow_String atr<gsl_LineMethod, const char*>(const char*, gsl_LineMethod, const char*);
