#include "FailEachAllocation.h"
#include "Records.h"
#include "cls_MetadataRegistrar.h"
#include "cls_xo1DArrayList.h"
#include "gsl_BBox.h"
#include "gsl_Dot.h"
#include "gsl_ModelSegment.h"
#include "gsl_Module.h"
#include "gsl_PersistentMatrix.h"
#include "gsl_PersistentVector.h"
#include "gsl_Plane.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"
#include "nex_Exception.h"
#include "omu_xoObjVarray.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

// Each allocation of writing and reading the records of every class fails in turn. The objects are
// compared by their records, byte by byte.

namespace {

using Bytes = std::vector<unsigned char>;

/// A root that a visitor cannot end is ended by the call that reads the store.
constexpr Failing kStored = {WithoutMemory::MayManage, Allocations::All};

class FailingRecords : public testing::Test {
protected:
  FailingRecords() { gsl_initialize(m_count); }
  ~FailingRecords() override { gsl_finalize(m_count); }

private:
  int m_count = 0;
};

template <class C>
Bytes BytesOf(const C& object) {
  return Written(object).ToBytes();
}

template <class C>
void ExpectWritingIsWholeOrNot(const char* name, const C& object) {
  const Bytes alone = BytesOf(object);
  const auto writes = [&] { return BytesOf(object) == alone; };
  const auto isUnchanged = [&] { return BytesOf(object) == alone; };
  EXPECT_GT(FailEachAllocation(name, writes, isUnchanged, kStored), 2);

  const Bytes before = BytesOf(gsl_Point(1.0, 2.0, 3.0));
  const auto adds = [&] {
    gsl_RecordStore store = gsl_RecordStore::FromBytes(before.data(), before.size());
    ChangeOrLeave(
        [&] {
          cls_Save save(store);
          object.DBWrite(cls_WriteVisitor(save, "second"));
        },
        [&] { return store.RootCount() == 1 && store.ToBytes() == before; });
    return store.RootCount() == 2 && store.RootName(1) == "second";
  };
  EXPECT_GT(FailEachAllocation(name, adds, isUnchanged, kStored), 2);
}

template <class C, class Read>
void ExpectReadingIsWholeOrNot(const char* name, const C& object, const Read& read) {
  const gsl_RecordStore store = Written(object);
  const Bytes expected = store.ToBytes();
  const auto reads = [&] {
    cls_Load load(store);
    return read(load) == expected;
  };
  const auto isUnchanged = [&] { return store.ToBytes() == expected; };
  EXPECT_GT(FailEachAllocation(name, reads, isUnchanged, kStored), 2);
}

template <class C>
void ExpectRecordsAreWholeOrNot(const char* name, const C& object) {
  ExpectWritingIsWholeOrNot(name, object);
  ExpectReadingIsWholeOrNot(name, object,
                            [](cls_Load& load) { return BytesOf(C(cls_ReadVisitor(load, 0))); });
}

template <class T>
void ExpectListsAreWholeOrNot(const char* name, const T& value) {
  cls_xo1DArrayList<T> list;
  for (int i = 0; i < 3; ++i)
    list.Append(value);
  ExpectWritingIsWholeOrNot(name, list);
  ExpectReadingIsWholeOrNot(name, list, [](cls_Load& load) {
    const cls_ReadVisitor visitor(load, 0);
    return BytesOf(cls_xo1DArrayList<T>(visitor, visitor.GetUid()));
  });
}

template <class T>
void ExpectArraysAreWholeOrNot(const char* name) {
  omu_xoObjVarray<T> array;
  for (int i = 0; i < 5; ++i) {
    auto element = std::make_unique<T>();
    array.Add(element.get());
    static_cast<void>(element.release());
  }
  array.Add(nullptr);
  ExpectWritingIsWholeOrNot(name, array);
  ExpectReadingIsWholeOrNot(name, array, [](cls_Load& load) {
    return BytesOf(omu_xoObjVarray<T>(cls_ReadVisitor(load, 0), nullptr, nullptr));
  });
}

template <class Datum>
Datum WithParents() {
  Datum datum(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.0, 1.0, 2.0));
  for (unsigned int id = 0; id < 20; ++id)
    datum.ParentIds().Append(id);
  return datum;
}

} // namespace

TEST_F(FailingRecords, OfValuesAreWholeOrNot) {
  ExpectRecordsAreWholeOrNot("gsl_Point", gsl_Point(1.0, 2.0, 3.0));
  ExpectRecordsAreWholeOrNot("gsl_PersistentVector",
                             gsl_PersistentVector(gsl_Vector(1.0, 2.0, 3.0)));
  ExpectRecordsAreWholeOrNot("gsl_PersistentMatrix", gsl_PersistentMatrix());
  ExpectRecordsAreWholeOrNot("gsl_BBox", gsl_BBox());
  ExpectRecordsAreWholeOrNot("gsl_Segment",
                             gsl_Segment(gsl_Point(1.0, 2.0, 3.0), gsl_Point(4.0, 5.0, 6.0)));
}

TEST_F(FailingRecords, OfDatumEntitiesAreWholeOrNot) {
  ExpectRecordsAreWholeOrNot("gsl_Dot", gsl_Dot(3, 4));
  ExpectRecordsAreWholeOrNot("gsl_Plane", WithParents<gsl_Plane>());
  ExpectRecordsAreWholeOrNot("gsl_StLine", WithParents<gsl_StLine>());
  ExpectRecordsAreWholeOrNot("gsl_ModelSegment", gsl_ModelSegment(gsl_Dot(1, 2), gsl_Dot(3, 4)));
  ExpectRecordsAreWholeOrNot("empty gsl_ModelSegment", gsl_ModelSegment());
}

TEST_F(FailingRecords, OfArraysAreWholeOrNot) {
  ExpectArraysAreWholeOrNot<gsl_Dot>("gsl_DotArray");
  ExpectArraysAreWholeOrNot<gsl_Plane>("gsl_PlaneArray");
  ExpectArraysAreWholeOrNot<gsl_StLine>("gsl_LineArray");
}

TEST_F(FailingRecords, OfListsAreWholeOrNot) {
  ExpectListsAreWholeOrNot("gsl_ArrayPoint", gsl_Point(1.0, 2.0, 3.0));
  // The three segments share their datum points.
  ExpectListsAreWholeOrNot("gsl_ModelSegmentArray", gsl_ModelSegment(gsl_Dot(1, 2), gsl_Dot(3, 4)));
}

TEST_F(FailingRecords, AHolderIsUnchangedWhenItsObjectCannotBeRead) {
  constexpr cls_FieldHandle kFirst(0, "point1");
  const gsl_RecordStore store = Written(gsl_ModelSegment(gsl_Dot(1, 2), gsl_Dot(3, 4)));
  const gsl_ModelSegment::DotHolder before{gsl_Dot(5, 6)};
  const auto reads = [&] {
    cls_Load load(store);
    gsl_ModelSegment::DotHolder holder(before);
    ChangeOrLeave([&] { cls_ReadVisitor(load, 0).ReadObject(kFirst, holder); },
                  [&] { return holder.SharesWith(before); });
    gsl_ModelSegment::DotHolder again;
    cls_ReadVisitor(load, 0).ReadObject(kFirst, again);
    return holder->GetEntityId() == 2 && again.SharesWith(holder);
  };
  EXPECT_GT(FailEachAllocation("ReadObject", reads), 3);
}

namespace {

/// Returns what reading a plane from a record of that class throws.
template <class Exception, class Work>
bool Throws(const Work& work, const char* message) {
  try {
    work();
  } catch (const Exception& e) {
    return e.Message() == cow_String(message);
  }
  return false;
}

} // namespace

TEST_F(FailingRecords, ARefusalNeedsMemoryForItsMessage) {
  const gsl_RecordStore store = Written(gsl_Dot(1, 2));
  const auto refuses = [&] {
    cls_Load load(store);
    return Throws<nex_Exception>([&] { static_cast<void>(gsl_Plane(cls_ReadVisitor(load, 0))); },
                                 "Root 0 holds a record of class gsl_Dot, not gsl_Plane");
  };
  EXPECT_GT(FailEachAllocation("a record of another class", refuses), 2);
}

TEST_F(FailingRecords, ARegisteredDestructorFreesItsInstance) {
  const gsl_RecordStore store = Written(
      gsl_Point(1.0, 2.0, 3.0), gsl_PersistentVector(gsl_Vector(1.0, 2.0, 3.0)),
      gsl_PersistentMatrix(), gsl_BBox(), gsl_Segment(gsl_Point(), gsl_Point(1.0, 2.0, 3.0)),
      gsl_Dot(3, 4), gsl_Plane(), gsl_StLine(), gsl_ModelSegment());
  const cls_ClassRegistrar& classes =
      omi_Singleton<cls_MetadataRegistrar>::Instance().ClassRegistrar();
  cls_Load load(store);
  int destroyed = 0;
  for (std::size_t i = 0; i < load.RootCount(); ++i) {
    const cls_ClassMetadata& registered = *classes.FindClass(cls_ReadVisitor(load, i).TypeId());
    if (registered.Dtor() == nullptr) continue;
    const auto createsAndDestroys = [&] {
      registered.Dtor()(registered.Adapter().Create(cls_ReadVisitor(load, i)));
    };
    createsAndDestroys(); // the load keeps the texts of the first instance
    const long live = LiveBlocks();
    createsAndDestroys();
    EXPECT_EQ(LiveBlocks(), live) << registered.Name();
    ++destroyed;
  }
  EXPECT_GT(destroyed, 0);
}
