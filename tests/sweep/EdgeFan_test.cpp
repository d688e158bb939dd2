#include "EdgeFan.h"

#include "RandomNumbers.h"
#include "TestScale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>
#include <vector>

namespace {

using namespace gsl_sweep;

constexpr Coord3 kFrom{0, 0, 0}, kTo{0, 0, 1};

/// A page at an angle in degrees around the z axis.
EdgeUse Page(double degrees, bool isAlong) {
  const double angle = degrees * 3.14159265358979323846 / 180.0;
  return {{2.0 * std::cos(angle), 2.0 * std::sin(angle), 0.3}, isAlong};
}

/// A part of a solid between two angles: its surface goes back along the edge where the part
/// begins.
void AddWedge(double begin, double end, std::vector<EdgeUse>& uses) {
  uses.push_back(Page(begin, false));
  uses.push_back(Page(end, true));
}

std::vector<std::size_t> Paired(const std::vector<EdgeUse>& uses) {
  const EdgeFan fan(kFrom, kTo, uses);
  EXPECT_TRUE(fan.HasAngles());
  EXPECT_TRUE(fan.IsCertain());
  // Each triangle is a sheet of its own.
  std::vector<std::uint32_t> sheets(uses.size());
  std::iota(sheets.begin(), sheets.end(), 0u);
  return fan.Pair(sheets);
}

using Numbers = std::vector<std::size_t>;

TEST(EdgeFan, WedgesThatTouchInAnEdgeStayApart) {
  std::vector<EdgeUse> uses;
  AddWedge(10, 80, uses);
  AddWedge(190, 260, uses);
  EXPECT_EQ(Paired(uses), (Numbers{1, 0, 3, 2}));
  // In any order of the uses, and turned around the edge.
  std::swap(uses[1], uses[2]);
  EXPECT_EQ(Paired(uses), (Numbers{2, 3, 0, 1}));
}

TEST(EdgeFan, APartMayCrossTheFirstAngle) {
  std::vector<EdgeUse> uses;
  AddWedge(100, 200, uses);
  AddWedge(300, 380, uses);
  AddWedge(40, 60, uses);
  EXPECT_EQ(Paired(uses), (Numbers{1, 0, 3, 2, 5, 4}));
  std::rotate(uses.begin(), uses.begin() + 3, uses.end()); // the first angle is within a part
  EXPECT_EQ(Paired(uses), (Numbers{5, 2, 1, 4, 3, 0}));
}

TEST(EdgeFan, AWedgeInsideOutIsPairedWithItself) {
  // The first is a solid; the second has its inside outside.
  std::vector<EdgeUse> uses;
  AddWedge(10, 80, uses);
  AddWedge(260, 190, uses);
  EXPECT_EQ(Paired(uses), (Numbers{1, 0, 3, 2}));
}

TEST(EdgeFan, SolidsThatTouchInAFaceStayApart) {
  // Exactly the same half-plane, by points that are not the same.
  const std::vector<EdgeUse> uses = {
      {{1, 0, 0}, false}, {{0, 1, 0}, true}, {{0, 4, 7}, false}, {{-1, 1, 0}, true}};
  EXPECT_EQ(Paired(uses), (Numbers{1, 0, 3, 2}));
}

TEST(EdgeFan, OppositeHalfPlanesAreToldApart) {
  // Both are in one plane with the edge, along each axis.
  for (const Coord3& p : {Coord3{1, 0, 0.5}, Coord3{0, 1, 0.5}, Coord3{3, -2, 0.5}}) {
    const Coord3 q{-p.x, -p.y, p.z}, beside{-p.y, p.x, 0.0};
    const std::vector<EdgeUse> uses = {
        {p, false}, {beside, true}, {q, false}, {{p.y, -p.x, 9.0}, true}};
    EXPECT_EQ(Paired(uses), (Numbers{1, 0, 3, 2}));
  }
}

TEST(EdgeFan, AnglesAreComparedExactly) {
  // The pages differ by one last place.
  const double y = std::nextafter(0.7, 1.0);
  const std::vector<EdgeUse> uses = {{{0.9, 0.7, 0.1}, false},
                                     {{0.9, y, 0.2}, true},
                                     {{-0.9, -0.7, 0.1}, false},
                                     {{-0.9, -y, 0.2}, true}};
  EXPECT_EQ(Paired(uses), (Numbers{1, 0, 3, 2}));
  std::vector<EdgeUse> turned = uses;
  for (EdgeUse& use : turned)
    use.isAlong = !use.isAlong;
  EXPECT_EQ(Paired(turned), (Numbers{3, 2, 1, 0}));
}

TEST(EdgeFan, ATriangleWithoutAreaHasNoAngle) {
  const std::vector<EdgeUse> uses = {
      Page(0, false), Page(50, true), {{0, 0, 7}, false}, Page(99, true)};
  EXPECT_FALSE(EdgeFan(kFrom, kTo, uses).HasAngles());
}

using Sheets = std::vector<std::uint32_t>;

TEST(EdgeFan, WhereThereIsAChoiceOneSheetIsPairedWithItself) {
  // Two ends at one angle; the beginnings are on both sides of it.
  const std::vector<EdgeUse> ends = {
      {{1, 0, 0}, false}, {{0, 1, 0}, true}, {{0, 3, 1}, true}, {{-1, 0, 0}, false}};
  const EdgeFan fan(kFrom, kTo, ends);
  EXPECT_FALSE(fan.IsCertain());
  EXPECT_EQ(fan.Pair(Sheets{7, 7, 8, 9}), (Numbers{1, 0, 3, 2}));
  EXPECT_EQ(fan.Pair(Sheets{7, 8, 7, 9}), (Numbers{2, 3, 0, 1}));
  EXPECT_EQ(fan.Pair(Sheets{6, 7, 8, 7}), (Numbers{2, 3, 0, 1}));
  // Two beginnings at one angle, and two ends at another.
  const std::vector<EdgeUse> both = {
      {{1, 0, 0}, false}, {{2, 0, 5}, false}, {{0, 1, 0}, true}, {{0, 7, 1}, true}};
  EXPECT_EQ(EdgeFan(kFrom, kTo, both).Pair(Sheets{1, 2, 2, 1}), (Numbers{3, 2, 1, 0}));
  EXPECT_EQ(EdgeFan(kFrom, kTo, both).Pair(Sheets{1, 2, 1, 2}), (Numbers{2, 3, 0, 1}));
}

TEST(EdgeFan, ASheetIsPairedWithItselfBesideCopiesOfAnother) {
  // A wedge twice, and a third that is inside out and begins where they end.
  const std::vector<EdgeUse> uses = {{{1, 0, 0}, false}, {{1, 0, 0}, false}, {{0, 1, 0}, true},
                                     {{0, 1, 0}, true},  {{0, 1, 0}, true},  {{-1, 0, 0}, false}};
  const Numbers paired = EdgeFan(kFrom, kTo, uses).Pair(Sheets{0, 1, 2, 9, 3, 9});
  EXPECT_EQ(paired[3], 5u);
  EXPECT_EQ(paired[5], 3u);
}

TEST(EdgeFan, ManyUsesArePairedInAMoment) {
  std::vector<EdgeUse> uses;
  Sheets sheets;
  for (std::uint32_t k = 0; k < 50000; ++k) {
    AddWedge(0, 90, uses);
    sheets.insert(sheets.end(), {2 * k, 2 * k + 1});
  }
  const Numbers paired = EdgeFan(kFrom, kTo, uses).Pair(sheets);
  for (std::size_t k = 0; k < paired.size(); ++k)
    ASSERT_EQ(paired[paired[k]], k);
}

TEST(EdgeFan, RandomWedgesAreFoundAgain) {
  RandomNumbers random(20);
  for (long round = 0; round < Scaled(20000); ++round) {
    const int count = 2 + random.Below(5);
    // Angles in order make wedges that do not overlap, somewhere around the edge.
    std::vector<double> angles;
    for (int k = 0; k < 2 * count; ++k)
      angles.push_back(random.In(0.0, 360.0));
    std::sort(angles.begin(), angles.end());
    const double turn = random.In(0.0, 360.0);
    std::vector<EdgeUse> uses;
    Numbers wedges;
    for (int k = 0; k < count; ++k) {
      const std::size_t first = 2 * static_cast<std::size_t>(k);
      AddWedge(angles[first] + turn, angles[first + 1] + turn, uses);
      wedges.insert(wedges.end(), 2, first);
    }
    for (std::size_t k = uses.size(); k > 1; --k) {
      const auto with = static_cast<std::size_t>(random.Below(static_cast<int>(k)));
      std::swap(uses[k - 1], uses[with]);
      std::swap(wedges[k - 1], wedges[with]);
    }
    const Numbers paired = Paired(uses);
    ASSERT_EQ(paired.size(), uses.size());
    for (std::size_t k = 0; k < paired.size(); ++k) {
      EXPECT_EQ(wedges[paired[k]], wedges[k]);
      EXPECT_NE(paired[k], k);
      EXPECT_EQ(paired[paired[k]], k);
    }
  }
}

} // namespace
