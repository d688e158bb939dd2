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

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <random>
#include <vector>

// Random objects of every class are written, read in one load and written again: the two stores
// must agree bit for bit, identities and sharing included.

namespace {

constexpr long kObjects = Scaled(1000000);
constexpr std::size_t kBatch = 500;

/// Any 64 bits: NaNs, infinities and denormals come up.
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
  // An identity that is not known yet would be snapped by the first writing.
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

gsl_Dot AnyDot(RandomNumbers& random) {
  if (random.Chance(0.5)) return gsl_Dot(AnyPoint(random));
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

struct Clock {
  std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
  double Nanoseconds() const {
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start)
        .count();
  }
};

template <class C>
void ExpectRoundTrips(const char* name) {
  const std::uint64_t seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  RandomNumbers random(seed);
  double writing = 0.0;
  double reading = 0.0;
  double bytes = 0.0;
  long done = 0;
  for (; done < kObjects; done += static_cast<long>(kBatch)) {
    std::vector<C> objects;
    while (objects.size() < kBatch)
      Make(random, objects);

    cls_RecordStore store;
    const Clock writeClock;
    {
      cls_Save save(store);
      for (const C& object : objects)
        object.DBWrite(cls_WriteVisitor(save));
    }
    writing += writeClock.Nanoseconds();

    std::vector<C> read;
    read.reserve(kBatch);
    const Clock readClock;
    cls_Load load(store);
    for (std::size_t i = 0; i < kBatch; ++i)
      read.push_back(C(cls_ReadVisitor(load, i)));
    reading += readClock.Nanoseconds();

    cls_RecordStore again;
    {
      cls_Save save(again);
      for (const C& object : read)
        object.DBWrite(cls_WriteVisitor(save));
    }
    ASSERT_TRUE(SameRecords(store, again));
    if (done == 0) {
      const std::vector<unsigned char> form = store.ToBytes();
      bytes = static_cast<double>(form.size()) / static_cast<double>(kBatch);
      const cls_RecordStore decoded = cls_RecordStore::FromBytes(form.data(), form.size());
      ASSERT_TRUE(SameRecords(store, decoded));
    }
  }
  std::printf("%-22s %8ld objects  write %6.0f ns  read %6.0f ns  %6.1f bytes each\n", name, done,
              writing / static_cast<double>(done), reading / static_cast<double>(done), bytes);
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

TEST(RoundTrip, ArraysAndLists) {
  const std::uint64_t seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  RandomNumbers random(seed);
  for (long i = 0; i < Scaled(2000); ++i) {
    omu_xoObjVarray<gsl_Dot> dots(static_cast<unsigned int>(random.Below(5)), AnyDouble(random));
    for (int n = random.Below(20); n > 0; --n)
      dots.Add(random.Chance(0.3) ? nullptr : new gsl_Dot(AnyDot(random)));
    cls_xo1DArrayList<gsl_ModelSegment> segments;
    std::vector<gsl_ModelSegment> made;
    for (int n = random.Below(20); n > 0; --n) {
      Make(random, made);
      segments.Append(made.back());
    }
    const cls_RecordStore store = Written(dots, segments);
    cls_Load load(store);
    const omu_xoObjVarray<gsl_Dot> readDots(cls_ReadVisitor(load, 0), nullptr, nullptr);
    const cls_ReadVisitor list(load, 1);
    const cls_xo1DArrayList<gsl_ModelSegment> readSegments(list, list.GetUid());
    ASSERT_TRUE(SameRecords(store, Written(readDots, readSegments)));
  }
}
