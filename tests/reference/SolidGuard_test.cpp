#include "SolidGuard.h"

#include "TestScale.h"

#include <gtest/gtest.h>

namespace {

using namespace reference;

TEST(SolidGuard, TheSweepAgreesWithTheJudge) {
  SolidTally tally;
  for (std::size_t family = 0; family < SolidFamilyCount(); ++family) {
    for (std::uint64_t seed = 0; seed < static_cast<std::uint64_t>(Scaled(60)); ++seed) {
      const std::string complaint = SolidComplaint(MakeSolidScene(family, seed), tally);
      EXPECT_EQ(complaint, "");
    }
  }
  for (const std::size_t count : tally.outcomes)
    EXPECT_GE(count, tally.scenes / 20);
  EXPECT_GE(tally.touching, tally.scenes / 2);
}

TEST(SolidGuard, TrianglesThatAreTurnedOverInBothBodiesStopNothing) {
  std::size_t folds = 0;
  while (std::string(SolidFamilyName(folds)) != "folds")
    ++folds;
  SolidTally tally;
  // In the first two scenes the bodies rest on each other by triangles that are turned over. In the
  // others such a triangle and its copy that faces the other way are a component.
  for (const std::uint64_t seed : {77029u, 78125u, 536257u, 540200u})
    EXPECT_EQ(SolidComplaint(MakeSolidScene(folds, seed), tally), "");
}

TEST(SolidGuard, WhatATriangleTouchesDecidesWhereItTouches) {
  const auto family = [](const char* name) {
    std::size_t k = 0;
    while (std::string(SolidFamilyName(k)) != name)
      ++k;
    return k;
  };
  SolidTally tally;
  // A corner of one body is on the edge where a tooth of the other begins.
  for (const std::uint64_t seed : {88889u, 91477u})
    EXPECT_EQ(SolidComplaint(MakeSolidScene(family("folds"), seed), tally), "");
  // The middle of a triangle is on an edge of another part of its body.
  for (const std::uint64_t seed : {122088u, 123877u, 126617u})
    EXPECT_EQ(SolidComplaint(MakeSolidScene(family("stairs"), seed), tally), "");
}

} // namespace
