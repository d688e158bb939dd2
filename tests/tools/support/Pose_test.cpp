#include "support/Pose.h"

#include "SweepShapes.h"
#include "TemporaryFolder.h"
#include "support/MeshView.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>

namespace {

using namespace gsl_tools;

std::string ErrorOf(const std::string& text) {
  try {
    ParsePose(text, "p.txt");
  } catch (const InputError& error) {
    return error.what();
  }
  return {};
}

void ExpectOneToTwelve(const gsl_Matrix& pose) {
  for (int k = 0; k < 12; ++k)
    EXPECT_EQ(pose.m[k / 4][k % 4], k + 1.0) << k;
  EXPECT_EQ(pose.m[3][0], 0.0);
  EXPECT_EQ(pose.m[3][1], 0.0);
  EXPECT_EQ(pose.m[3][2], 0.0);
  EXPECT_EQ(pose.m[3][3], 1.0);
}

TEST(Pose, IsReadRowByRow) {
  ExpectOneToTwelve(ParsePose("1 2 3 4\n5 6 7 8\n9 10 11 12\n", "p"));
  ExpectOneToTwelve(ParsePose("1,2, 3 ,4,5 6 7 8 9 10 11 12 0 -0 0.0 1", "p"));
  ExpectOneToTwelve(
      ParsePose("# by rows\r\n1 2 3 4# first\r\n\r\n5 6 7 8\t9 10 11 +12\r\n0 0 0 1e0#", "p"));
}

TEST(Pose, WrongNumbersAreNamedWithTheirPlace) {
  EXPECT_EQ(ErrorOf("1 2 x"),
            "p.txt: line 1: number 3 of the pose must be a finite number (got x)");
  EXPECT_EQ(ErrorOf("1 2 # x y\n\n3 nan"),
            "p.txt: line 3: number 4 of the pose must be a finite number (got nan)");
  EXPECT_EQ(ErrorOf("1\r\n1e999"),
            "p.txt: line 2: number 2 of the pose must be a finite number (got 1e999)");
  const std::string empty = "number 2 of the pose must be a finite number (got an empty value)";
  EXPECT_EQ(ErrorOf("1,,2"), "p.txt: line 1: " + empty);
  EXPECT_EQ(ErrorOf("1 ,\n, 2"), "p.txt: line 2: " + empty);
  EXPECT_EQ(ErrorOf("1,\n"), "p.txt: line 2: " + empty);
  EXPECT_EQ(ErrorOf(",1"),
            "p.txt: line 1: number 1 of the pose must be a finite number (got an empty value)");
  EXPECT_EQ(ErrorOf(std::string(99, 'y')), "p.txt: line 1: number 1 of the pose must be a finite "
                                           "number (got " +
                                               std::string(40, 'y') + "...)");
}

TEST(Pose, WrongCountsAreNamedWithTheirPlace) {
  EXPECT_EQ(ErrorOf(""), "p.txt: line 1: the pose ends after 0 numbers; expected 12 or 16");
  EXPECT_EQ(ErrorOf("7"), "p.txt: line 1: the pose ends after 1 number; expected 12 or 16");
  EXPECT_EQ(ErrorOf("1 2 3 4\n5 6 7 8\n9 10 11"),
            "p.txt: line 3: the pose ends after 11 numbers; expected 12 or 16");
  const std::string twelve = "1 2 3 4 5 6 7 8 9 10 11 12\n";
  const std::string ending = " numbers; expected 12 or 16";
  EXPECT_EQ(ErrorOf(twelve + "0"), "p.txt: line 2: the pose ends after 13" + ending);
  EXPECT_EQ(ErrorOf(twelve + "0 0"), "p.txt: line 2: the pose ends after 14" + ending);
  EXPECT_EQ(ErrorOf(twelve + "0 0 0"), "p.txt: line 2: the pose ends after 15" + ending);
  EXPECT_EQ(ErrorOf(twelve + "0 0 0 1\n0"),
            "p.txt: line 3: number 17 is too many; expected 12 or 16 numbers");
}

TEST(Pose, LastRowIsThatOfAnAffineMatrix) {
  for (const char* last : {"1 0 0 1", "0 1 0 1", "0 0 1 1", "0 0 0 2", "0 0 0 0", "0 0 0 -1"}) {
    EXPECT_EQ(ErrorOf("1 0 0 0\n0 1 0 0\n0 0 1 0\n" + std::string(last)),
              "p.txt: line 4: the last row of a pose must be 0 0 0 1 (got " + std::string(last) +
                  ")");
  }
}

TEST(Pose, IsReadFromAFile) {
  const TemporaryFolder folder;
  ExpectOneToTwelve(ReadPose(folder.Write("p.txt", "1 2 3 4 5 6 7 8 9 10 11 12\n")));
  EXPECT_THROW(ReadPose(folder.Path("missing.txt")), InputError);
  EXPECT_THROW(ReadPose(folder.Path("")), InputError);
  const std::string numbers = "1 2 3 4 5 6 7 8 9 10 11 12";
  const std::string longest = numbers + std::string(65536 - numbers.size(), ' ');
  ExpectOneToTwelve(ReadPose(folder.Write("longest.txt", longest)));
  EXPECT_THROW(ReadPose(folder.Write("longer.txt", longest + " ")), InputError);
}

TEST(Pose, RigidMatrixDrawsNoWarning) {
  EXPECT_EQ(PoseWarning(gsl_Matrix(), "p"), "");
  EXPECT_EQ(PoseWarning(ParsePose("0 -1 0 5 1 0 0 -7 0 0 1 1e9", "p"), "p"), "");
  EXPECT_EQ(PoseWarning(ParsePose("0.6 -0.8 0 0 0.8 0.6 0 0 0 0 1 0", "p"), "p"), "");
  // 1.0000004^2 differs from 1 by 8e-7, 1.0000006^2 by 1.2e-6.
  EXPECT_EQ(PoseWarning(ParsePose("1 0 0 0 0 1.0000004 0 0 0 0 1 0", "p"), "p"), "");
  EXPECT_NE(PoseWarning(ParsePose("1 0 0 0 0 1.0000006 0 0 0 0 1 0", "p"), "p"), "");
}

TEST(Pose, OtherMatricesDrawAWarning) {
  const std::string notRigid = "p: the pose is not rigid: it changes lengths or angles";
  EXPECT_EQ(PoseWarning(ParsePose("2 0 0 0 0 2 0 0 0 0 2 0", "p"), "p"), notRigid);
  EXPECT_EQ(PoseWarning(ParsePose("1 0.1 0 0 0 1 0 0 0 0 1 0", "p"), "p"), notRigid);
  EXPECT_EQ(PoseWarning(ParsePose("1 0 0 0 0 1 0 0 0 0 0 0", "p"), "p"), notRigid);
  EXPECT_EQ(PoseWarning(ParsePose("1e200 0 0 0 0 1 0 0 0 0 1 0", "p"), "p"), notRigid);
  EXPECT_EQ(PoseWarning(ParsePose("1 0 0 0 0 1 0 0 0 0 -1 0", "p"), "p"),
            "p: the pose mirrors the body, whose triangles then face the other way");
  EXPECT_EQ(PoseWarning(ParsePose("-2 0 0 0 0 -2 0 0 0 0 -2 0", "p"), "p"),
            notRigid + ", and it mirrors the body, whose triangles then face the other way");
}

TEST(Pose, MirrorIsNoticedAtAnyScale) {
  const std::string mirrors = ", and it mirrors the body, whose triangles then face the other way";
  for (const char* size : {"1e-120", "1e120", "1e-200", "1e200"}) {
    const std::string s = size;
    const std::string rest = " 0 0 0 0 " + s + " 0 0 0 0 " + s + " 0";
    const auto endsWithMirrors = [&](const std::string& pose) {
      return PoseWarning(ParsePose(pose, "p"), "p").find(mirrors) != std::string::npos;
    };
    EXPECT_TRUE(endsWithMirrors("-" + s + rest)) << s;
    EXPECT_FALSE(endsWithMirrors(s + rest)) << s;
  }
}

TEST(Pose, ByteOrderMarkIsLeftOut) {
  ExpectOneToTwelve(ParsePose("\xef\xbb\xbf"
                              "1 2 3 4 5 6 7 8 9 10 11 12",
                              "p"));
}

TEST(Pose, CornersGoWhereTheMatrixPutsThem) {
  gsl_mesh::Mesh mesh;
  mesh.corners = {{0.1, 0.2, 0.3}, {1.0, 0.0, 0.0}, {-1.0 / 3.0, 1e10, 1e-10}};
  const gsl_mesh::Mesh before = mesh;
  const gsl_Matrix pose = ParsePose("0.36 0.48 -0.8 0.1 -0.8 0.6 0 1e6 0.48 0.64 0.6 -3", "p");
  PoseMesh(mesh, pose);
  for (std::size_t k = 0; k < 3; ++k) {
    gsl_Point point(before.corners[k].x, before.corners[k].y, before.corners[k].z);
    pose.Transform(point);
    EXPECT_EQ(mesh.corners[k].x, point.x);
    EXPECT_EQ(mesh.corners[k].y, point.y);
    EXPECT_EQ(mesh.corners[k].z, point.z);
  }
  EXPECT_NEAR(mesh.corners[1].x, 0.46, 1e-15);
  EXPECT_NEAR(mesh.corners[1].y, 999999.2, 1e-9);
  EXPECT_NEAR(mesh.corners[1].z, -2.52, 1e-15);
}

TEST(Pose, BodyGoesWithItsMesh) {
  const gsl_Matrix pose = ParsePose("0 -2 0 5 1 0 0 -7 0 0 3 1", "p");
  gsl_mesh::Mesh mesh = sweep_shapes::Box({0, 0, 0}, {1, 2, 3});
  const gsl_sweep::Body posed = PosedBody(gsl_sweep::Body(ViewOf(mesh)), pose, "a.stl");
  gsl_arithmetic::Coord3 low{}, high{};
  posed.GetBounds(low, high);
  // x' = 5 - 2 y, y' = x - 7, z' = 3 z + 1
  EXPECT_EQ(low.x, 1.0);
  EXPECT_EQ(high.x, 5.0);
  EXPECT_EQ(low.y, -7.0);
  EXPECT_EQ(high.y, -6.0);
  EXPECT_EQ(low.z, 1.0);
  EXPECT_EQ(high.z, 10.0);
}

TEST(Pose, BodyStaysInTheRangeOfDouble) {
  gsl_mesh::Mesh mesh = sweep_shapes::Box({0, 0, 0}, {1, 1, 1});
  const double infinity = std::numeric_limits<double>::infinity();
  sweep_shapes::AddTriangle(mesh, {infinity, 0, 0}, {1, 0, 0}, {0, 1, 0});
  const gsl_sweep::Body body(ViewOf(mesh));
  const gsl_Matrix pose = ParsePose("1e200 0 0 0 0 1 0 0 0 0 1 0", "p");
  const gsl_sweep::Body far = PosedBody(body, pose, "a.stl"); // one was skipped before
  EXPECT_EQ(far.SkippedCount(), 1u);
  try {
    PosedBody(far, pose, "a.stl");
    ADD_FAILURE() << "not refused";
  } catch (const std::overflow_error& error) {
    EXPECT_STREQ(error.what(), "--pose moves a corner of a.stl beyond the range of double");
  }
}

} // namespace
