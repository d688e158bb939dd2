#include "gsl_Module.h"

#include "cls_MetadataRegistrar.h"
#include "gsl_BBox.h"
#include "gsl_Dot.h"
#include "gsl_ModelSegment.h"
#include "gsl_PersistentMatrix.h"
#include "gsl_PersistentVector.h"
#include "gsl_Plane.h"
#include "gsl_Point.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"
#include "gsl_TypeTable.h"
#include "gsl_Util.h"
#include "mem_Modules.h"
#include "omu_xoObjVarray.h"

#include <cstddef>
#include <iterator>

namespace {

unsigned int startCount = 0;

/// A host library that this module needs, in the order of gsl/host/prefixes.txt.
struct HostLibrary {
  void (*initialize)(int&);
  void (*finalize)(int&);
};

constexpr HostLibrary kHostLibraries[] = {
    {&mem_initialize, &mem_finalize}, {&typ_initialize, &typ_finalize},
    {&pnt_initialize, &pnt_finalize}, {&omni_initialize, &omni_finalize},
    {&atr_initialize, &atr_finalize}, {&cow_initialize, &cow_finalize},
    {&nex_initialize, &nex_finalize}, {&g3d_initialize, &g3d_finalize},
    {&omu_initialize, &omu_finalize}};

struct RegisteredClass {
  cls_MetadataRegistrar::InitializeMetadata function;
  int flags;
};

/// The number that a class registers with its name: 7 for the point, the vector, the datum point
/// and the matrix, and 3 for every other class. The host's registrar defines the bits.
constexpr int kFlagsOfValueLike = 7;
constexpr int kFlagsOfOthers = 3;

constexpr RegisteredClass kClasses[] = {
    {&gsl_BBox::InitializeMetadata, kFlagsOfOthers},
    {&gsl_ModelSegment::InitializeMetadata, kFlagsOfOthers},
    {&gsl_Plane::InitializeMetadata, kFlagsOfOthers},
    {&omu_xoObjVarray<gsl_Plane>::InitializeMetadata, kFlagsOfOthers},
    {&gsl_Point::InitializeMetadata, kFlagsOfValueLike},
    {&gsl_Segment::InitializeMetadata, kFlagsOfOthers},
    {&gsl_StLine::InitializeMetadata, kFlagsOfOthers},
    {&omu_xoObjVarray<gsl_StLine>::InitializeMetadata, kFlagsOfOthers},
    {&gsl_PersistentVector::InitializeMetadata, kFlagsOfValueLike},
    {&gsl_Dot::InitializeMetadata, kFlagsOfValueLike},
    {&omu_xoObjVarray<gsl_Dot>::InitializeMetadata, kFlagsOfOthers},
    {&gsl_PersistentMatrix::InitializeMetadata, kFlagsOfValueLike}};

constexpr unsigned int TypeIdOfRow(unsigned int row) {
  return (gsl_kModuleNumber << 16) + row;
}

static_assert(gsl_Point::TypeId() == TypeIdOfRow(1));
static_assert(gsl_PersistentMatrix::TypeId() == TypeIdOfRow(2));
static_assert(gsl_PersistentVector::TypeId() == TypeIdOfRow(3));
static_assert(gsl_Plane::TypeId() == TypeIdOfRow(4));
static_assert(gsl_Dot::TypeId() == TypeIdOfRow(5));
static_assert(gsl_StLine::TypeId() == TypeIdOfRow(6));
static_assert(gsl_BBox::TypeId() == TypeIdOfRow(7));
static_assert(gsl_Segment::TypeId() == TypeIdOfRow(8));
static_assert(omu_xoObjVarray<gsl_StLine>::TypeId() == TypeIdOfRow(10));
static_assert(gsl_ModelSegment::TypeId() == TypeIdOfRow(11));
static_assert(omu_xoObjVarray<gsl_Plane>::TypeId() == TypeIdOfRow(13));
static_assert(omu_xoObjVarray<gsl_Dot>::TypeId() == TypeIdOfRow(14));

void RegisterClasses() {
  cls_MetadataRegistrar& registrar = omi_Singleton<cls_MetadataRegistrar>::Instance();
  for (const RegisteredClass& registered : kClasses)
    registrar.initClassMetadata(registered.function, registered.flags);
}

/// A start in progress. An exception on the way stops what was started and takes the counts back.
class Start {
public:
  explicit Start(int& count) : m_count(count) {}
  ~Start() {
    if (m_keeps) return;
    if (!m_hadSettings && omi_Singleton<gsl_Util>::Exists()) omi_Singleton<gsl_Util>::Destroy();
    --m_count; // before the libraries stop, as gsl_finalize counts
    while (m_started > 0)
      kHostLibraries[--m_started].finalize(m_count);
    --startCount;
  }
  Start(const Start&) = delete;
  Start& operator=(const Start&) = delete;

  void HostLibraries() {
    for (const HostLibrary& library : kHostLibraries) {
      library.initialize(m_count);
      ++m_started;
    }
    // Singletons may be asked for now.
    m_hadSettings = omi_Singleton<gsl_Util>::Exists();
  }
  void Keep() { m_keeps = true; }

private:
  int& m_count;
  std::size_t m_started = 0;
  bool m_hadSettings = true; ///< a host may have made them before
  bool m_keeps = false;
};

} // namespace

void gsl_initialize(int& count) {
  if (startCount++ != 0) return;
  ++count;
  Start start(count);
  start.HostLibraries();
  const typ_ArchCompEntry entry(gsl_kTypeTable, gsl_kTypeTableRows);
  typ_ArchCompTable::InsertEntry(gsl_kModuleNumber, entry);
  omi_Singleton<gsl_Util>::Instance();
  RegisterClasses();
  start.Keep();
}

void gsl_finalize(int& count) {
  if (--startCount != 0) return;
  --count;
  omi_Singleton<gsl_Util>::Destroy();
  for (auto library = std::rbegin(kHostLibraries); library != std::rend(kHostLibraries); ++library)
    library->finalize(count);
}
