#include "RandomNumbers.h"
#include "RandomObjects.h"
#include "Records.h"
#include "TestScale.h"
#include "cls_xo1DArrayList.h"
#include "gsl_BBox.h"
#include "gsl_Dot.h"
#include "gsl_ModelSegment.h"
#include "gsl_PersistentMatrix.h"
#include "gsl_PersistentVector.h"
#include "gsl_Plane.h"
#include "gsl_Point.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"
#include "omu_xoObjVarray.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <random>
#include <vector>

// Random objects of every class are written and read in one load. The objects read must equal the
// objects written, member by member, bit for bit, with identities and sharing. Written again, they
// must make the same records.

namespace {

using namespace random_objects;

constexpr long kObjects = Scaled(1000000);
// This number divides the number of objects, also when it is scaled down, in tens of batches.
constexpr std::size_t kBatch = 500;

/// The processor time, so that other work of the machine does not count.
class Clock {
public:
  double Nanoseconds() const {
    return 1e9 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  }

private:
  std::clock_t start = std::clock();
};

/// The costs of a class, per object.
struct Cost {
  double writing = 0.0;
  double reading = 0.0;
  double bytes = 0.0;
  long batches = 0;

  void Print(const char* name, long objects) const {
    const auto count = static_cast<double>(objects);
    std::printf("%-32s %8ld objects  write %5.0f ns  read %5.0f ns  %6.1f bytes each\n", name,
                objects, writing / count, reading / count, bytes / count);
  }
};

/// Returns whether the store is the same after writing and reading its bytes. Every tenth batch
/// does this.
bool KeepsItsBytes(const gsl_RecordStore& store, Cost& cost) {
  if (cost.batches++ % 10 != 0) return true;
  const std::vector<unsigned char> form = store.ToBytes();
  cost.bytes += 10.0 * static_cast<double>(form.size());
  return SameRecords(store, gsl_RecordStore::FromBytes(form.data(), form.size()));
}

template <class C>
gsl_RecordStore WrittenTogether(const std::vector<C>& objects) {
  gsl_RecordStore store;
  cls_Save save(store);
  for (const C& object : objects)
    object.DBWrite(cls_WriteVisitor(save));
  return store;
}

template <class C>
void RoundTripBatch(RandomNumbers& random, Cost& cost) {
  std::vector<C> objects;
  while (objects.size() < kBatch)
    Make(random, objects);

  const Clock writeClock;
  const gsl_RecordStore store = WrittenTogether(objects);
  cost.writing += writeClock.Nanoseconds();

  std::vector<C> read;
  read.reserve(kBatch);
  const Clock readClock;
  cls_Load load(store);
  for (std::size_t i = 0; i < kBatch; ++i)
    read.push_back(C(cls_ReadVisitor(load, i)));
  cost.reading += readClock.Nanoseconds();

  Sharing sharing;
  for (std::size_t i = 0; i < kBatch; ++i) {
    ASSERT_TRUE(Same(objects[i], read[i]));
    if constexpr (std::is_same_v<C, gsl_ModelSegment>) {
      ASSERT_TRUE(sharing.Holds(objects[i], read[i]));
    }
  }
  ASSERT_TRUE(SameRecords(store, WrittenTogether(read)));
  ASSERT_TRUE(KeepsItsBytes(store, cost));
}

template <class C>
void ExpectRoundTrips(const char* name) {
  const std::uint64_t seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  RandomNumbers random(seed);
  Cost cost;
  long done = 0;
  for (; done < kObjects; done += static_cast<long>(kBatch))
    ASSERT_NO_FATAL_FAILURE(RoundTripBatch<C>(random, cost));
  cost.Print(name, done);
}

template <class T>
void RoundTripArray(RandomNumbers& random, Cost& cost) {
  std::vector<T> objects;
  omu_xoObjVarray<T> array(static_cast<unsigned int>(random.Below(5)), AnyDouble(random));
  while (array.Count() < kBatch) {
    Make(random, objects);
    array.Add(random.Chance(0.1) ? nullptr : new T(objects.back()));
  }

  const Clock writeClock;
  const gsl_RecordStore store = Written(array);
  cost.writing += writeClock.Nanoseconds();

  const Clock readClock;
  cls_Load load(store);
  const omu_xoObjVarray<T> read(cls_ReadVisitor(load, 0), nullptr, nullptr);
  cost.reading += readClock.Nanoseconds();

  ASSERT_TRUE(SameBits(read.GrowthRatio(), array.GrowthRatio()));
  ASSERT_EQ(read.Uid(), array.Uid());
  ASSERT_EQ(read.DataUid(), array.DataUid());
  ASSERT_EQ(read.Count(), array.Count());
  for (unsigned int i = 0; i < array.Count(); ++i) {
    ASSERT_EQ(read[i] == nullptr, array[i] == nullptr);
    ASSERT_TRUE(array[i] == nullptr || Same(*array[i], *read[i]));
  }
  ASSERT_TRUE(SameRecords(store, Written(read)));
  ASSERT_TRUE(KeepsItsBytes(store, cost));
}

template <class T>
void RoundTripList(RandomNumbers& random, Cost& cost) {
  std::vector<T> objects;
  cls_xo1DArrayList<T> list;
  while (list.Count() < kBatch) {
    Make(random, objects);
    list.Append(objects.back());
  }

  const Clock writeClock;
  const gsl_RecordStore store = Written(list);
  cost.writing += writeClock.Nanoseconds();

  const Clock readClock;
  cls_Load load(store);
  const cls_ReadVisitor root(load, 0);
  const cls_xo1DArrayList<T> read(root, root.GetUid());
  cost.reading += readClock.Nanoseconds();

  ASSERT_EQ(read.Uid(), list.Uid());
  ASSERT_EQ(read.Count(), list.Count());
  Sharing sharing;
  for (std::size_t i = 0; i < list.Count(); ++i) {
    ASSERT_TRUE(Same(list[i], read[i]));
    if constexpr (std::is_same_v<T, gsl_ModelSegment>) {
      ASSERT_TRUE(sharing.Holds(list[i], read[i]));
    }
  }
  ASSERT_TRUE(SameRecords(store, Written(read)));
  ASSERT_TRUE(KeepsItsBytes(store, cost));
}

/// `roundTrip` with collections of one batch of elements each.
void ExpectCollectionRoundTrips(const char* name, void (*roundTrip)(RandomNumbers&, Cost&)) {
  const std::uint64_t seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  RandomNumbers random(seed);
  Cost cost;
  long done = 0;
  for (; done < kObjects; done += static_cast<long>(kBatch))
    ASSERT_NO_FATAL_FAILURE(roundTrip(random, cost));
  cost.Print(name, done);
}

} // namespace

TEST(RoundTrip, Points) {
  ExpectRoundTrips<gsl_Point>("gsl_Point");
}

TEST(RoundTrip, Vectors) {
  ExpectRoundTrips<gsl_PersistentVector>("gsl_PersistentVector");
}

TEST(RoundTrip, Matrices) {
  ExpectRoundTrips<gsl_PersistentMatrix>("gsl_PersistentMatrix");
}

TEST(RoundTrip, Segments) {
  ExpectRoundTrips<gsl_Segment>("gsl_Segment");
}

TEST(RoundTrip, Boxes) {
  ExpectRoundTrips<gsl_BBox>("gsl_BBox");
}

TEST(RoundTrip, Planes) {
  ExpectRoundTrips<gsl_Plane>("gsl_Plane");
}

TEST(RoundTrip, Axes) {
  ExpectRoundTrips<gsl_StLine>("gsl_StLine");
}

TEST(RoundTrip, DatumPoints) {
  ExpectRoundTrips<gsl_Dot>("gsl_Dot");
}

TEST(RoundTrip, ModelSegments) {
  ExpectRoundTrips<gsl_ModelSegment>("gsl_ModelSegment");
}

TEST(RoundTrip, ArraysOfDatumPoints) {
  ExpectCollectionRoundTrips("in omu_xoObjVarray<gsl_Dot>", &RoundTripArray<gsl_Dot>);
}

TEST(RoundTrip, ArraysOfPlanes) {
  ExpectCollectionRoundTrips("in omu_xoObjVarray<gsl_Plane>", &RoundTripArray<gsl_Plane>);
}

TEST(RoundTrip, ArraysOfAxes) {
  ExpectCollectionRoundTrips("in omu_xoObjVarray<gsl_StLine>", &RoundTripArray<gsl_StLine>);
}

TEST(RoundTrip, ListsOfPoints) {
  ExpectCollectionRoundTrips("in list of gsl_Point", &RoundTripList<gsl_Point>);
}

TEST(RoundTrip, ListsOfModelSegments) {
  ExpectCollectionRoundTrips("in list of gsl_ModelSegment", &RoundTripList<gsl_ModelSegment>);
}
