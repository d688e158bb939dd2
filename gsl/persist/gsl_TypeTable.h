#ifndef GSL_TYPE_TABLE_H
#define GSL_TYPE_TABLE_H

#include "typ_ArchCompTable.h"

/// The module's number and its type table. A type id has the number in the upper 16 bits and the
/// row in the lower 16 bits.
constexpr unsigned int gsl_kModuleNumber = 778;

// one-row-differs-in-its-second-word: only the second word of the vector is not 1.
constexpr typ_Entry gsl_kTypeTable[] = {{0, 1, nullptr},
                                        {7, 1, "gsl_Point"},
                                        {7, 1, "gsl_Matrix"},
                                        {7, 0x030A0001u, "gsl_Vector"},
                                        {7, 1, "gsl_Plane"},
                                        {7, 1, "gsl_Dot"},
                                        {7, 1, "gsl_StLine"},
                                        {7, 1, "gsl_BBox"},
                                        {7, 1, "gsl_Segment"},
                                        {7, 1, "gsl_ArrayPoint"},
                                        {7, 1, "gsl_LineArray"},
                                        {7, 1, "gsl_ModelSegment"},
                                        {7, 1, "gsl_ModelSegmentArray"},
                                        {7, 1, "gsl_PlaneArray"},
                                        {7, 1, "gsl_DotArray"}};

constexpr unsigned int gsl_kTypeTableRows = sizeof gsl_kTypeTable / sizeof gsl_kTypeTable[0];

#endif
