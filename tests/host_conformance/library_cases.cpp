// The library over the host: what it answers, prints and shows to scripts.

#include "Conformance.h"
#include "HostAdapter.h"

#include <gsl_BBox.h>
#include <gsl_Matrix.h>
#include <gsl_Plane.h>
#include <gsl_Segment.h>
#include <gsl_StLine.h>
#include <gsl_TransformIntObj.h>
#include <gsl_TriTriMinDirectionalDist.h>
#include <gsl_Util.h>
#include <gsl_Version.h>

#include <gsl_FloatingPoint.h>
#include <gsl_ModelSegment.h>
#include <omi_gettimecounter.h>

namespace {

void Versions() {
  const char* const fault = gsl_CheckFloatingPoint();
  REQUIRE_TEXT(fault != nullptr ? fault : "", "");
  REQUIRE(gsl_LibraryVersion() == GSL_VERSION_NUMBER);
}

void Settings() {
  const double before = omi_gettimecounter();
  const Started started;
  const gsl_Util& settings = omi_Singleton<gsl_Util>::Instance();
  REQUIRE(settings.linearTolerance == 1e-6 && settings.zeroTolerance == 1e-12);
  REQUIRE(settings.cosineTolerance == 1e-10 && settings.coarseTolerance == 1e-4);
  REQUIRE(settings.startTime >= before && settings.startTime <= omi_gettimecounter());
}

template <class T>
std::string Printed(const T& object, int indent) {
  const std::unique_ptr<host_adapter::Output> output = host_adapter::MakeOutput();
  object.Print(output->Stream(), indent);
  // The operation itself has flushed.
  return output->Delivered();
}

void Printing() {
  REQUIRE_TEXT(Printed(gsl_Point(1.0 / 3.0, -2.0, 1e20), 2),
               "  x:\t0.333333333333333\ty:\t-2\tz:\t1e+20\n");
  REQUIRE_TEXT(Printed(gsl_Vector(3.0, 0.0, 4.0), 1), " magnitude:\t5\n x:\t3\ty:\t0\tz:\t4\n");
  gsl_BBox box;
  box.Add(gsl_Point(1.0, 2.0, 3.0));
  box.Add(gsl_Point(4.0, 5.0, 6.0));
  REQUIRE_TEXT(Printed(box, 0), "x:\t1\ty:\t2\tz:\t3\nx:\t4\ty:\t5\tz:\t6\n");
}

void Identities() {
  const Started started;
  const gsl_Point a(1.0, 2.0, 3.0);
  const gsl_Point b(4.0, 6.0, 3.0);
  REQUIRE(!(a.uid == b.uid));
  gsl_Point copy(a);
  REQUIRE(copy.uid == a.uid);
  copy = b;
  REQUIRE(copy.uid == b.uid && copy.y == 6.0);
  REQUIRE(!((a + gsl_Vector(1.0, 0.0, 0.0)).uid == a.uid));
  gsl_Point closest;
  const gsl_Segment segment(a, b);
  REQUIRE(gsl_Point(7.0, 10.0, 3.0).GetDistance(segment, closest) == 5.0);
  REQUIRE(closest.uid == b.uid && closest.x == 4.0);
}

void Queries() {
  const Started started;
  REQUIRE(gsl_Point(1.0, 2.0, 3.0).GetDistance(gsl_Point(4.0, 6.0, 3.0)) == 5.0);
  const gsl_Plane ground(gsl_Point(), gsl_Vector(0.0, 0.0, 2.0));
  REQUIRE(gsl_Point(5.0, 5.0, -3.0).GetSignedDistance(ground) == -3.0);
  const gsl_StLine axis(gsl_Point(), gsl_Vector(0.0, 0.0, 1.0));
  REQUIRE(gsl_Point(3.0, 4.0, 9.0).GetDistance(axis) == 5.0);
  gsl_Matrix lift;
  lift.SetTranslation(gsl_Vector(0.0, 0.0, 2.0));
  gsl_Point moved(1.0, 2.0, 3.0);
  moved.Transform(lift);
  REQUIRE(moved.x == 1.0 && moved.y == 2.0 && moved.z == 5.0);
}

void Extents() {
  gsl_BBox box;
  box.Add(gsl_Point(-1.0, -2.0, -2.0));
  box.Add(gsl_Point(1.0, 2.0, 2.0));
  const std::vector<float> expected = {0.0f, 0.0f, 0.0f, 1.0f, 3.0f};
  REQUIRE(host_adapter::NumbersOf(box.GetExtent()) == expected);
  REQUIRE(host_adapter::NumbersOf(gsl_BBox().GetExtent())[4] == -0.5f);
}

void Scripts() {
  gsl_Matrix lift;
  lift.SetTranslation(gsl_Vector(7.0, 8.0, 9.0));
  const omu_Shortcut place(cow_String("mdb.models['A']"));
  gsl_TransformIntObj object(place, lift, cow_String("text"));
  REQUIRE_TEXT(host_adapter::ScriptType(object), "Transform");
  const std::unique_ptr<gsl_TransformIntObj> copy(object.Copy());
  const std::unique_ptr<omu_Primitive> result(host_adapter::CallMethod(*copy, "matrix"));
  const std::vector<double> expected = {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0, 7.0, 8.0, 9.0};
  REQUIRE(result != nullptr && host_adapter::NumbersOf(*result) == expected);
  REQUIRE_TEXT(copy->GetText().CStr(), "text");
  bool refused = false;
  try {
    const std::unique_ptr<omu_Primitive> none(host_adapter::CallMethod(object, "no_such_method"));
  } catch (const nex_Exception&) {
    refused = true;
  }
  REQUIRE(refused);
}

void PrimitivesOfSegments() {
  const gsl_ModelSegment segment(gsl_Dot(0.0, 0.0, 0.0), gsl_Dot(3.0, 0.0, 4.0));
  const std::unique_ptr<omu_Primitive> direction(omu_ReturnPrim(segment));
  const std::vector<double> expected = {0.6, 0.0, 0.8};
  REQUIRE(host_adapter::NumbersOf(*direction) == expected);
  REQUIRE(segment.Length() == 5.0);
  gsl_ModelSegment copy(segment);
  copy.Regenerate(nullptr);
  REQUIRE(copy.Point1().Uid() == segment.Point1().Uid());
}

} // namespace

std::vector<Case> LibraryCases() {
  return {
      {"library", "the library is of the version of its headers, and floating point is exact",
       &Versions},
      {"settings", "the settings begin with their defaults and the time of the start", &Settings},
      {"printing", "Print writes its exact text and flushes each line", &Printing},
      {"identity", "points keep and take over identities", &Identities},
      {"queries", "queries answer as they do over every host", &Queries},
      {"extent", "the bounding sphere of a box reaches the display library", &Extents},
      {"script", "a script sees a transform and calls its method", &Scripts},
      {"segment_primitive", "a model segment becomes a tuple, and its ends regenerate",
       &PrimitivesOfSegments},
  };
}
