// Builds a small datum model, writes it to bytes, reads it back and prints it.

#include <cls_ReadVisitor.h>
#include <cls_WriteVisitor.h>
#include <cls_xo1DArrayList.h>
#include <gsl_Dot.h>
#include <gsl_ModelSegment.h>
#include <gsl_Plane.h>
#include <gsl_RecordStore.h>
#include <gsl_StLine.h>
#include <gsl_utils.h>
#include <omu_PrimEnum.h>
#include <omu_xoObjVarray.h>

#include <cstddef>
#include <cstdio>
#include <exception>
#include <memory>
#include <vector>

namespace {

/// What a feature of the host might own.
struct DatumModel {
  omu_xoObjVarray<gsl_Dot> points;
  omu_xoObjVarray<gsl_Plane> planes;
  std::unique_ptr<gsl_StLine> axis;
  cls_xo1DArrayList<gsl_ModelSegment> segments;

  DatumModel() = default;
  /// From the four roots of a load, in the order in which Write wrote them.
  explicit DatumModel(cls_Load& load)
      : points(cls_ReadVisitor(load, 0), nullptr, nullptr),
        planes(cls_ReadVisitor(load, 1), nullptr, nullptr),
        axis(new gsl_StLine(cls_ReadVisitor(load, 2))),
        segments(cls_ReadVisitor(load, 3), cls_ReadVisitor(load, 3).GetUid()) {}
};

void Build(DatumModel& model) {
  model.points.Add(new gsl_Dot(0.0, 0.0, 0.0));
  model.points.Add(nullptr); // a deleted point keeps its place
  auto* const node = new gsl_Dot(3, 1041);
  node->SetValues(30.0, 40.0, 0.0);
  model.points.Add(node);

  auto* const floor = new gsl_Plane(gsl_Point(0.0, 0.0, -5.0), gsl_Vector(0.0, 0.0, 2.0));
  floor->SetOwnerFeatID(17);
  floor->ParentIds().Append(4);
  floor->ParentIds().Append(9);
  model.planes.Add(floor);

  model.axis.reset(new gsl_StLine(model.points[0]->GetPoint(), model.points[2]->GetPoint()));

  const gsl_ModelSegment diagonal(*model.points[0], *model.points[2]);
  model.segments.Append(diagonal);
  model.segments.Append(diagonal); // a copy shares its datum points
  model.segments.Append(gsl_ModelSegment());
}

std::vector<unsigned char> Write(const DatumModel& model) {
  gsl_RecordStore store;
  cls_Save save(store);
  model.points.DBWrite(cls_WriteVisitor(save));
  model.planes.DBWrite(cls_WriteVisitor(save));
  model.axis->DBWrite(cls_WriteVisitor(save));
  model.segments.DBWrite(cls_WriteVisitor(save));
  return store.ToBytes();
}

void PrintPoint(const char* label, const gsl_Point& p) {
  std::printf("%s (%g, %g, %g)", label, p.x, p.y, p.z);
}

void Print(const DatumModel& model) {
  for (unsigned int i = 0; i < model.points.Count(); ++i) {
    const gsl_Dot* const dot = model.points[i];
    if (dot == nullptr) {
      std::printf("point %u is empty\n", i);
      continue;
    }
    const omu_PrimEnum<gsl_DotMethod, 1> method(dot->GetMethod());
    std::printf("point %u", i);
    PrintPoint("", dot->GetPoint());
    std::printf(" %s, entity %d\n", method.AsString().CStr(), dot->GetEntityId());
  }
  const gsl_Plane& plane = *model.planes[0];
  PrintPoint("plane through", plane.PointOn());
  std::printf(", normal of length %g, made from", plane.Direction().magnitude);
  for (std::size_t i = 0; i < plane.ParentIds().Count(); ++i)
    std::printf(" %u", plane.ParentIds()[i]);
  std::printf(" by feature %d\n", plane.OwnerFeatID());
  std::printf("axis along (%g, %g, %g)\n", model.axis->Direction().x, model.axis->Direction().y,
              model.axis->Direction().z);
  for (std::size_t i = 0; i < model.segments.Count(); ++i)
    std::printf("segment %zu of length %g\n", i, model.segments[i].Length());
}

} // namespace

int main() {
  int count = 0;
  gsl_initialize(count);
  int status = 0;
  try {
    DatumModel model;
    Build(model);
    const std::vector<unsigned char> bytes = Write(model);

    const gsl_RecordStore store = gsl_RecordStore::FromBytes(bytes.data(), bytes.size());
    cls_Load load(store);
    const DatumModel read(load);
    std::printf("%zu records\n", store.RecordCount());
    Print(read);
    const bool sameIdentity = read.planes[0]->Uid() == model.planes[0]->Uid();
    const bool shared = &read.segments[0].Point1() == &read.segments[1].Point1();
    std::printf("the plane is the one that was written: %s\n", sameIdentity ? "yes" : "no");
    std::printf("the segments share their datum points: %s\n", shared ? "yes" : "no");
  } catch (const std::exception& e) {
    std::fprintf(stderr, "datum_model: %s\n", e.what());
    status = 1;
  }
  gsl_finalize(count);
  return status;
}
