// These outputs are an input, the object itself, or a part of one. Each call must have the result
// of the same call with a separate output of the same contents. scripts/check_outputs.py compares
// the comments that name an operation with the headers.

#include "Numbers.h"
#include "RandomSettings.h"
#include "TestScale.h"
#include "cls_xo1DArrayList.h"
#include "gsl_BBox.h"
#include "gsl_Batch.h"
#include "gsl_LinearEqnLUDSolver.h"
#include "gsl_Matrix.h"
#include "gsl_Segment.h"
#include "gsl_utils.h"
#include "omu_PrimTuple.h"

#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace {

using numbers::SameBits;

constexpr std::uint64_t kSeed = 0xA11A5u;

/// Points and vectors, many of which coincide and some of which are degenerate, under random
/// settings.
struct Scene {
  gsl_Point p[6];
  gsl_Vector v[3];

  explicit Scene(RandomNumbers& random) {
    for (gsl_Point& point : p)
      point = gsl_Point(Number(random), Number(random), Number(random));
    for (gsl_Vector& vector : v)
      vector = gsl_Vector(Number(random), Number(random), Number(random));
  }

  static double Number(RandomNumbers& random) {
    if (random.Chance(0.5)) return random.Below(4) - 1;
    return random.Chance(0.05) ? 1e-7 : random.In(-2.0, 2.0);
  }
};

template <class Work>
void ForManyScenes(const Work& work) {
  RandomSettings settings(kSeed);
  RandomNumbers random(kSeed);
  for (long i = 0; i < Scaled(4000); ++i) {
    settings.Draw();
    Scene scene(random);
    for (gsl_Vector& vector : scene.v)
      settings.MakeStale(vector);
    work(scene);
    ASSERT_FALSE(testing::Test::HasFailure())
        << settings.Describe() << "scene " << i << ", seed " << kSeed;
  }
}

std::string Text(double value) {
  char text[40];
  std::snprintf(text, sizeof text, " %a", value);
  return std::isnan(value) ? " nan" : text;
}

std::string Text(const gsl_Vector& v) {
  return Text(v.x) + Text(v.y) + Text(v.z) + Text(v.magnitude);
}

/// Coordinates, and the identity as a place in `known`, or as a fresh identity.
std::string Text(const gsl_Point& p, const Scene& known) {
  std::string identity = " fresh";
  for (int i = 0; i < 6; ++i) {
    if (p.uid == known.p[i].uid) identity = " p" + std::to_string(i);
  }
  return Text(p.x) + Text(p.y) + Text(p.z) + identity;
}

std::string Text(const double* values, int count) {
  std::string text;
  for (int i = 0; i < count; ++i)
    text += Text(values[i]);
  return text;
}

gsl_Matrix AnyMatrix(const Scene& s) {
  gsl_Matrix m;
  m.SetRow(0, s.v[0]);
  m.SetRow(1, s.v[1]);
  m.SetRow(2, s.v[2]);
  m.SetTranslation(gsl_Vector(s.p[0].x, s.p[0].y, s.p[0].z));
  m.m[3][3] = 1.5;
  return m;
}

} // namespace

// ---- Points

// output: gsl_Point::GetDistance(gsl_Segment, gsl_Point&)
TEST(Aliasing, ClosestPointOfASegmentMayBeThePointItself) {
  gsl_Point p(1.0, 3.0, 0.0);
  EXPECT_EQ(p.GetDistance(gsl_Segment({0.0, 0.0, 0.0}, {2.0, 0.0, 0.0}), p), 3.0);
  EXPECT_XYZ(p, 1.0, 0.0, 0.0);
  ForManyScenes([](const Scene& s) {
    const gsl_Segment segment(s.p[1], s.p[2]);
    gsl_Point apart = s.p[0];
    const double expected = s.p[0].GetDistance(segment, apart);
    gsl_Point own = s.p[0];
    EXPECT_TRUE(SameBits(own.GetDistance(segment, own), expected));
    EXPECT_EQ(Text(own, s), Text(apart, s));
  });
}

// output: gsl_Point::ProjectOn(gsl_StLine, double&)
TEST(Aliasing, ParameterOnALineMayBeACoordinateOfThePoint) {
  ForManyScenes([](const Scene& s) {
    const gsl_StLine line(s.p[1], s.v[0]);
    for (unsigned int i = 0; i < 3; ++i) {
      double t = 0.0;
      gsl_Point own = s.p[0];
      const gsl_Point expected = own.ProjectOn(line, t);
      const gsl_Point foot = own.ProjectOn(line, own[i]);
      EXPECT_EQ(Text(foot, s), Text(expected, s));
      EXPECT_TRUE(SameBits(own[i], t));
    }
  });
}

// output: gsl_Point::ProjectOn(gsl_Segment, double, gsl_Point&, double&)
// output: gsl_Point::ProjectOn(gsl_Segment, gsl_Point&, double&)
TEST(Aliasing, FootOnASegmentMayBeThePointAndItsParameterACoordinate) {
  ForManyScenes([](const Scene& s) {
    const gsl_Segment segment(s.p[1], s.p[2]);
    gsl_Point apart = s.p[0];
    double t = s.p[0].y;
    const bool expected = s.p[0].ProjectOn(segment, 0.25, apart, t);
    gsl_Point own = s.p[0];
    double parameter = s.p[0].y;
    EXPECT_EQ(own.ProjectOn(segment, 0.25, own, parameter), expected);
    EXPECT_EQ(Text(own, s) + Text(parameter), Text(apart, s) + Text(t));
    own = s.p[0];
    gsl_Point foot = s.p[0];
    EXPECT_EQ(own.ProjectOn(segment, 0.25, foot, own.y), expected);
    EXPECT_EQ(Text(foot, s) + Text(own.y), Text(apart, s) + Text(t));

    apart = s.p[0];
    t = s.p[0].z;
    const bool byDefault = s.p[0].ProjectOn(segment, apart, t);
    own = s.p[0];
    parameter = s.p[0].z;
    EXPECT_EQ(own.ProjectOn(segment, own, parameter), byDefault);
    EXPECT_EQ(Text(own, s) + Text(parameter), Text(apart, s) + Text(t));
  });
}

// output: gsl_Point::ProjectOn(gsl_Point, gsl_Point, gsl_Point, gsl_Point&, double*)
TEST(Aliasing, FootOnATriangleMayBeThePointOrACorner) {
  ForManyScenes([](const Scene& s) {
    for (int k = 0; k < 4; ++k) {
      gsl_Point apart = s.p[k];
      double weights[3] = {};
      const bool expected = s.p[0].ProjectOn(s.p[1], s.p[2], s.p[3], apart, weights);
      Scene own = s;
      double found[3] = {};
      EXPECT_EQ(own.p[0].ProjectOn(own.p[1], own.p[2], own.p[3], own.p[k], found), expected);
      EXPECT_EQ(Text(own.p[k], s) + Text(found, 3), Text(apart, s) + Text(weights, 3));
    }
  });
}

// output: gsl_Point::RayIntersect(gsl_Point, gsl_Point, gsl_Vector, gsl_Point&, double*)
TEST(Aliasing, CrossingOfARayWithASegmentMayBeThePointOrAnEnd) {
  ForManyScenes([](const Scene& s) {
    for (int k = 0; k < 3; ++k) {
      gsl_Point apart = s.p[k];
      double weights[2] = {};
      const bool expected = s.p[0].RayIntersect(s.p[1], s.p[2], s.v[0], apart, weights);
      Scene own = s;
      double found[2] = {};
      EXPECT_EQ(own.p[0].RayIntersect(own.p[1], own.p[2], own.v[0], own.p[k], found), expected);
      EXPECT_EQ(Text(own.p[k], s) + Text(found, 2), Text(apart, s) + Text(weights, 2));
    }
  });
}

// output: gsl_Point::RayIntersect(gsl_Vector, gsl_Plane, gsl_Point&)
TEST(Aliasing, CrossingOfARayWithAPlaneMayBeThePoint) {
  ForManyScenes([](const Scene& s) {
    const gsl_Plane plane(s.p[1], s.v[1]);
    gsl_Point apart = s.p[0];
    const bool expected = s.p[0].RayIntersect(s.v[0], plane, apart);
    gsl_Point own = s.p[0];
    EXPECT_EQ(own.RayIntersect(s.v[0], plane, own), expected);
    EXPECT_EQ(Text(own, s), Text(apart, s));
  });
}

// ---- Vectors and the arithmetic below them

// output: gsl_Vector::AngleBetween(gsl_Vector, gsl_Vector, double&)
TEST(Aliasing, AngleBetweenVectorsMayBeAComponentOfAnyOfThem) {
  ForManyScenes([](const Scene& s) {
    for (int k = 0; k < 3; ++k) {
      for (unsigned int i = 0; i < 3; ++i) {
        double angle = s.v[k][i];
        const bool expected = s.v[0].AngleBetween(s.v[1], s.v[2], angle);
        Scene own = s;
        EXPECT_EQ(own.v[0].AngleBetween(own.v[1], own.v[2], own.v[k][i]), expected);
        EXPECT_TRUE(SameBits(own.v[k][i], angle));
      }
    }
  });
}

// output: gsl_arithmetic::Normalize(Measured3&, double)
TEST(Aliasing, ToleranceOfANormalisationMayBeAComponent) {
  gsl_arithmetic::Measured3 v = gsl_arithmetic::Measure({3.0, 0.0, 4.0});
  EXPECT_TRUE(gsl_arithmetic::Normalize(v, v.c.x));
  EXPECT_XYZ(v.c, 0.6, 0.0, 0.8);
  EXPECT_EQ(v.magnitude, 1.0);
}

// output: gsl_arithmetic::LowerTo(C&, Limit)
// output: gsl_arithmetic::RaiseTo(C&, Limit)
TEST(Aliasing, LimitMayBeTheLimitedCoordinates) {
  gsl_arithmetic::Coord3 c = {1.0, -2.0, numbers::kNaN};
  gsl_arithmetic::LowerTo(c, c);
  gsl_arithmetic::RaiseTo(c, c);
  EXPECT_EQ(c.x, 1.0);
  EXPECT_EQ(c.y, -2.0);
  EXPECT_TRUE(std::isnan(c.z));
}

// ---- Transforms

// output: gsl_Matrix::Transform(gsl_Point&)
// output: gsl_Matrix::Transform(gsl_Vector&)
// output: gsl_Matrix::GetTranslation(gsl_Vector&)
TEST(Aliasing, MatrixHasNoPointAndNoVectorToBeAnOutput) {
  ForManyScenes([](const Scene& s) {
    // The transform is in place: every component is read before one is written.
    const gsl_Matrix m = AnyMatrix(s);
    const double x = m.m[0][0] * s.p[1].x + m.m[0][1] * s.p[1].y + m.m[0][2] * s.p[1].z;
    const double z = m.m[2][0] * s.p[1].x + m.m[2][1] * s.p[1].y + m.m[2][2] * s.p[1].z;
    gsl_Point point = s.p[1];
    m.Transform(point);
    EXPECT_TRUE(SameBits(point.x, x + m.m[0][3]));
    EXPECT_TRUE(SameBits(point.z, z + m.m[2][3]));
    gsl_Vector vector(s.p[1].x, s.p[1].y, s.p[1].z);
    m.Transform(vector);
    EXPECT_TRUE(SameBits(vector.x, x));
    EXPECT_TRUE(SameBits(vector.z, z));
    m.GetTranslation(vector);
    EXPECT_EQ(Text(vector), Text(gsl_Vector(m.m[0][3], m.m[1][3], m.m[2][3])));
  });
}

// output: gsl_Matrix::GetRotationAngles(double&, double&, double&)
TEST(Aliasing, RotationAnglesMayBeEntriesOfTheMatrix) {
  ForManyScenes([](const Scene& s) {
    const gsl_Matrix m = AnyMatrix(s);
    double expected[3];
    m.GetRotationAngles(expected[0], expected[1], expected[2]);
    for (int first = 0; first < 16; ++first) {
      gsl_Matrix own = m;
      double* const entries = &own.m[0][0];
      double& a = entries[first];
      double& b = entries[(first + 5) % 16];
      double& c = entries[(first + 10) % 16];
      own.GetRotationAngles(a, b, c);
      EXPECT_EQ(Text(a) + Text(b) + Text(c), Text(expected, 3));
    }
  });
}

// output: gsl_Matrix::GetAxisRotation(gsl_Point&, gsl_Vector&, double&)
TEST(Aliasing, AngleOfARotationMayBeAnEntryOfTheMatrix) {
  ForManyScenes([](const Scene& s) {
    const gsl_Matrix m = AnyMatrix(s);
    gsl_Point expectedPoint;
    gsl_Vector expectedAxis;
    double expected = 0.0;
    m.GetAxisRotation(expectedPoint, expectedAxis, expected);
    for (int i = 0; i < 16; ++i) {
      gsl_Matrix own = m;
      double& angle = *(&own.m[0][0] + i);
      gsl_Point point;
      gsl_Vector axis;
      own.GetAxisRotation(point, axis, angle);
      EXPECT_EQ(Text(point, s) + Text(axis) + Text(angle),
                Text(expectedPoint, s) + Text(expectedAxis) + Text(expected));
    }
  });
}

// output: gsl_Matrix::AsArray(double*)
TEST(Aliasing, ArrayOfAMatrixMayBeItsOwn) {
  ForManyScenes([](const Scene& s) {
    const gsl_Matrix m = AnyMatrix(s);
    gsl_Matrix own = m;
    own.AsArray(own.m);
    EXPECT_EQ(std::memcmp(own.m, m.m, sizeof m.m), 0);
  });
}

TEST(Aliasing, MatrixMayBeConcatenatedWithItself) {
  ForManyScenes([](const Scene& s) {
    gsl_Matrix apart = AnyMatrix(s);
    const gsl_Matrix other = apart;
    gsl_Matrix own = other;
    apart.Concatenate(other);
    own.Concatenate(own);
    EXPECT_EQ(Text(&own.m[0][0], 16), Text(&apart.m[0][0], 16));
  });
}

// ---- Lines and segments

// output: gsl_StLine::Intersect(gsl_Plane, gsl_Point&)
// output: gsl_StLine::Intersect(gsl_StLine, gsl_Point&, double&)
// output: gsl_Segment::Intersect(gsl_StLine, gsl_Point&)
// output: gsl_Segment::Intersect(gsl_Segment, gsl_Point&)
TEST(Aliasing, PointThatAnEntityWasMadeFromMayBeItsOutput) {
  // They hold copies of the point, so this is not an alias.
  ForManyScenes([](const Scene& s) {
    Scene own = s;
    const gsl_StLine line(own.p[0], own.v[0]), other(own.p[1], own.v[1]);
    const gsl_Plane plane(own.p[1], own.v[1]);
    const gsl_Segment segment(own.p[0], own.p[2]), second(own.p[1], own.p[3]);
    gsl_Point apart = s.p[0];
    double dist = 0.5, gap = 0.5;
    EXPECT_EQ(line.Intersect(plane, own.p[0]), line.Intersect(plane, apart));
    EXPECT_EQ(Text(own.p[0], s), Text(apart, s));
    own.p[0] = apart = s.p[0];
    EXPECT_EQ(line.Intersect(other, own.p[0], dist), line.Intersect(other, apart, gap));
    EXPECT_EQ(Text(own.p[0], s) + Text(dist), Text(apart, s) + Text(gap));
    own.p[0] = apart = s.p[0];
    EXPECT_EQ(segment.Intersect(other, own.p[0]), segment.Intersect(other, apart));
    EXPECT_EQ(Text(own.p[0], s), Text(apart, s));
    own.p[0] = apart = s.p[0];
    EXPECT_EQ(segment.Intersect(second, own.p[0]), segment.Intersect(second, apart));
    EXPECT_EQ(Text(own.p[0], s), Text(apart, s));
  });
}

// output: gsl_Segment::GetDistance(gsl_Segment, gsl_Segment&)
TEST(Aliasing, ShortestConnectionMayBeEitherSegment) {
  ForManyScenes([](const Scene& s) {
    for (int k = 0; k < 2; ++k) {
      const gsl_Segment first(s.p[0], s.p[1]), second(s.p[2], s.p[3]);
      gsl_Segment apart = k == 0 ? first : second;
      first.GetDistance(second, apart);
      gsl_Segment own[2] = {first, second};
      own[0].GetDistance(own[1], own[k]);
      EXPECT_EQ(Text(own[k].Point1(), s) + Text(own[k].Point2(), s),
                Text(apart.Point1(), s) + Text(apart.Point2(), s));
    }
    gsl_Segment apart(s.p[0], s.p[1]);
    const gsl_Segment same = apart;
    same.GetDistance(same, apart);
    gsl_Segment own = same;
    own.GetDistance(own, own);
    EXPECT_EQ(Text(own.Point1(), s) + Text(own.Point2(), s),
              Text(apart.Point1(), s) + Text(apart.Point2(), s));
  });
}

// ---- Boxes

TEST(Aliasing, BoxMayGrowByItsCornersAndItself) {
  ForManyScenes([](const Scene& s) {
    gsl_BBox box;
    if (s.p[0].x > -0.5) box.Add(s.p[0]);
    if (s.p[0].x > 0.5) box.Add(s.p[1]);
    const auto text = [&](const gsl_BBox& b) { return Text(b.min, s) + Text(b.max, s); };
    const std::string same = text(box);
    gsl_BBox own = box;
    own.Add(own);
    EXPECT_EQ(text(own), same) << "an empty box stays empty";
    for (gsl_Point gsl_BBox::*corner : {&gsl_BBox::min, &gsl_BBox::max}) {
      gsl_BBox apart = box;
      apart.Add(gsl_Point(box.*corner));
      own = box;
      own.Add(own.*corner);
      EXPECT_EQ(text(own), text(apart));
    }
  });
}

// ---- Three points

// output: gsl_NormalToThreePoints(gsl_Point, gsl_Point, gsl_Point, gsl_Vector&)
// output: gsl_ComputeCircumCircle(gsl_Point, gsl_Point, gsl_Point, gsl_Point&, gsl_Vector&)
TEST(Aliasing, CentreOfACircleMayBeOneOfItsPoints) {
  ForManyScenes([](const Scene& s) {
    for (int k = 0; k < 3; ++k) {
      gsl_Point apart = s.p[k];
      gsl_Vector expected;
      gsl_ComputeCircumCircle(s.p[0], s.p[1], s.p[2], apart, expected);
      Scene own = s;
      gsl_Vector normal;
      gsl_ComputeCircumCircle(own.p[0], own.p[1], own.p[2], own.p[k], normal);
      EXPECT_EQ(Text(own.p[k], s) + Text(normal), Text(apart, s) + Text(expected));
    }
  });
}

// output: gsl_Transcribe3PointsIntoOriginAndAxes(bool, gsl_Point, gsl_Point, gsl_Point, gsl_Point&,
// gsl_Vector&, gsl_Vector&, gsl_Vector&)
TEST(Aliasing, OriginOfAFrameMayBeOneOfItsPoints) {
  ForManyScenes([](const Scene& s) {
    for (int k = 0; k < 6; ++k) {
      const bool atCentre = k > 2;
      gsl_Point apart = s.p[k % 3];
      gsl_Vector expected[3];
      gsl_Transcribe3PointsIntoOriginAndAxes(atCentre, s.p[0], s.p[1], s.p[2], apart, expected[0],
                                             expected[1], expected[2]);
      Scene own = s;
      gsl_Vector axes[3];
      gsl_Transcribe3PointsIntoOriginAndAxes(atCentre, own.p[0], own.p[1], own.p[2], own.p[k % 3],
                                             axes[0], axes[1], axes[2]);
      EXPECT_EQ(Text(own.p[k % 3], s) + Text(axes[0]) + Text(axes[1]) + Text(axes[2]),
                Text(apart, s) + Text(expected[0]) + Text(expected[1]) + Text(expected[2]));
    }
  });
}

// ---- Sweeps

// output: gsl_TriTriMinDirectionalDist(gsl_Vector, gsl_Point, gsl_Point, gsl_Point, gsl_Point,
// gsl_Point, gsl_Point, bool, double, gsl_Point*, double&)
TEST(Aliasing, ContactsOfTrianglesMayBeTheirVerticesAndTheDistanceACoordinate) {
  const bool twoSided[2] = {true, true};
  ForManyScenes([&](const Scene& s) {
    const auto sweep = [&](const Scene& in, gsl_Point* contacts, double& distance) {
      return gsl_TriTriMinDirectionalDist(in.v[0], in.p[0], in.p[1], in.p[2], in.p[3], in.p[4],
                                          in.p[5], twoSided, 0.5, contacts, distance);
    };
    // The contacts are every pair of neighbours: two vertices of one triangle, or one vertex of
    // each.
    for (int k = 0; k < 5; ++k) {
      gsl_Point apart[2] = {s.p[k], s.p[k + 1]};
      double expected = 9.0;
      const bool result = sweep(s, apart, expected);
      Scene own = s;
      double distance = 9.0;
      EXPECT_EQ(sweep(own, &own.p[k], distance), result);
      EXPECT_EQ(Text(own.p[k], s) + Text(own.p[k + 1], s) + Text(distance),
                Text(apart[0], s) + Text(apart[1], s) + Text(expected));
    }
    for (int k = 0; k < 7; ++k) {
      Scene own = s;
      double& distance = k < 6 ? own.p[k].z : own.v[0].magnitude;
      double expected = distance;
      gsl_Point apart[2], contacts[2] = {apart[0], apart[1]};
      const bool result = sweep(s, apart, expected);
      EXPECT_EQ(sweep(own, contacts, distance), result);
      EXPECT_EQ(Text(contacts[0], s) + Text(contacts[1], s) + Text(distance),
                Text(apart[0], s) + Text(apart[1], s) + Text(expected));
    }
  });
}

// output: gsl_InPlaneSegSegMinDirectionalDist(gsl_Vector, gsl_Point, gsl_Point, gsl_Point,
// gsl_Point, bool, double, gsl_Point*, double&)
TEST(Aliasing, ContactsOfSegmentsMayBeTheirEndsAndTheDistanceACoordinate) {
  const bool twoSided[2] = {true, true};
  ForManyScenes([&](Scene& s) {
    for (gsl_Point& point : s.p)
      point.z = 0.0;
    s.v[0].z = 0.0;
    const auto sweep = [&](const Scene& in, gsl_Point* contacts, double& distance) {
      return gsl_InPlaneSegSegMinDirectionalDist(in.v[0], in.p[0], in.p[1], in.p[2], in.p[3],
                                                 twoSided, 0.0, contacts, distance);
    };
    for (int k = 0; k < 3; ++k) {
      gsl_Point apart[2] = {s.p[k], s.p[k + 1]};
      double expected = 9.0;
      const bool result = sweep(s, apart, expected);
      Scene own = s;
      double distance = 9.0;
      EXPECT_EQ(sweep(own, &own.p[k], distance), result);
      EXPECT_EQ(Text(own.p[k], s) + Text(own.p[k + 1], s) + Text(distance),
                Text(apart[0], s) + Text(apart[1], s) + Text(expected));
    }
    for (int k = 0; k < 5; ++k) {
      Scene own = s;
      double& distance = k < 4 ? own.p[k].y : own.v[0].magnitude;
      double expected = distance;
      gsl_Point apart[2], contacts[2] = {apart[0], apart[1]};
      const bool result = sweep(s, apart, expected);
      EXPECT_EQ(sweep(own, contacts, distance), result);
      EXPECT_EQ(Text(contacts[0], s) + Text(contacts[1], s) + Text(distance),
                Text(apart[0], s) + Text(apart[1], s) + Text(expected));
    }
  });
}

// ---- Solver, graphs, module

// output: gsl_LinearEqnLUDSolver::SetMatrix(double**, unsigned)
// output: gsl_LinearEqnLUDSolver::Solve(double*, double*)
TEST(Aliasing, SolutionMayBeTheRightHandSide) {
  RandomNumbers random(kSeed);
  for (unsigned int n = 1; n < 40; ++n) {
    std::vector<double> entries(n * n), b(n), x(n);
    for (double& value : entries)
      value = random.In(-1.0, 1.0);
    for (double& value : b)
      value = random.In(-1.0, 1.0);
    std::vector<double*> rows(n);
    for (unsigned int i = 0; i < n; ++i)
      rows[i] = &entries[i * n];
    gsl_LinearEqnLUDSolver solver;
    solver.SetMatrix(rows.data(), n);
    ASSERT_TRUE(solver.Solve(b.data(), x.data()));
    ASSERT_TRUE(solver.Solve(b.data(), b.data()));
    EXPECT_EQ(b, x);
  }
}

// The declaration excludes aliases: labels, count and adjacency must be apart.
// output: gsl_DepthFirstSearch(bool, int, int*, int&)

// The host's counter is not an input of any other operation.
// output: gsl_initialize(int&)
// output: gsl_finalize(int&)

// ---- Arrays and holders

TEST(Aliasing, ListMayReceiveItsOwnElement) {
  cls_xo1DArrayList<gsl_Point> list;
  list.Append(gsl_Point(1.0, 2.0, 3.0));
  for (int i = 0; i < 100; ++i) {
    // Every second time a copy shares the elements.
    const cls_xo1DArrayList<gsl_Point> copy = i % 2 == 0 ? list : cls_xo1DArrayList<gsl_Point>();
    list.Append(list[static_cast<std::size_t>(i)]);
  }
  ASSERT_EQ(list.Count(), 101u);
  for (std::size_t i = 0; i < list.Count(); ++i) {
    EXPECT_XYZ(list[i], 1.0, 2.0, 3.0);
    EXPECT_EQ(list[i].uid, list[0].uid);
  }
}

/// Four packed arrays of points, with degenerate segments among them.
struct BatchScene {
  static constexpr std::size_t kCount = 37;
  std::vector<double> p[4];

  BatchScene() {
    RandomNumbers random(kSeed);
    for (std::vector<double>& numbers : p) {
      for (std::size_t i = 0; i < 3 * kCount; ++i)
        numbers.push_back(Scene::Number(random));
    }
    for (std::size_t i = 0; i < 12; ++i)
      p[1][i] = p[0][i];
  }
  gsl_BatchPoints operator[](std::size_t i) const { return {p[i].data()}; }
};

/// Expects the same numbers in arrays, NaN for NaN.
void ExpectSameNumbers(const std::vector<double>& a, const std::vector<double>& b) {
  ASSERT_EQ(a.size(), b.size());
  for (std::size_t i = 0; i < a.size(); ++i)
    EXPECT_TRUE(SameBits(a[i], b[i])) << i;
}

// output: gsl_PointSegmentDistances(std::size_t, gsl_BatchPoints, gsl_BatchPoints, gsl_BatchPoints,
// double*, double*, gsl_BatchPart*)
TEST(Aliasing, NearestPointsMayBeAnyInput) {
  constexpr std::size_t kCount = BatchScene::kCount;
  for (std::size_t output = 0; output < 3; ++output) {
    const BatchScene s;
    std::vector<double> expected(kCount), nearest = s.p[output];
    gsl_PointSegmentDistances(kCount, s[0], s[1], s[2], expected.data(), nearest.data());
    BatchScene own;
    std::vector<double> distances(kCount);
    gsl_PointSegmentDistances(kCount, own[0], own[1], own[2], distances.data(),
                              own.p[output].data());
    ExpectSameNumbers(distances, expected);
    ExpectSameNumbers(own.p[output], nearest);
  }
}

// output: gsl_PointTriangleDistances(std::size_t, gsl_BatchPoints, gsl_BatchPoints,
// gsl_BatchPoints, gsl_BatchPoints, double*)
TEST(Aliasing, InputsOfABatchMayBeOneArray) {
  constexpr std::size_t kCount = BatchScene::kCount;
  const BatchScene s;
  const std::vector<double> copy = s.p[0];
  std::vector<double> expected(kCount), distances(kCount);
  gsl_PointTriangleDistances(kCount, {copy.data()}, s[0], s[2], s[3], expected.data());
  gsl_PointTriangleDistances(kCount, s[0], s[0], s[2], s[3], distances.data());
  ExpectSameNumbers(distances, expected);
}

// output: gsl_SegmentDistances(std::size_t, gsl_BatchPoints, gsl_BatchPoints, gsl_BatchPoints,
// gsl_BatchPoints, double*, double*, double*, gsl_BatchPart*, gsl_BatchPart*)
TEST(Aliasing, EndsOfConnectionsMayBeAnyInput) {
  constexpr std::size_t kCount = BatchScene::kCount;
  for (std::size_t a = 0; a < 4; ++a) {
    const std::size_t b = (a + 1) % 4;
    const BatchScene s;
    std::vector<double> expected(kCount), onA = s.p[a], onB = s.p[b];
    gsl_SegmentDistances(kCount, s[0], s[1], s[2], s[3], expected.data(), onA.data(), onB.data());
    BatchScene own;
    std::vector<double> distances(kCount);
    gsl_SegmentDistances(kCount, own[0], own[1], own[2], own[3], distances.data(), own.p[a].data(),
                         own.p[b].data());
    ExpectSameNumbers(distances, expected);
    ExpectSameNumbers(own.p[a], onA);
    ExpectSameNumbers(own.p[b], onB);
  }
}

// output: gsl_SweepTriangles(std::size_t, gsl_Vector, gsl_BatchTriangles, gsl_BatchTriangles, bool,
// double, gsl_BatchContact&)
TEST(Aliasing, BothTrianglesOfASweepMayBeOneArray) {
  constexpr std::size_t kCount = BatchScene::kCount;
  const BatchScene s, other;
  const bool twoSided[2] = {true, true};
  const gsl_Vector d(0.0, 0.3, 1.0);
  gsl_BatchContact expected = {1e3, {}, {}, 99}, contact = expected;
  const bool result = gsl_SweepTriangles(kCount, d, {{s[0], s[2], s[3]}},
                                         {{other[2], other[3], other[0]}}, twoSided, 0.0, expected);
  EXPECT_EQ(gsl_SweepTriangles(kCount, d, {{s[0], s[2], s[3]}}, {{s[2], s[3], s[0]}}, twoSided, 0.0,
                               contact),
            result);
  EXPECT_EQ(contact.distance, expected.distance);
  EXPECT_EQ(contact.pair, expected.pair);
}

// output: gsl_PrepareTriangles(std::size_t, gsl_BatchTriangles, double*)
// output: gsl_SweepPreparedTriangles(std::size_t, gsl_Vector, gsl_PreparedTriangles,
// gsl_PreparedTriangles, bool, double, gsl_BatchContact&)
TEST(Aliasing, BothPreparedTrianglesOfASweepMayBeOneArrayAndTheirCornersToo) {
  constexpr std::size_t kCount = BatchScene::kCount;
  const BatchScene s, other;
  std::vector<double> own(gsl_CountPreparedNumbers(kCount)), a(own.size()), b(own.size());
  gsl_PrepareTriangles(kCount, {{s[0], s[2], s[3]}}, own.data());
  gsl_PrepareTriangles(kCount, {{s[0], s[2], s[3]}}, a.data());
  gsl_PrepareTriangles(kCount, {{other[0], other[2], other[3]}}, b.data());
  const bool twoSided[2] = {true, true};
  const gsl_Vector d(0.0, 0.3, 1.0);
  gsl_BatchContact expected = {1e3, {}, {}, 99}, contact = expected;
  const bool result = gsl_SweepPreparedTriangles(kCount, d, {a.data(), kCount, 5, true},
                                                 {b.data(), kCount}, twoSided, 0.0, expected);
  EXPECT_EQ(gsl_SweepPreparedTriangles(kCount, d, {own.data(), kCount, 5, true},
                                       {own.data(), kCount}, twoSided, 0.0, contact),
            result);
  EXPECT_EQ(contact.distance, expected.distance);
  EXPECT_EQ(contact.pair, expected.pair);
}

// output: gsl_SweepSegments(std::size_t, gsl_Vector, gsl_BatchSegments, gsl_BatchSegments, bool,
// double, gsl_BatchContact&)
TEST(Aliasing, BothSegmentsOfASweepMayBeOneArray) {
  constexpr std::size_t kCount = BatchScene::kCount;
  const BatchScene s, other;
  const bool twoSided[2] = {true, true};
  const gsl_Vector d(0.3, 1.0, 0.0);
  gsl_BatchContact expected = {1e3, {}, {}, 99}, contact = expected;
  const bool result =
      gsl_SweepSegments(kCount, d, {{s[0], s[2]}}, {{other[2], other[3]}}, twoSided, 0.0, expected);
  EXPECT_EQ(gsl_SweepSegments(kCount, d, {{s[0], s[2]}}, {{s[2], s[3]}}, twoSided, 0.0, contact),
            result);
  EXPECT_EQ(contact.distance, expected.distance);
  EXPECT_EQ(contact.pair, expected.pair);
}

// output: gsl_TransformPoints(std::size_t, gsl_Matrix, gsl_BatchPoints, double*)
// output: gsl_TransformBoxes(std::size_t, gsl_Matrix, gsl_BatchPoints, gsl_BatchPoints, double*)
// output: gsl_BoxOfPoints(std::size_t, gsl_BatchPoints, double*)
TEST(Aliasing, PointsAndBoxesMoveInPlaceAndABoxMayBeAmongItsPoints) {
  constexpr std::size_t kCount = BatchScene::kCount;
  gsl_Matrix m;
  m.AxisRotation(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(1.0, 1.0, 0.5), 0.7);
  BatchScene s;
  std::vector<double> moved(3 * kCount), boxes(3 * kCount - 3), box(6);
  gsl_TransformPoints(kCount, m, s[0], moved.data());
  gsl_TransformPoints(kCount, m, s[0], s.p[0].data());
  ExpectSameNumbers(s.p[0], moved);

  const gsl_BatchPoints min = {s.p[1].data(), 6}, max = {s.p[1].data() + 3, 6};
  gsl_TransformBoxes(kCount / 2, m, min, max, boxes.data());
  gsl_TransformBoxes(kCount / 2, m, min, max, s.p[1].data());
  s.p[1].resize(boxes.size());
  ExpectSameNumbers(s.p[1], boxes);

  gsl_BoxOfPoints(kCount, s[2], box.data());
  gsl_BoxOfPoints(kCount, s[2], s.p[2].data() + 9);
  ExpectSameNumbers({s.p[2].begin() + 9, s.p[2].begin() + 15}, box);
}

TEST(Aliasing, TupleMayReceiveItselfAndItsOwnElement) {
  omu_PrimTuple tuple(1);
  tuple.Put(1.5);
  tuple.Put(tuple);
  tuple.Put(tuple.Primitive(1));
  EXPECT_STREQ(tuple.AsString().CStr(), "(1.5, (1.5,), (1.5,))");
}

TEST(Aliasing, EntitiesMayBeAssignedThemselves) {
  gsl_ModelSegment segment(gsl_Dot(1.0, 2.0, 3.0), gsl_Dot(4.0, 6.0, 3.0));
  const gsl_ModelSegment before = segment;
  gsl_ModelSegment& same = segment;
  segment = same;
  EXPECT_EQ(segment.Length(), 5.0);
  EXPECT_EQ(segment.Uid(), before.Uid());
  gsl_Plane plane(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.0, 2.0, 0.0));
  plane.ParentIds().Append(7);
  const gsl_Plane& self = plane;
  plane = self;
  EXPECT_EQ(plane.ParentIds().Count(), 1u);
  EXPECT_XYZ(plane.PointOn(), 1.0, 2.0, 3.0);
}
