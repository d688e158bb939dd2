// Writing and reading the persistent classes through the host's visitors.

#include "Conformance.h"
#include "HostAdapter.h"

#include <cls_RecordException.h>
#include <cls_xo1DArrayList.h>
#include <cstring>
#include <gsl_BBox.h>
#include <gsl_Matrix.h>
#include <gsl_ModelSegment.h>
#include <gsl_PersistentMatrix.h>
#include <gsl_PersistentVector.h>
#include <gsl_Segment.h>
#include <omu_PrimEnum.h>
#include <omu_ValueErrorException.h>
#include <omu_xoObjVarray.h>
#include <type_traits>

namespace {

using host_adapter::Store;

/// Saves the objects as roots of one save, and reads them in one load.
template <class T>
void Save(Store& store, const T& object) {
  store.Save([&](const cls_WriteVisitor& visitor) { object.DBWrite(visitor); });
}

template <class T>
std::unique_ptr<T> Load(Store& store, std::size_t root) {
  std::unique_ptr<T> object;
  store.Load(root, [&](const cls_ReadVisitor& visitor) {
    if constexpr (std::is_constructible_v<T, const cls_ReadVisitor&>) {
      object = std::make_unique<T>(visitor);
    } else if constexpr (std::is_constructible_v<T, const cls_ReadVisitor&, const cls_Uid&>) {
      object = std::make_unique<T>(visitor, visitor.GetUid());
    } else {
      object = std::make_unique<T>(visitor, nullptr, nullptr);
    }
  });
  return object;
}

template <class T>
std::unique_ptr<T> RoundTrip(const T& object) {
  const std::unique_ptr<Store> store = host_adapter::MakeStore();
  Save(*store, object);
  return Load<T>(*store, 0);
}

/// Returns whether two numbers have the same bits. Zeros of both signs are equal and differ here.
bool SameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

bool Same(const gsl_Point& a, const gsl_Point& b) {
  return SameBits(a.x, b.x) && SameBits(a.y, b.y) && SameBits(a.z, b.z) && a.uid == b.uid;
}

bool Same(const gsl_Vector& a, const gsl_Vector& b) {
  return SameBits(a.x, b.x) && SameBits(a.y, b.y) && SameBits(a.z, b.z) &&
         SameBits(a.magnitude, b.magnitude);
}

bool IsZero(const gsl_Point& p) {
  return p.x == 0.0 && p.y == 0.0 && p.z == 0.0 && p.uid == cls_Uid();
}

void Values() {
  const Started started;
  const gsl_Point point(0.1, -0.0, 1e308);
  REQUIRE(Same(*RoundTrip(point), point));
  gsl_Vector odd(1.0, 2.0, 2.0);
  odd[0] = 5.0;
  const gsl_PersistentVector vector(odd);
  const std::unique_ptr<gsl_PersistentVector> readVector = RoundTrip(vector);
  REQUIRE(Same(readVector->Vector(), odd) && readVector->Vector().magnitude == 3.0);
  REQUIRE(readVector->Uid() == vector.Uid());
  const gsl_Segment segment(gsl_Point(1.0, 2.0, 3.0), gsl_Point(4.0, 5.0, 6.0));
  const std::unique_ptr<gsl_Segment> readSegment = RoundTrip(segment);
  REQUIRE(Same(readSegment->Point1(), segment.Point1()));
  REQUIRE(Same(readSegment->Point2(), segment.Point2()));
  REQUIRE(readSegment->Uid() == segment.Uid());
  gsl_BBox box;
  box.Add(gsl_Point(-1.0, -2.0, -3.0));
  box.Add(gsl_Point(1.0, 2.0, 3.0));
  const std::unique_ptr<gsl_BBox> readBox = RoundTrip(box);
  REQUIRE(Same(readBox->min, box.min) && Same(readBox->max, box.max));
  REQUIRE(readBox->IsEmpty() == box.IsEmpty() && RoundTrip(gsl_BBox())->IsEmpty());
}

void Matrices() {
  const Started started;
  gsl_Matrix transform;
  transform.SetTranslation(gsl_Vector(1.0, -2.0, 3.0));
  const gsl_PersistentMatrix matrix(transform);
  const std::unique_ptr<gsl_PersistentMatrix> read = RoundTrip(matrix);
  double expected[4][4];
  double is[4][4];
  matrix.Matrix().AsArray(expected);
  read->Matrix().AsArray(is);
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c)
      REQUIRE(is[r][c] == expected[r][c]);
  }
  REQUIRE(read->Uid() == matrix.Uid());
  REQUIRE(RoundTrip(gsl_PersistentMatrix())->Matrix().IsIdentity());
}

void Datums() {
  const Started started;
  gsl_Plane plane(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.0, 0.0, 2.0));
  plane.SetMethod(FROM_DATUM_PLANE);
  plane.SetFlip(true);
  plane.SetOk(true);
  plane.SetOwnerFeatID(-77);
  host_adapter::Append(plane.ParentIds(), 4000000000u);
  host_adapter::Append(plane.ParentIds(), 3u);
  const std::unique_ptr<gsl_Plane> readPlane = RoundTrip(plane);
  REQUIRE(Same(readPlane->PointOn(), plane.PointOn()));
  REQUIRE(Same(readPlane->Direction(), plane.Direction()));
  REQUIRE(readPlane->Method() == FROM_DATUM_PLANE && readPlane->Flip() && readPlane->Ok());
  REQUIRE(readPlane->OwnerFeatID() == -77 && readPlane->Uid() == plane.Uid());
  REQUIRE(host_adapter::NumbersOf(readPlane->ParentIds()) ==
          std::vector<unsigned int>({4000000000u, 3u}));
  gsl_StLine line(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.0, 3.0, 4.0));
  line.SetMethod(FROM_DATUM_CSYS);
  const std::unique_ptr<gsl_StLine> readLine = RoundTrip(line);
  REQUIRE(Same(readLine->PointOn(), line.PointOn()));
  REQUIRE(Same(readLine->Direction(), line.Direction()));
  REQUIRE(readLine->Method() == FROM_DATUM_CSYS && readLine->Uid() == line.Uid());
  const gsl_Dot dot(12, -34);
  const std::unique_ptr<gsl_Dot> readDot = RoundTrip(dot);
  REQUIRE(readDot->GetInstanceId() == 12 && readDot->GetEntityId() == -34);
  REQUIRE(readDot->GetMethod() == dot.GetMethod() && readDot->Uid() == dot.Uid());
}

void Arrays() {
  const Started started;
  omu_xoObjVarray<gsl_Dot> dots(0, 1.75);
  for (int i = 0; i < 40; ++i)
    dots.add(i % 3 == 1 ? nullptr : new gsl_Dot(i, 0.0, 0.0));
  const std::unique_ptr<omu_xoObjVarray<gsl_Dot>> read = RoundTrip(dots);
  REQUIRE(read->Count() == 40 && read->GrowthRatio() == 1.75);
  REQUIRE(read->Uid() == dots.Uid() && read->DataUid() == dots.DataUid());
  for (unsigned int i = 0; i < 40; ++i) {
    REQUIRE(((*read)[i] == nullptr) == (i % 3 == 1));
    if ((*read)[i] == nullptr) continue;
    REQUIRE(Same((*read)[i]->GetPoint(), dots[i]->GetPoint()));
    REQUIRE((*read)[i]->Uid() == dots[i]->Uid());
  }
  omu_xoObjVarray<gsl_Plane> planes;
  planes.add(new gsl_Plane(gsl_Point(), gsl_Vector(0.0, 0.0, 1.0)));
  REQUIRE((*RoundTrip(planes))[0]->Direction().z == 1.0);
  omu_xoObjVarray<gsl_StLine> lines;
  lines.add(new gsl_StLine(gsl_Point(), gsl_Vector(0.0, 1.0, 0.0)));
  REQUIRE((*RoundTrip(lines))[0]->Direction().y == 1.0);
  REQUIRE(RoundTrip(omu_xoObjVarray<gsl_StLine>())->Count() == 0);
}

void Lists() {
  const Started started;
  cls_xo1DArrayList<gsl_Point> points;
  for (int i = 0; i < 5; ++i)
    points.Append(gsl_Point(i, 0.0, 0.0));
  const std::unique_ptr<cls_xo1DArrayList<gsl_Point>> read = RoundTrip(points);
  REQUIRE(read->Count() == 5 && read->Uid() == points.Uid());
  for (std::size_t i = 0; i < 5; ++i)
    REQUIRE(Same((*read)[i], points[i]));
  cls_xo1DArrayList<gsl_ModelSegment> segments;
  segments.Append(gsl_ModelSegment(gsl_Dot(1.0, 2.0, 3.0), gsl_Dot()));
  const std::unique_ptr<cls_xo1DArrayList<gsl_ModelSegment>> readSegments = RoundTrip(segments);
  REQUIRE(readSegments->Count() == 1);
  REQUIRE(Same((*readSegments)[0].Point1().GetPoint(), segments[0].Point1().GetPoint()));
}

void Sharing() {
  const Started started;
  const gsl_ModelSegment first(gsl_Dot(1.0, 2.0, 3.0), gsl_Dot(4.0, 5.0, 6.0));
  const gsl_ModelSegment second(first);
  const std::unique_ptr<Store> store = host_adapter::MakeStore();
  Save(*store, first);
  Save(*store, gsl_ModelSegment());
  Save(*store, second);
  std::unique_ptr<gsl_ModelSegment> readFirst = Load<gsl_ModelSegment>(*store, 0);
  const std::unique_ptr<gsl_ModelSegment> empty = Load<gsl_ModelSegment>(*store, 1);
  const std::unique_ptr<gsl_ModelSegment> readSecond = Load<gsl_ModelSegment>(*store, 2);
  REQUIRE(!empty->HasPoint1() && !empty->HasPoint2());
  REQUIRE(readFirst->HasPoint1() && readSecond->HasPoint1());
  // A host may share the ends of copies or not; what it read has one identity.
  REQUIRE(readFirst->Point1().Uid() == first.Point1().Uid());
  REQUIRE(readSecond->Point1().Uid() == first.Point1().Uid());
  if (&first.Point1() == &second.Point1()) {
    REQUIRE(&readFirst->Point1() == &readSecond->Point1());
    REQUIRE(&readFirst->Point2() == &readSecond->Point2());
  }
  // The objects outlive the load.
  readFirst.reset();
  REQUIRE(Same(readSecond->Point2().GetPoint(), first.Point2().GetPoint()));
}

void Absent() {
  const Started started;
  const std::unique_ptr<Store> store = host_adapter::MakeStore();
  Save(*store, gsl_Point(1.0, 2.0, 3.0));
  store->Load(0, [](const cls_ReadVisitor& visitor) {
    const cls_FieldHandle none(3, "no_such_field");
    REQUIRE(visitor.ReadInteger(none, -5) == -5);
    REQUIRE(visitor.ReadDouble(none, 0.5) == 0.5);
    REQUIRE(visitor.ReadBoolean(none, true) && !visitor.ReadBoolean(none, false));
    const cow_String text = visitor.ReadString(none, cow_String("default"));
    REQUIRE_TEXT(std::string(text.CStr(), text.Length()), "default");
    const cls_ReadVisitor child(visitor, none);
    REQUIRE(child.GetUid() == cls_Uid());
    REQUIRE(IsZero(gsl_Point(child)));
    REQUIRE(gsl_ModelSegment(child).HasPoint1() == false);
    REQUIRE(omu_xoObjVarray<gsl_Dot>(child, nullptr, nullptr).Count() == 0);
    REQUIRE(cls_xo1DArrayList<gsl_Point>(child, child.GetUid()).Count() == 0);
    REQUIRE(gsl_PersistentMatrix(child).Matrix().m[0][0] == 1.0);
    bool refused = false;
    try {
      const omu_PrimEnum<gsl_DotMethod, 1> method(child);
    } catch (const omu_ValueErrorException& error) {
      // The stored name is empty, and no name is.
      const host_adapter::Thrown thrown = host_adapter::Describe(error);
      refused = thrown.line == 95;
      REQUIRE(thrown.message.find("str not allowed:   Permissible: gsl_FROM_POINT") !=
              std::string::npos);
    }
    REQUIRE(refused);
    // The place of a field in the record is not what finds it.
    REQUIRE(visitor.ReadDouble(cls_FieldHandle(0, "_z"), 0.0) == 3.0);
    REQUIRE(visitor.ReadDouble(cls_FieldHandle(-1, "_x"), 0.0) == 1.0);
  });
}

template <class Error, class Function>
bool Throws(const Function& fails) {
  try {
    fails();
  } catch (const Error&) {
    return true;
  }
  return false;
}

void Refusals() {
  const Started started;
  const std::unique_ptr<Store> store = host_adapter::MakeStore();
  Save(*store, gsl_Plane());
  Save(*store, gsl_Point(1.0, 2.0, 3.0));
  REQUIRE(Throws<nex_Exception>([&] { Load<gsl_Point>(*store, 0); }));
  REQUIRE(Throws<cls_RecordException>([&] { Load<gsl_Plane>(*store, 1); }));
  REQUIRE(Throws<nex_Exception>([&] { Load<omu_xoObjVarray<gsl_Dot>>(*store, 1); }));
  REQUIRE(Throws<nex_Exception>([&] { Load<cls_xo1DArrayList<gsl_Point>>(*store, 1); }));
  store->Load(1, [](const cls_ReadVisitor& visitor) {
    const cls_FieldHandle x(-1, "_x");
    REQUIRE(Throws<cls_RecordException>([&] { static_cast<void>(visitor.ReadInteger(x, 0)); }));
    REQUIRE(Throws<cls_RecordException>([&] { static_cast<void>(visitor.ReadBoolean(x, false)); }));
    REQUIRE(Throws<cls_RecordException>(
        [&] { static_cast<void>(visitor.ReadString(x, cow_String())); }));
    REQUIRE(Throws<cls_RecordException>([&] { gsl_Point point(cls_ReadVisitor(visitor, x)); }));
  });
  // The store is still of use.
  REQUIRE(Load<gsl_Point>(*store, 1)->z == 3.0);
}

void FailedSaves() {
  const Started started;
  omu_xoObjVarray<gsl_Plane> planes;
  planes.add(new gsl_Plane());
  planes.add(new gsl_Plane());
  planes[1]->SetMethod(static_cast<gsl_DirMethod>(99));
  const std::unique_ptr<Store> store = host_adapter::MakeStore();
  Save(*store, gsl_Point(1.0, 2.0, 3.0));
  // The entry fails while the writer of the list is open.
  REQUIRE(Throws<omu_ValueErrorException>([&] { Save(*store, planes); }));
  planes[1]->SetMethod(FROM_FACE);
  Save(*store, planes);
  REQUIRE(Load<gsl_Point>(*store, 0)->x == 1.0);
  REQUIRE((*Load<omu_xoObjVarray<gsl_Plane>>(*store, 1))[1]->Method() == FROM_FACE);
}

void MadeByTheRegistrar() {
  const Started started;
  const std::unique_ptr<Store> store = host_adapter::MakeStore();
  Save(*store, gsl_Plane());
  Save(*store, gsl_Dot());
  Save(*store, omu_xoObjVarray<gsl_Dot>());
  const unsigned int plane = gsl_Plane::TypeId();
  store->Load(0, [&](const cls_ReadVisitor& visitor) {
    REQUIRE(host_adapter::MakeAndDestroy(plane, visitor));
  });
  const unsigned int dot = gsl_Dot::TypeId();
  store->Load(1, [&](const cls_ReadVisitor& visitor) {
    REQUIRE(host_adapter::MakeAndDestroy(dot, visitor));
  });
}

} // namespace

std::vector<Case> RecordCases() {
  return {
      {"record_values", "records keep numbers to the bit, nested records and identities", &Values},
      {"record_matrix", "records keep matrices of doubles", &Matrices},
      {"record_datums", "records keep texts, booleans, integers and lists of numbers", &Datums},
      {"record_arrays", "lists keep their entries, null or not, in order", &Arrays},
      {"record_lists", "lists of values keep their entries in order", &Lists},
      {"record_sharing", "a shared object is stored once and is shared again", &Sharing},
      {"record_absent", "fields are found by name, and a missing field reads as the default",
       &Absent},
      {"record_refused", "a record of another class and a field of another kind are refused",
       &Refusals},
      {"record_failed_save", "a save that fails leaves no root, and the store is still of use",
       &FailedSaves},
      {"record_made", "the adapter of a class makes an object, and its function destroys it",
       &MadeByTheRegistrar},
  };
}
