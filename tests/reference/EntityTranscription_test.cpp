#include "EntityTranscription.h"

#include "Numbers.h"
#include "RandomNumbers.h"
#include "RandomSettings.h"
#include "TestScale.h"
#include "gsl_Plane.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"

#include <cinttypes>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using transcription::kFresh;
using transcription::kUntouched;
using transcription::Pt;
using transcription::Vec;

constexpr std::uint64_t kSeed = 0xE171E5u;

/// Returns the bits of a number. Every NaN has the same bits.
std::string Text(double value) {
  if (std::isnan(value)) return "nan";
  char text[40];
  std::snprintf(text, sizeof text, "%a", value);
  return text;
}

std::string Text(const Vec& v) {
  return Text(v.x) + ' ' + Text(v.y) + ' ' + Text(v.z) + " (" + Text(v.magnitude) + ')';
}

std::string Text(const Pt& p) {
  return Text(p.x) + ' ' + Text(p.y) + ' ' + Text(p.z) + " #" + std::to_string(p.identity);
}

/// Returns coordinates of several kinds. They are from a lattice, where many coincide, near the
/// tolerances, in a range, or sometimes extreme.
double Coordinate(RandomNumbers& random) {
  const double edge[] = {1e-6, -1e-6, 9.99999e-7, 1.000001e-6, 1e-7, 1e-10, 1e-5, 0.5, 1e5};
  const int kind = random.Below(400);
  if (kind < 200) return random.Below(5) - 2;
  if (kind < 260) return edge[random.Below(9)];
  return kind == 399 ? random.Hostile() : random.In(-3.0, 3.0);
}

/// The same objects for both implementations, and an output of each kind.
struct Scene {
  gsl_Point p[5];
  gsl_Vector v[2];
  Pt plainP[5];
  Vec plainV[2];
  gsl_Point out;
  cls_Uid before;
  Pt plainOut;
  double number[3];
  double plainNumber[3];

  Scene(RandomNumbers& random, RandomSettings& settings) {
    for (gsl_Point& point : p)
      point = gsl_Point(Coordinate(random), Coordinate(random), Coordinate(random));
    // Some segments are shorter than the tolerances.
    if (random.Below(8) == 0) p[1] = p[0] + gsl_Vector(Coordinate(random) * 1e-6, 0.0, 0.0);
    for (int i = 0; i < 5; ++i)
      plainP[i] = {p[i].x, p[i].y, p[i].z, i};
    v[0] = gsl_Vector(Coordinate(random), Coordinate(random), Coordinate(random));
    v[1] = random.Below(4) == 0
               ? v[0] * Coordinate(random)
               : gsl_Vector(Coordinate(random), Coordinate(random), Coordinate(random));
    for (gsl_Vector& vector : v)
      settings.MakeStale(vector);
    for (int i = 0; i < 2; ++i)
      plainV[i] = {v[i].x, v[i].y, v[i].z, v[i].magnitude};
    Reset();
  }

  void Reset() {
    out = gsl_Point(7.5, -8.5, 9.5);
    before = out.uid;
    plainOut = {7.5, -8.5, 9.5, kUntouched};
    for (int i = 0; i < 3; ++i)
      number[i] = plainNumber[i] = numbers::kSentinel;
  }

  Pt Plain(const gsl_Point& point, const cls_Uid& untouched) const {
    int identity = point.uid == untouched ? kUntouched : kFresh;
    for (int i = 0; i < 5; ++i) {
      if (point.uid == p[i].uid) identity = i;
    }
    return {point.x, point.y, point.z, identity};
  }

  std::string Library(bool result) const { return Outcome(result, Plain(out, before), number); }
  std::string Plainly(bool result) const { return Outcome(result, plainOut, plainNumber); }

  static std::string Outcome(bool result, const Pt& point, const double* numbers) {
    return std::to_string(result) + ' ' + Text(point) + ' ' + Text(numbers[0]) + ' ' +
           Text(numbers[1]) + ' ' + Text(numbers[2]);
  }

  std::string Describe() const {
    std::string text;
    for (const Pt& point : plainP)
      text += Text(point) + '\n';
    for (const Vec& vector : plainV)
      text += Text(vector) + '\n';
    return text;
  }
};

/// Calls agree(scene, tolerances) on many scenes, each with its own settings.
template <class Agree>
void ForManyScenes(const Agree& agree) {
  RandomSettings settings(kSeed);
  RandomNumbers random(kSeed);
  std::printf("seed %" PRIu64 "\n", kSeed);
  for (long i = 0; i < Scaled(80000); ++i) {
    settings.Draw();
    Scene scene(random, settings);
    const gsl_Util& drawn = settings.Get();
    agree(scene, transcription::Tolerances{drawn.linearTolerance, drawn.zeroTolerance,
                                           drawn.cosineTolerance});
    if (testing::Test::HasFailure()) {
      FAIL() << "scene " << i << ' ' << settings.Describe() << scene.Describe();
    }
  }
}

} // namespace

TEST(EntityTranscription, DistancesOfPointsAgreeBitForBit) {
  ForManyScenes([](Scene& s, const transcription::Tolerances& tol) {
    const gsl_Plane plane(s.p[1], s.v[1]);
    const transcription::Plane plainPlane = {s.plainP[1], s.plainV[1]};
    const gsl_Point& p = s.p[0];
    const Pt& plain = s.plainP[0];
    EXPECT_EQ(p == s.p[1], Equal(plain, s.plainP[1], tol));
    EXPECT_EQ(Text(p.GetDistance(s.p[1])), Text(Distance(plain, s.plainP[1])));
    EXPECT_EQ(Text(p.GetDistance(gsl_StLine(s.p[1], s.v[0]))),
              Text(Distance(plain, transcription::StLine{s.plainP[1], s.plainV[0]})));
    EXPECT_EQ(Text(p.GetSignedDistance(plane)), Text(SignedDistance(plain, plainPlane)));
    EXPECT_EQ(Text(p.GetDistance(plane)), Text(Distance(plain, plainPlane)));
    EXPECT_EQ(Text(p.GetDistance(plane, s.v[0])),
              Text(DistanceAlong(plain, plainPlane, s.plainV[0])));
    EXPECT_EQ(Text(s.p[3].GetDistance(s.p[0], s.p[1], s.p[2])),
              Text(Distance(s.plainP[3], s.plainP[0], s.plainP[1], s.plainP[2], tol)));
    s.number[0] = s.p[2].GetDistance(gsl_Segment(s.p[0], s.p[1]), s.out);
    s.plainNumber[0] =
        Distance(s.plainP[2], transcription::Segment{s.plainP[0], s.plainP[1]}, s.plainOut, tol);
    EXPECT_EQ(s.Library(true), s.Plainly(true));
  });
}

TEST(EntityTranscription, ProjectionsOfPointsAgreeBitForBitAndIdentityForIdentity) {
  ForManyScenes([](Scene& s, const transcription::Tolerances& tol) {
    const gsl_Segment segment(s.p[0], s.p[1]);
    const transcription::Segment plainSegment = {s.plainP[0], s.plainP[1]};
    bool result = s.p[2].ProjectOn(segment, s.out, s.number[0]);
    EXPECT_EQ(s.Library(result), s.Plainly(ProjectOn(s.plainP[2], plainSegment, tol.linear,
                                                     s.plainOut, s.plainNumber[0])));
    s.Reset();
    result = s.p[3].ProjectOn(s.p[0], s.p[1], s.p[2], s.out, s.number);
    EXPECT_EQ(s.Library(result), s.Plainly(ProjectOn(s.plainP[3], s.plainP[0], s.plainP[1],
                                                     s.plainP[2], s.plainOut, s.plainNumber, tol)));
  });
}

TEST(EntityTranscription, RaysAgreeBitForBitAndIdentityForIdentity) {
  ForManyScenes([](Scene& s, const transcription::Tolerances& tol) {
    bool result = s.p[2].RayIntersect(s.p[0], s.p[1], s.v[0], s.out, s.number);
    EXPECT_EQ(s.Library(result),
              s.Plainly(RayIntersect(s.plainP[2], s.plainP[0], s.plainP[1], s.plainV[0], s.plainOut,
                                     s.plainNumber, tol)));
    s.Reset();
    result = s.p[0].RayIntersect(s.v[0], gsl_Plane(s.p[1], s.v[1]), s.out);
    EXPECT_EQ(s.Library(result),
              s.Plainly(RayIntersect(s.plainP[0], s.plainV[0], {s.plainP[1], s.plainV[1]},
                                     s.plainOut, tol)));
  });
}

TEST(EntityTranscription, LinesAgreeBitForBitAndIdentityForIdentity) {
  ForManyScenes([](Scene& s, const transcription::Tolerances& tol) {
    const bool result =
        gsl_StLine(s.p[0], s.v[0]).Intersect(gsl_StLine(s.p[1], s.v[1]), s.out, s.number[0]);
    EXPECT_EQ(s.Library(result),
              s.Plainly(Intersect(transcription::StLine{s.plainP[0], s.plainV[0]},
                                  transcription::StLine{s.plainP[1], s.plainV[1]}, s.plainOut,
                                  s.plainNumber[0], tol)));
  });
}

TEST(EntityTranscription, SegmentsAgreeBitForBitAndIdentityForIdentity) {
  ForManyScenes([](Scene& s, const transcription::Tolerances& tol) {
    const gsl_Segment a(s.p[0], s.p[1]);
    // Every second pair shares an end.
    const int second = s.p[4].x > 0.0 ? 2 : 0;
    const gsl_Segment b(s.p[second], s.p[3]);
    const transcription::Segment plainA = {s.plainP[0], s.plainP[1]};
    const transcription::Segment plainB = {s.plainP[second], s.plainP[3]};
    bool result = a.Intersect(gsl_StLine(s.p[2], s.v[0]), s.out);
    EXPECT_EQ(s.Library(result),
              s.Plainly(Intersect(plainA, transcription::StLine{s.plainP[2], s.plainV[0]},
                                  s.plainOut, tol)));
    s.Reset();
    result = a.Intersect(b, s.out);
    EXPECT_EQ(s.Library(result), s.Plainly(Intersect(plainA, plainB, s.plainOut, tol)));
    s.Reset();
    gsl_Segment connection(s.out, s.out);
    transcription::Segment plainConnection = {s.plainOut, s.plainOut};
    a.GetDistance(b, connection);
    ShortestConnection(plainA, plainB, plainConnection, tol);
    EXPECT_EQ(Text(s.Plain(connection.Point1(), s.before)), Text(plainConnection.point1));
    EXPECT_EQ(Text(s.Plain(connection.Point2(), s.before)), Text(plainConnection.point2));
  });
}
