// Feeds any bytes to the record reader and to the readers of every class. The result is objects
// that can be written and read again, or an exception of the host's family.

#include "Reframed.h"
#include "cls_ReadVisitor.h"
#include "cls_WriteVisitor.h"
#include "cls_xo1DArrayList.h"
#include "gsl_BBox.h"
#include "gsl_Dot.h"
#include "gsl_ModelSegment.h"
#include "gsl_Module.h"
#include "gsl_PersistentMatrix.h"
#include "gsl_PersistentVector.h"
#include "gsl_Plane.h"
#include "gsl_Point.h"
#include "gsl_RecordError.h"
#include "gsl_RecordStore.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"
#include "nex_Exception.h"
#include "omu_xoObjVarray.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

namespace {

template <class C>
C Read(const cls_ReadVisitor& visitor) {
  if constexpr (std::is_constructible_v<C, const cls_ReadVisitor&>) {
    return C(visitor);
  } else if constexpr (std::is_constructible_v<C, const cls_ReadVisitor&, const cls_Uid&>) {
    return C(visitor, visitor.GetUid());
  } else {
    return C(visitor, nullptr, nullptr);
  }
}

template <class C>
std::vector<unsigned char> WrittenBytes(const C& object) {
  gsl_RecordStore store;
  {
    cls_Save save(store);
    object.DBWrite(cls_WriteVisitor(save));
  }
  return store.ToBytes();
}

/// Reads the root as a C; one of another class is refused. What can be read can be written, and
/// reads the same.
template <class C>
void ReadAs(const cls_ReadVisitor& root) {
  std::vector<unsigned char> first;
  try {
    // A transform near the identity becomes exact when it is written: compare from the second on.
    const C object = Read<C>(root);
    WrittenBytes(object);
    first = WrittenBytes(object);
  } catch (const nex_Exception&) {
    return;
  }
  const gsl_RecordStore store = gsl_RecordStore::FromBytes(first.data(), first.size());
  cls_Load load(store);
  const C again = Read<C>(cls_ReadVisitor(load, 0));
  Require(WrittenBytes(again) == first);
}

void ReadAsEveryClass(const cls_ReadVisitor& root) {
  ReadAs<gsl_BBox>(root);
  ReadAs<gsl_Dot>(root);
  ReadAs<gsl_ModelSegment>(root);
  ReadAs<gsl_PersistentMatrix>(root);
  ReadAs<gsl_PersistentVector>(root);
  ReadAs<gsl_Plane>(root);
  ReadAs<gsl_Point>(root);
  ReadAs<gsl_Segment>(root);
  ReadAs<gsl_StLine>(root);
  ReadAs<omu_xoObjVarray<gsl_Dot>>(root);
  ReadAs<omu_xoObjVarray<gsl_Plane>>(root);
  ReadAs<omu_xoObjVarray<gsl_StLine>>(root);
  ReadAs<cls_xo1DArrayList<gsl_ModelSegment>>(root);
  ReadAs<cls_xo1DArrayList<gsl_Point>>(root);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  static int count = 0;
  gsl_initialize(count);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  gsl_RecordStore store;
  try {
    const std::vector<unsigned char> form = Reframed(data, size);
    store = gsl_RecordStore::FromBytes(form.data(), form.size());
  } catch (const gsl_RecordError&) {
    return 0;
  }
  const std::vector<unsigned char> bytes = store.ToBytes();
  Require(gsl_RecordStore::FromBytes(bytes.data(), bytes.size()).ToBytes() == bytes);
  cls_Load load(store);
  for (std::size_t i = 0; i < store.RootCount(); ++i)
    ReadAsEveryClass(cls_ReadVisitor(load, i));
  return 0;
}
