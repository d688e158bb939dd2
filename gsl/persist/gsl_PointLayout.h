#ifndef GSL_POINT_LAYOUT_H
#define GSL_POINT_LAYOUT_H

#include "gsl_Point.h"
#include "gsl_RecordLayout.h"

template <>
struct gsl_RecordLayout<gsl_Point> {
  using Stored = gsl_Point;
  static constexpr gsl_RecordAdapter kAdapter = {"gsl_Point", 203, true};
  static constexpr std::tuple kFields = {gsl_Field(-1, "_x", &gsl_Point::x),
                                         gsl_Field(-1, "_y", &gsl_Point::y),
                                         gsl_Field(-1, "_z", &gsl_Point::z)};
};

/// A point is read where it is: a copy of what was just written would wait for it.
template <>
struct gsl_FieldKind<gsl_Point> : gsl_ObjectKind<gsl_Point> {
  static void Read(const cls_ReadVisitor& visitor, const cls_FieldHandle& field, gsl_Point& value) {
    const cls_ReadVisitor own(visitor, field);
    value.uid = own.GetUid();
    gsl_ReadRecord<gsl_Point>(own, value);
  }
  template <class Run>
  [[gnu::always_inline]] static void Take(Run& run, const cls_FieldHandle& field,
                                          gsl_Point& value) {
    gsl_TakeObject<gsl_Point>(run, value.uid, value,
                              [&](const cls_ReadVisitor& visitor) { Read(visitor, field, value); });
  }
};

#endif
