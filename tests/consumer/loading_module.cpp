// A module that a host loads at run time. It starts the library, saves and loads records through
// the registered classes, and stops the library.

#include <cls_ReadVisitor.h>
#include <cls_WriteVisitor.h>
#include <gsl_Module.h>
#include <gsl_Plane.h>
#include <gsl_RecordStore.h>
#include <omu_xoObjVarray.h>

namespace {

const char* SaveAndLoad() {
  omu_xoObjVarray<gsl_Plane> planes;
  planes.Add(new gsl_Plane(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.0, 0.0, 1.0)));
  gsl_RecordStore store;
  {
    cls_Save save(store);
    planes.DBWrite(cls_WriteVisitor(save));
  }
  cls_Load load(store);
  // The registrar makes each entry through the adapter of its class.
  const omu_xoObjVarray<gsl_Plane> read(cls_ReadVisitor(load, 0), nullptr, nullptr);
  if (read.Count() != 1) return "the array has another length";
  if (!(read[0]->PointOn() == planes[0]->PointOn())) return "the plane has another point";
  if (read[0]->PointOn().uid != planes[0]->PointOn().uid) return "the point is another one";
  return nullptr;
}

} // namespace

/// Returns null when all is well, else a text that says what is wrong.
extern "C" __attribute__((visibility("default"))) const char* UseGeometry() {
  int count = 0;
  gsl_initialize(count);
  const char* const wrong = SaveAndLoad();
  gsl_finalize(count);
  return wrong != nullptr || count == 0 ? wrong : "the count of started libraries is not 0";
}
