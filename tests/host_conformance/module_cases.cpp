// Start and stop, singletons, type tables, the registrar.

#include "Conformance.h"
#include "HostAdapter.h"

#include <algorithm>
#include <cls_MetadataRegistrar.h>
#include <gsl_BBox.h>
#include <gsl_Dot.h>
#include <gsl_ModelSegment.h>
#include <gsl_Module.h>
#include <gsl_PersistentMatrix.h>
#include <gsl_PersistentVector.h>
#include <gsl_Plane.h>
#include <gsl_StLine.h>
#include <gsl_Util.h>
#include <omu_xoObjVarray.h>

namespace {

std::string JournalSince(std::size_t begin) {
  const std::vector<std::string> journal = host_adapter::Journal();
  std::string text;
  for (std::size_t i = begin; i < journal.size(); ++i)
    text += journal[i] + " ";
  return text;
}

void StartAndStop() {
  const std::size_t begin = host_adapter::Journal().size();
  int count = 40;
  gsl_initialize(count);
  gsl_initialize(count);
  REQUIRE(count == 41);
  REQUIRE_TEXT(JournalSince(begin), "+mem +typ +pnt +omni +atr +cow +nex +g3d +omu ");
  const std::size_t middle = host_adapter::Journal().size();
  gsl_finalize(count);
  REQUIRE(count == 41);
  REQUIRE_TEXT(JournalSince(middle), "");
  gsl_finalize(count);
  REQUIRE(count == 40);
  REQUIRE_TEXT(JournalSince(middle), "-omu -g3d -nex -cow -atr -omni -pnt -typ -mem ");
}

void Singletons() {
  const Started started;
  gsl_Util& settings = omi_Singleton<gsl_Util>::Instance();
  REQUIRE(&settings == &omi_Singleton<gsl_Util>::Instance());
  REQUIRE(settings.linearTolerance == 1e-6);
  // The library must read the object that this program changes.
  const gsl_Plane ground(gsl_Point(), gsl_Vector(0.0, 0.0, 1.0));
  const gsl_Point above(0.0, 0.0, 0.25);
  REQUIRE(!above.IsOn(ground));
  settings.linearTolerance = 0.5;
  const bool isOn = above.IsOn(ground);
  settings.linearTolerance = 1e-6;
  REQUIRE(isOn);
}

void SingletonsAgain() {
  {
    const Started started;
    omi_Singleton<gsl_Util>::Instance().linearTolerance = 0.5;
    REQUIRE(omi_Singleton<gsl_Util>::Exists());
  }
  REQUIRE(!omi_Singleton<gsl_Util>::Exists());
  const Started started;
  REQUIRE(omi_Singleton<gsl_Util>::Instance().linearTolerance == 1e-6);
}

void TypeTables() {
  const Started started;
  const char* const names[] = {"",
                               "gsl_Point",
                               "gsl_Matrix",
                               "gsl_Vector",
                               "gsl_Plane",
                               "gsl_Dot",
                               "gsl_StLine",
                               "gsl_BBox",
                               "gsl_Segment",
                               "gsl_ArrayPoint",
                               "gsl_LineArray",
                               "gsl_ModelSegment",
                               "gsl_ModelSegmentArray",
                               "gsl_PlaneArray",
                               "gsl_DotArray"};
  const std::vector<host_adapter::TypeRow> rows = host_adapter::TypeTable(778);
  REQUIRE(rows.size() == 15);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    REQUIRE_TEXT(rows[i].name, names[i]);
    REQUIRE(rows[i].kind == (i == 0 ? 0u : 7u));
    REQUIRE(rows[i].secondWord == (i == 3 ? 0x030A0001u : 1u));
  }
}

struct Expected {
  unsigned int row;
  const char* name;
  int number;
  int flags;
  bool hasDestructor;
  const char* fields;
};

/// The classes in the order of registration.
const Expected kClasses[] = {
    {7, "gsl_BBox", 800, 3, false, "_low _high "},
    {11, "gsl_ModelSegment", 332, 3, true, "point1 point2 "},
    {4, "gsl_Plane", 800, 3, true, "_ok _point _normal _method _flip parent_ids owner_feat_id "},
    {13, "gsl_PlaneArray", 800, 3, false, "growthRatio_ data_ "},
    {1, "gsl_Point", 203, 7, true, "_x _y _z "},
    {8, "gsl_Segment", 800, 3, false, "_point1 _point2 "},
    {6, "gsl_StLine", 800, 3, true, "_point _dir _method _flip _ok parent_ids owner_feat_id "},
    {10, "gsl_LineArray", 800, 3, false, "growthRatio_ data_ "},
    {3, "gsl_Vector", 203, 7, false, "_x _y _z _magnitude "},
    {5, "gsl_Dot", 203, 7, true, "_point _method _instanceId _entityId "},
    {14, "gsl_DotArray", 800, 3, false, "growthRatio_ data_ "},
    {2, "gsl_Matrix", 203, 7, false, "_is_identity DDBmatrix "}};

/// Returns the classes of the library, without the host's own.
std::vector<host_adapter::RegisteredClass> ClassesOfTheLibrary() {
  std::vector<host_adapter::RegisteredClass> classes = host_adapter::RegisteredClasses();
  const auto isForeign = [](const auto& one) { return one.typeId >> 16 != 778; };
  classes.erase(std::remove_if(classes.begin(), classes.end(), isForeign), classes.end());
  return classes;
}

void RequireRegistered() {
  const std::vector<host_adapter::RegisteredClass> classes = ClassesOfTheLibrary();
  REQUIRE(classes.size() == std::size(kClasses));
  for (std::size_t i = 0; i < classes.size(); ++i) {
    REQUIRE_TEXT(classes[i].name, kClasses[i].name);
    REQUIRE(classes[i].typeId == 0x030A0000u + kClasses[i].row);
    REQUIRE(classes[i].number == kClasses[i].number);
    REQUIRE(classes[i].flags == kClasses[i].flags);
    REQUIRE(classes[i].hasDestructor == kClasses[i].hasDestructor);
    std::string fields;
    for (const auto& attribute : classes[i].attributes)
      fields += attribute.name + " ";
    REQUIRE_TEXT(fields, kClasses[i].fields);
  }
}

void Registration() {
  {
    const Started started;
    RequireRegistered();
  }
  // A later start registers again, in place.
  const Started again;
  RequireRegistered();
}

void RegisteredKinds() {
  const Started started;
  const std::vector<host_adapter::RegisteredClass> classes = ClassesOfTheLibrary();
  REQUIRE(classes.size() == std::size(kClasses));
  const std::vector<host_adapter::RegisteredClass::Attribute>& plane = classes[2].attributes;
  REQUIRE(plane.size() == 7);
  const cls_AttributeType kinds[] = {
      cls_BooleanAttribute, cls_ObjectAttribute, cls_ObjectAttribute, cls_EnumerationAttribute,
      cls_BooleanAttribute, cls_ObjectAttribute, cls_IntegerAttribute};
  for (std::size_t i = 0; i < plane.size(); ++i)
    REQUIRE(plane[i].type == kinds[i]);
  REQUIRE(plane[1].argument == gsl_Point::TypeId() && plane[1].collection == cls_NoCollection);
  REQUIRE(plane[2].argument == gsl_PersistentVector::TypeId());
  REQUIRE(plane[5].argument == cls_kCollectionTypeId && plane[5].collection == cls_UnsignedList);
  REQUIRE(plane[6].argument == 1);
  REQUIRE(classes[3].attributes[0].type == cls_DoubleAttribute);
  REQUIRE(classes[3].attributes[1].collection == cls_ObjectList);
  REQUIRE(classes[11].attributes[1].collection == cls_DoubleMatrix);
}

void Inheritance() {
  const Started started;
  REQUIRE(gsl_Plane().IsA(gsl_Plane::TypeId()));
  REQUIRE(!gsl_Plane().IsA(gsl_StLine::TypeId()));
  REQUIRE(!gsl_Dot().IsA(gsl_Point::TypeId()));
  REQUIRE(gsl_StLine().IsA(gsl_StLine::TypeId()));
  const cls_ClassRegistrar& classes =
      omi_Singleton<cls_MetadataRegistrar>::Instance().ClassRegistrar();
  REQUIRE(classes.InheritanceCheck(0x7FFF0001u, 0x7FFF0001u));
  REQUIRE(!classes.InheritanceCheck(0x7FFF0001u, gsl_Plane::TypeId()));
}

} // namespace

std::vector<Case> ModuleCases() {
  return {
      {"start", "the libraries start in order, stop in reverse, and leave the count alone",
       &StartAndStop},
      {"singleton", "omi_Singleton returns one object to all libraries", &Singletons},
      {"singleton_destroyed", "Instance makes a fresh object after Destroy", &SingletonsAgain},
      {"type_table", "typ_ArchCompTable keeps the rows of a module", &TypeTables},
      {"registrar", "the registrar keeps classes in the order of their first registration",
       &Registration},
      {"registrar_kinds", "the registrar keeps what a class declared of its fields",
       &RegisteredKinds},
      {"inheritance", "InheritanceCheck is true for a class and itself, also where it is unknown",
       &Inheritance},
  };
}
