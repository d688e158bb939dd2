// The library over the recording allocator: queries request nothing, every block is released, and a
// request that is refused at any place ends with an exception or a null and leaves nothing behind.

#include "cls_ReadVisitor.h"
#include "cls_WriteVisitor.h"
#include "gsl_Matrix.h"
#include "gsl_ModelSegment.h"
#include "gsl_Module.h"
#include "gsl_Plane.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"
#include "gsl_TransformIntObj.h"
#include "omu_PrimEnum.h"
#include "omu_xoObjVarray.h"
#include "xh_Memory.h"

#include <cstdio>
#include <memory>
#include <new>

namespace {

int failures = 0;

void Check(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  ++failures;
}

void QueriesRequestNothing() {
  const gsl_Plane ground(gsl_Point(), gsl_Vector(0.0, 0.0, 1.0));
  const gsl_StLine axis(gsl_Point(), gsl_Vector(0.0, 0.0, 1.0));
  const gsl_Segment segment(gsl_Point(1.0, 0.0, 0.0), gsl_Point(4.0, 0.0, 0.0));
  const unsigned long before = xh_Memory::Requests();
  gsl_Point point(3.0, 4.0, 5.0);
  gsl_Point closest;
  const double sum =
      point.GetDistance(ground) + point.GetDistance(axis) + point.GetDistance(segment, closest);
  gsl_Matrix turn;
  turn.AxisRotation(axis.PointOn(), axis.Direction(), 1.0);
  point.Transform(turn);
  Check(xh_Memory::Requests() == before, "queries request no memory");
  Check(sum > 15.0, "the distances are 5, 5 and more than 5");
}

template <class T>
void Write(const cls_WriteVisitor& visitor, const void* object) {
  static_cast<const T*>(object)->DBWrite(visitor);
}

/// Makes, copies, saves and loads objects of the library.
void Work() {
  const gsl_Plane plane(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.0, 0.0, 1.0));
  const std::unique_ptr<gsl_Plane> copy(plane.Copy());
  omu_xoObjVarray<gsl_Dot> dots;
  for (int i = 0; i < 20; ++i) {
    auto dot = std::make_unique<gsl_Dot>(i, 0.0, 0.0);
    dots.add(dot.get());
    static_cast<void>(dot.release());
  }
  gsl_ModelSegment segment(gsl_Dot(1.0, 2.0, 3.0), gsl_Dot(4.0, 5.0, 6.0));
  const gsl_ModelSegment shared(segment);
  segment.Regenerate(nullptr);
  const gsl_TransformIntObj object(omu_Shortcut(cow_String("a path that is longer than 23 bytes")),
                                   gsl_Matrix(), cow_String("text"));
  const std::unique_ptr<gsl_TransformIntObj> otherObject(object.Copy());
  xh_Store store;
  store.Save(&Write<omu_xoObjVarray<gsl_Dot>>, &dots);
  store.Save(&Write<gsl_ModelSegment>, &shared);
  store.Save(&Write<gsl_Plane>, copy.get());
  store.Load(
      0,
      [](const cls_ReadVisitor& visitor, void*) {
        const omu_xoObjVarray<gsl_Dot> read(visitor, nullptr, nullptr);
        Check(read.Count() == 20, "all entries are read");
      },
      nullptr);
  store.Load(
      1, [](const cls_ReadVisitor& visitor, void*) { const gsl_ModelSegment read(visitor); },
      nullptr);
  store.Load(
      2, [](const cls_ReadVisitor& visitor, void*) { const gsl_Plane read(visitor); }, nullptr);
}

void EveryBlockIsReleased() {
  Work(); // What is made once stays: names of enumerations, the table of the registry.
  const long live = xh_Memory::LiveBlocks();
  const unsigned long requests = xh_Memory::Requests();
  Work();
  Check(xh_Memory::Requests() > requests + 100, "the work requests blocks of the host");
  Check(xh_Memory::LiveBlocks() == live, "the work releases every block");
}

void RefusedRequestsLeaveNothing() {
  const long live = xh_Memory::LiveBlocks();
  unsigned long refused = 0;
  bool done = false;
  while (!done) {
    xh_Memory::FailAfter(refused);
    try {
      Work();
      done = true;
    } catch (const std::bad_alloc&) {
      ++refused;
    }
    xh_Memory::StopFailing();
    if (xh_Memory::LiveBlocks() == live) continue;
    std::fprintf(stderr, "request %lu, refused, leaves %ld blocks\n", refused,
                 xh_Memory::LiveBlocks() - live);
    ++failures;
    return;
  }
  Check(refused > 100, "more than a hundred requests were refused in turn");
}

/// A start that is refused a request throws, and leaves what was before.
void RefusedStartsLeaveNothing() {
  int count = 0;
  gsl_initialize(count);
  gsl_finalize(count); // What is made once stays.
  const long live = xh_Memory::LiveBlocks();
  unsigned long refused = 0;
  for (bool done = false; !done;) {
    xh_Memory::FailAfter(refused);
    try {
      gsl_initialize(count);
      done = true;
    } catch (const std::bad_alloc&) {
      ++refused;
    }
    xh_Memory::StopFailing();
    if (done) gsl_finalize(count);
    if (count != 0) {
      Check(false, "a refused start takes its count back");
      return;
    }
  }
  Check(refused > 10, "more than ten requests of a start were refused in turn");
  Check(xh_Memory::LiveBlocks() == live, "starts release what they took");
}

} // namespace

int main() {
  RefusedStartsLeaveNothing();
  int count = 0;
  gsl_initialize(count);
  QueriesRequestNothing();
  EveryBlockIsReleased();
  RefusedRequestsLeaveNothing();
  gsl_finalize(count);
  return failures == 0 ? 0 : 1;
}
