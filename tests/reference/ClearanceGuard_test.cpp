#include "ClearanceGuard.h"

#include "TestScale.h"

#include <gtest/gtest.h>

namespace {

using namespace reference;

TEST(ClearanceGuard, TheSweepAgreesWithTheJudge) {
  ClearanceTally tally;
  for (std::size_t family = 0; family < ClearanceFamilyCount(); ++family) {
    for (std::uint64_t seed = 0; seed < static_cast<std::uint64_t>(Scaled(25)); ++seed) {
      const std::string complaint = ClearanceComplaint(MakeClearanceScene(family, seed), tally);
      EXPECT_EQ(complaint, "");
    }
  }
  EXPECT_GE(tally.contacts, tally.scenes / 4);
  EXPECT_GE(tally.starts, tally.scenes / 20);
  EXPECT_GE(tally.nones, tally.scenes / 20);
  EXPECT_LE(tally.open, tally.scenes / 20);
}

} // namespace
