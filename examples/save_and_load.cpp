// Saves a plane, an axis and a segment under names to a file, and loads them again.

#include <cls_ReadVisitor.h>
#include <cls_WriteVisitor.h>
#include <gsl_ModelSegment.h>
#include <gsl_Plane.h>
#include <gsl_RecordError.h>
#include <gsl_RecordFile.h>
#include <gsl_StLine.h>
#include <gsl_utils.h>

#include <cstddef>
#include <cstdio>
#include <exception>
#include <string>

namespace {

const char* const kFile = "save_and_load.gslr";

void Save(const gsl_Plane& floor, const gsl_StLine& axis, const gsl_ModelSegment& edge) {
  gsl_RecordStore store;
  cls_Save save(store);
  floor.DBWrite(cls_WriteVisitor(save, "floor"));
  axis.DBWrite(cls_WriteVisitor(save, "axis"));
  edge.DBWrite(cls_WriteVisitor(save, "edge"));
  gsl_SaveRecords(store, kFile); // the file appears whole, or not at all
}

void Load(const gsl_Plane& written) {
  const gsl_RecordStore store = gsl_LoadRecords(kFile);
  for (std::size_t i = 0; i < store.RootCount(); ++i) {
    const std::string name(store.RootName(i));
    const std::string className(store.ClassName(store.TypeId(store.Root(i))));
    std::printf("%s is a %s\n", name.c_str(), className.c_str());
  }

  cls_Load load(store);
  const gsl_Plane floor(cls_ReadVisitor(load, "floor"));
  const gsl_StLine axis(cls_ReadVisitor(load, "axis"));
  const gsl_ModelSegment edge(cls_ReadVisitor(load, "edge"));
  std::printf("the floor is the floor that was saved: %s\n",
              floor.Uid() == written.Uid() ? "yes" : "no");
  std::printf("the axis has the direction (%g, %g, %g) and belongs to feature %d\n",
              axis.Direction().x, axis.Direction().y, axis.Direction().z, axis.OwnerFeatID());
  std::printf("the edge has the length %g\n", edge.Length());
}

void LoadMissingFile() {
  try {
    const gsl_RecordStore store = gsl_LoadRecords("no_such_file.gslr");
  } catch (const gsl_RecordError& e) {
    std::printf("%s\n", e.what()); // one line that names the file
  }
}

} // namespace

int main() {
  int count = 0;
  gsl_initialize(count); // once in a process
  int status = 0;
  try {
    const gsl_Plane floor(gsl_Point(0.0, 0.0, -5.0), gsl_Vector(0.0, 0.0, 2.0));
    gsl_StLine axis(gsl_Point(1.0, 2.0, 3.0), gsl_Point(1.0, 2.0, 7.0));
    axis.SetOwnerFeatID(17);
    Save(floor, axis, gsl_ModelSegment(gsl_Dot(0.0, 0.0, 0.0), gsl_Dot(3.0, 4.0, 0.0)));
    Load(floor);
    LoadMissingFile();
  } catch (const std::exception& e) {
    std::fprintf(stderr, "save_and_load: %s\n", e.what());
    status = 1;
  }
  static_cast<void>(std::remove(kFile));
  gsl_finalize(count);
  return status;
}
