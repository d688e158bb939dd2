#include "support/Resolution.h"

#include "SweepShapes.h"
#include "support/MeshView.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace gsl_tools;
using gsl_arithmetic::Coord3;
using gsl_mesh::Mesh;
using gsl_sweep::Answer;
using gsl_sweep::Body;
using gsl_sweep::SweepStatus;
using sweep_shapes::Box;

const Coord3 nowhere{0.0, 0.0, 0.0};

TEST(Resolution, SpacingIsTheDistanceToTheNextNumber) {
  for (const double x : {1.0, 1.5, 1.9999999, 2.0, 100.0, 0.1, 1e-30, 1e30}) {
    EXPECT_EQ(SpacingAt(x, false), std::nextafter(x, 1e300) - x) << x;
    const float single = static_cast<float>(x);
    const float next = std::nextafter(single, FLT_MAX);
    EXPECT_EQ(SpacingAt(static_cast<double>(single), true),
              static_cast<double>(next) - static_cast<double>(single))
        << x;
  }
  EXPECT_EQ(SpacingAt(std::nextafter(2.0, 0.0), false), 0x1p-52);
  EXPECT_EQ(SpacingAt(2.0, false), 0x1p-51);
  EXPECT_EQ(SpacingAt(static_cast<double>(FLT_MAX), true), 0x1p104);
  EXPECT_EQ(SpacingAt(DBL_MAX, false), 0x1p971);
  for (const double x : {0.0, 5e-324, 1e-310, DBL_MIN})
    EXPECT_EQ(SpacingAt(x, false), 5e-324) << x;
  for (const double x : {0.0, 1e-44, 1e-38, static_cast<double>(FLT_MIN)})
    EXPECT_EQ(SpacingAt(x, true), 0x1p-149) << x;
}

double ResolutionOf(const Mesh& mesh, const Coord3& offset = nowhere) {
  return Resolution(mesh, Body(ViewOf(mesh)), {}, offset).Get();
}

TEST(Resolution, PrecisionIsThatOfTheCoordinates) {
  EXPECT_EQ(ResolutionOf(Box({0, 0, 0}, {1, 2, 100})), 0x1p-17); // 100 is below 2^7
  EXPECT_EQ(ResolutionOf(Box({0, 0, -100}, {1, 2, 3})), 0x1p-17);
  EXPECT_EQ(ResolutionOf(Box({1.0 / 3.0, 0, 0}, {1, 2, 100})), 0x1p-46);
  EXPECT_EQ(ResolutionOf(Box({0, 0, 0}, {1, 2, 1e39})), SpacingAt(1e39, false));
  Mesh mesh = Box({0, 0, 0}, {1, 2, 100});
  const double nan = std::numeric_limits<double>::quiet_NaN();
  sweep_shapes::AddTriangle(mesh, {nan, 0, 0}, {1.0 / 3.0, 0, 0}, {1e9, 0, 0});
  EXPECT_EQ(ResolutionOf(mesh), 0x1p-17);
}

TEST(Resolution, DecimalsOfNineDigitsMayBeSingle) {
  // None of these is a number of single precision.
  for (const double x : {0.1, 1.23456789e-7, 0.123456789, -12.3456789, 1e-30, 1.23456789e30})
    EXPECT_EQ(ResolutionOf(Box({x, 0, 0}, {x, 1, 2e30})), SpacingAt(2e30, true)) << x;
  for (const double x : {0.1234567891, 1.234567891e-7, -12.34567891, 1.234567891e30, 1.0 / 3.0})
    EXPECT_EQ(ResolutionOf(Box({x, 0, 0}, {x, 1, 2e30})), SpacingAt(2e30, false)) << x;
}

TEST(Resolution, PrecisionOfTheFileCounts) {
  Mesh mesh = Box({0, 0, 0}, {1, 2, 100});
  mesh.precision = gsl_mesh::Precision::Double;
  EXPECT_EQ(ResolutionOf(mesh), 0x1p-46);
  mesh = Box({1.0 / 3.0, 0, 0}, {1, 2, 100});
  mesh.precision = gsl_mesh::Precision::Single;
  EXPECT_EQ(ResolutionOf(mesh), 0x1p-17);
}

TEST(Resolution, OffsetRoundsToDouble) {
  const Mesh mesh = Box({0, 0, 0}, {1, 2, 100});
  EXPECT_EQ(ResolutionOf(mesh, {1000.0, 0, 0}), 0x1p-17);
  EXPECT_EQ(ResolutionOf(mesh, {0, -1e12, 0}), 0x1p-13); // 1e12 is below 2^40
}

TEST(Resolution, PoseRoundsBeforeTheOffset) {
  // The pose puts the body at 2^30, where doubles are 2^-22 apart; the offset brings it back.
  const Mesh mesh = Box({1.0 / 3.0, 0, 0}, {0.5, 1, 1});
  gsl_Matrix pose;
  pose.m[2][3] = 0x1p30;
  pose.isIdentity = -1;
  const Body placed = Body(ViewOf(mesh)).Moved(pose);
  EXPECT_EQ(Resolution(mesh, placed, pose, {0.0, 0.0, -0x1p30}).Get(), 0x1p-22);
}

TEST(Resolution, PoseThatStretchesMakesItCoarser) {
  const Mesh mesh = Box({0, 0, 0}, {1, 2, 100});
  const Body body(ViewOf(mesh));
  gsl_Matrix pose;
  pose.isIdentity = -1;
  pose.m[0][0] = 0.0;
  pose.m[1][0] = 4.0; // x goes to y, four times as long
  pose.m[1][1] = 0.5;
  EXPECT_EQ(Resolution(mesh, body.Moved(pose), pose, nowhere).Get(), 0x1p-15);
  pose.m[1][0] = 0.25;
  EXPECT_EQ(Resolution(mesh, body.Moved(pose), pose, nowhere).Get(), 0x1p-17);
  // Back to the origin: the file was not finer there.
  Mesh far = Box({1000000, 0, 0}, {1000001, 1, 1});
  gsl_Matrix back;
  back.isIdentity = -1;
  back.m[0][3] = -1000000.0;
  EXPECT_EQ(Resolution(far, Body(ViewOf(far)).Moved(back), back, nowhere).Get(), 0x1p-4);
  EXPECT_TRUE(Resolution(far, Body(ViewOf(far)).Moved(back), back, nowhere).Reaches(0.06));
}

TEST(Resolution, OfAGrownBodyIsThatOfItsFile) {
  const Mesh mesh = Box({0, 0, 0}, {1, 2, 16});
  const Body grown = Body(ViewOf(mesh)).Grown(-0.25);
  EXPECT_TRUE(Resolution(mesh, grown, {}, nowhere, true).Reaches(0x1p-19));
  EXPECT_FALSE(Resolution(mesh, grown, {}, nowhere, true).Reaches(std::nextafter(0x1p-19, 1.0)));
}

TEST(Resolution, AllowanceUpToTheResolutionIsNamed) {
  Mesh coarse = Box({0, 0, 0}, {1, 2, 100});
  coarse.file = "coarse.stl";
  Mesh fine = Box({1.0 / 3.0, 0, 0}, {1, 2, 100});
  fine.file = "fine.obj";
  gsl_Matrix twice;
  twice.isIdentity = -1;
  twice.m[0][0] = twice.m[1][1] = twice.m[2][2] = 2.0;
  const auto warning = [](double allowance, const Mesh& moving, const Mesh& fixed,
                          const std::optional<gsl_Matrix>& pose) {
    Resolution ofMoving(moving, Body(ViewOf(moving)), pose, nowhere, true);
    std::vector<Resolution> ofFixed;
    ofFixed.emplace_back(fixed, Body(ViewOf(fixed)), std::nullopt, nowhere);
    return AllowanceWarning(allowance, ofMoving, ofFixed);
  };
  const double above = std::nextafter(0x1p-17, 1.0);
  EXPECT_EQ(warning(-0x1p-17, fine, coarse, {}),
            "the allowance -7.62939453125e-06 is within the resolution of coarse.stl, "
            "7.62939453125e-06 (the distance between neighbouring coordinates); it may be less "
            "than the rounding of the coordinates");
  EXPECT_NE(warning(0x1p-17, coarse, fine, {}), "");
  EXPECT_EQ(warning(-above, fine, coarse, {}), "");
  EXPECT_EQ(warning(above, coarse, fine, {}), "");
  // A pose stretches the allowance, and the resolution of its own body alone.
  EXPECT_NE(warning(0x1p-18, fine, coarse, twice), "");
  EXPECT_EQ(warning(above / 2, fine, coarse, twice), "");
  EXPECT_NE(warning(0x1p-17, coarse, fine, twice), "");
}

Answer After(double travel) {
  Answer answer;
  answer.status = SweepStatus::Contact;
  answer.contact.travel = travel;
  return answer;
}

std::string WarningOf(const Answer& answer, const Mesh& moving, const Mesh& fixed) {
  Resolution movingResolution(moving, Body(ViewOf(moving)), {}, nowhere);
  Resolution fixedResolution(fixed, Body(ViewOf(fixed)), {}, nowhere);
  return ResolutionWarning(answer, movingResolution, fixedResolution);
}

TEST(Resolution, TravelUpToTheResolutionIsNamed) {
  Mesh coarse = Box({0, 0, 0}, {1, 2, 100});
  coarse.file = "coarse.stl";
  Mesh fine = Box({1.0 / 3.0, 0, 0}, {1, 2, 100});
  fine.file = "fine.obj";
  const double single = 0x1p-17, twice = 0x1p-46;
  const double above = std::numeric_limits<double>::infinity();
  const std::string warning = "the travel 1.4e-17 is within the resolution of coarse.stl, "
                              "7.62939453125e-06 (the distance between neighbouring coordinates); "
                              "the bodies may be in contact from the start";
  EXPECT_EQ(WarningOf(After(1.4e-17), coarse, fine), warning);
  EXPECT_EQ(WarningOf(After(1.4e-17), fine, coarse), warning);
  EXPECT_NE(WarningOf(After(1.4e-17), fine, fine).find("of fine.obj, 1.42"), std::string::npos);
  EXPECT_NE(WarningOf(After(single), coarse, fine), "");
  EXPECT_NE(WarningOf(After(single), fine, coarse), "");
  EXPECT_EQ(WarningOf(After(std::nextafter(single, above)), coarse, fine), "");
  EXPECT_EQ(WarningOf(After(std::nextafter(single, above)), fine, coarse), "");
  EXPECT_NE(WarningOf(After(twice), fine, fine), "");
  EXPECT_EQ(WarningOf(After(std::nextafter(twice, above)), fine, fine), "");
  EXPECT_EQ(WarningOf(After(0.001), coarse, coarse), "");
}

TEST(Resolution, OfAClearanceIsSaidWithinIt) {
  const Mesh mesh = Box({0, 0, 0}, {1, 2, 100});
  Answer answer = After(1e-9);
  answer.isExact = false;
  const std::string warning = WarningOf(answer, mesh, mesh);
  const std::string end = "; the bodies may be within the clearance from the start";
  ASSERT_GT(warning.size(), end.size());
  EXPECT_EQ(warning.substr(warning.size() - end.size()), end);
}

TEST(Resolution, OtherAnswersDrawNoWarning) {
  const Mesh mesh = Box({0, 0, 0}, {1, 2, 100});
  Answer answer = After(0.0);
  for (const SweepStatus status : {SweepStatus::Start, SweepStatus::None, SweepStatus::Cancelled}) {
    answer.status = status;
    EXPECT_EQ(WarningOf(answer, mesh, mesh), "");
  }
}

} // namespace
