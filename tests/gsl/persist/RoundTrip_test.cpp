#include "RandomNumbers.h"
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
#include "omu_PrimEnum.h"
#include "omu_xoObjVarray.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <random>
#include <unordered_map>
#include <vector>

// Random objects of every class are written and read in one load. The objects read must equal the
// objects written, member by member, bit for bit, with identities and sharing. Written again, they
// must make the same records.

namespace {

constexpr long kObjects = Scaled(1000000);
// This number divides the number of objects, also when it is scaled down, in tens of batches.
constexpr std::size_t kBatch = 500;

/// Returns any 64 bits, which include NaNs, infinities and denormals.
double AnyDouble(RandomNumbers& random) {
  std::uint64_t bits = 0;
  for (int i = 0; i < 4; ++i)
    bits = (bits << 16) | static_cast<std::uint64_t>(random.Below(1 << 16));
  double value = 0.0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

int AnyInt(RandomNumbers& random) {
  return (random.Below(1 << 16) << 15) - random.Below(1 << 30);
}

gsl_Point AnyPoint(RandomNumbers& random) {
  return {AnyDouble(random), AnyDouble(random), AnyDouble(random)};
}

gsl_Vector AnyVector(RandomNumbers& random) {
  gsl_Vector v(AnyDouble(random), AnyDouble(random), AnyDouble(random));
  if (random.Chance(0.5)) v[1] = AnyDouble(random);
  return v;
}

template <class Datum>
void AnyHistory(RandomNumbers& random, Datum& datum) {
  datum.SetFlip(random.Chance(0.5));
  datum.SetOk(random.Chance(0.5));
  datum.SetOwnerFeatID(AnyInt(random));
  for (int i = random.Below(4); i > 0; --i)
    datum.ParentIds().Append(static_cast<unsigned int>(AnyInt(random)));
}

void Make(RandomNumbers& random, std::vector<gsl_Point>& to) {
  to.push_back(AnyPoint(random));
}

void Make(RandomNumbers& random, std::vector<gsl_PersistentVector>& to) {
  to.emplace_back(AnyVector(random));
}

void Make(RandomNumbers& random, std::vector<gsl_PersistentMatrix>& to) {
  gsl_Matrix m;
  for (auto& row : m.m) {
    for (double& entry : row)
      entry = AnyDouble(random);
  }
  m.isIdentity = random.Below(3) - 1;
  // The first writing would rewrite a matrix whose flag is not known.
  if (m.isIdentity == -1) m.m[0][0] = 2.0;
  to.emplace_back(m);
}

void Make(RandomNumbers& random, std::vector<gsl_Segment>& to) {
  to.emplace_back(AnyPoint(random), AnyPoint(random));
}

void Make(RandomNumbers& random, std::vector<gsl_BBox>& to) {
  to.emplace_back();
  for (int i = random.Below(3); i > 0; --i)
    to.back().Add(AnyPoint(random));
}

void Make(RandomNumbers& random, std::vector<gsl_Plane>& to) {
  to.emplace_back(AnyPoint(random), AnyVector(random));
  to.back().SetMethod(omu_PrimEnum<gsl_DirMethod, 1>::Value(random.Below(5)));
  AnyHistory(random, to.back());
}

void Make(RandomNumbers& random, std::vector<gsl_StLine>& to) {
  to.emplace_back(AnyPoint(random), AnyVector(random));
  to.back().SetMethod(omu_PrimEnum<gsl_LineMethod, 1>::Value(random.Below(8)));
  AnyHistory(random, to.back());
}

/// A datum point of each method. Only a record can set the method.
std::vector<gsl_Dot> DotsOfEveryMethod() {
  std::vector<gsl_Dot> dots;
  for (int i = 0; i < 13; ++i) {
    const omu_PrimEnum<gsl_DotMethod, 1> method(static_cast<gsl_DotMethod>(i));
    dots.push_back(ReadBack<gsl_Dot>(
        Edited(Written(gsl_Dot(i, -i)), {"_method", [&](const auto& to, const auto& field) {
                                           to.WriteString(field, method.AsString());
                                         }})));
  }
  return dots;
}

gsl_Dot AnyDot(RandomNumbers& random) {
  static const std::vector<gsl_Dot> ofEveryMethod = DotsOfEveryMethod();
  if (random.Chance(0.3)) return gsl_Dot(AnyPoint(random));
  if (random.Chance(0.4)) {
    // These copies have one identity and differ in contents.
    gsl_Dot copy = ofEveryMethod[static_cast<std::size_t>(random.Below(13))];
    copy.SetValues(AnyDouble(random), AnyDouble(random), AnyDouble(random));
    return copy;
  }
  gsl_Dot node(AnyInt(random), AnyInt(random));
  node.SetValues(AnyDouble(random), AnyDouble(random), AnyDouble(random));
  return node;
}

void Make(RandomNumbers& random, std::vector<gsl_Dot>& to) {
  to.push_back(AnyDot(random));
}

/// New segments, copies that share datum points, and segments with an empty end.
void Make(RandomNumbers& random, std::vector<gsl_ModelSegment>& to) {
  static const gsl_ModelSegment half = ReadBack<gsl_ModelSegment>(
      Without(Written(gsl_ModelSegment(gsl_Dot(1, 2), gsl_Dot())), "point2"));
  if (!to.empty() && random.Chance(0.3)) {
    to.push_back(to[static_cast<std::size_t>(random.Below(static_cast<int>(to.size())))]);
  } else if (random.Chance(0.2)) {
    to.push_back(random.Chance(0.5) ? gsl_ModelSegment() : half);
  } else {
    to.emplace_back(AnyDot(random), AnyDot(random));
  }
}

bool Same(const gsl_Point& a, const gsl_Point& b) {
  return SameBits(a.x, b.x) && SameBits(a.y, b.y) && SameBits(a.z, b.z) && a.uid == b.uid;
}

bool Same(const gsl_Vector& a, const gsl_Vector& b) {
  return SameBits(a.x, b.x) && SameBits(a.y, b.y) && SameBits(a.z, b.z) &&
         SameBits(a.magnitude, b.magnitude);
}

bool Same(const gsl_PersistentVector& a, const gsl_PersistentVector& b) {
  return Same(a.Vector(), b.Vector()) && a.Uid() == b.Uid();
}

bool Same(const gsl_PersistentMatrix& a, const gsl_PersistentMatrix& b) {
  bool same = a.Matrix().isIdentity == b.Matrix().isIdentity && a.Uid() == b.Uid();
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c)
      same = same && SameBits(a.Matrix().m[r][c], b.Matrix().m[r][c]);
  }
  return same;
}

bool Same(const gsl_Segment& a, const gsl_Segment& b) {
  return Same(a.Point1(), b.Point1()) && Same(a.Point2(), b.Point2()) && a.Uid() == b.Uid();
}

bool Same(const gsl_BBox& a, const gsl_BBox& b) {
  return Same(a.min, b.min) && Same(a.max, b.max) && a.Uid() == b.Uid();
}

/// Planes and axes.
template <class Datum>
bool Same(const Datum& a, const Datum& b) {
  return Same(a.PointOn(), b.PointOn()) && Same(a.Direction(), b.Direction()) &&
         a.Method() == b.Method() && a.Flip() == b.Flip() && a.Ok() == b.Ok() &&
         a.ParentIds() == b.ParentIds() && a.ParentIds().Uid() == b.ParentIds().Uid() &&
         a.OwnerFeatID() == b.OwnerFeatID() && a.Uid() == b.Uid();
}

bool Same(const gsl_Dot& a, const gsl_Dot& b) {
  return Same(a.GetPoint(), b.GetPoint()) && a.GetMethod() == b.GetMethod() &&
         a.GetInstanceId() == b.GetInstanceId() && a.GetEntityId() == b.GetEntityId() &&
         a.Uid() == b.Uid();
}

bool Same(const gsl_ModelSegment& a, const gsl_ModelSegment& b) {
  if (a.HasPoint1() != b.HasPoint1() || a.HasPoint2() != b.HasPoint2()) return false;
  return (!a.HasPoint1() || Same(a.Point1(), b.Point1())) &&
         (!a.HasPoint2() || Same(a.Point2(), b.Point2())) && a.Uid() == b.Uid();
}

/// Maps each datum point that was written to the datum point that was read. There is one for each,
/// however often it is shared.
class Sharing {
public:
  bool Holds(const gsl_ModelSegment& written, const gsl_ModelSegment& read) {
    return (!written.HasPoint1() || Holds(written.Point1(), read.Point1())) &&
           (!written.HasPoint2() || Holds(written.Point2(), read.Point2()));
  }

private:
  bool Holds(const gsl_Dot& written, const gsl_Dot& read) {
    return readFor.emplace(&written, &read).first->second == &read &&
           writtenFor.emplace(&read, &written).first->second == &written;
  }

  std::unordered_map<const gsl_Dot*, const gsl_Dot*> readFor;
  std::unordered_map<const gsl_Dot*, const gsl_Dot*> writtenFor;
};

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
