#include "SweepGuard.h"

#include "TestScale.h"

#include <gtest/gtest.h>

namespace {

using namespace reference;

constexpr long scenesOfAFamily = 56;
constexpr long scenesOfRules = 20;
constexpr long matedScenesOfRules = 60;

class SweepGuard : public testing::TestWithParam<std::size_t> {};

TEST_P(SweepGuard, AgreesWithTheRationalJudge) {
  const std::size_t family = GetParam();
  Tally tally;
  for (long seed = 0; seed < Scaled(scenesOfAFamily); ++seed) {
    const Scene scene = MakeScene(family, static_cast<std::uint64_t>(seed));
    const std::string complaint = Complaint(scene, tally);
    ASSERT_EQ(complaint, "") << Describe(scene);
  }
}

TEST_P(SweepGuard, AgreesWithTheRationalJudgeUnderTheOtherRules) {
  const std::size_t family = GetParam();
  RuleTally tally;
  const long count = Scaled(IsMated(family) ? matedScenesOfRules : scenesOfRules);
  for (long seed = 0; seed < count; ++seed) {
    const Scene scene = MakeScene(family, static_cast<std::uint64_t>(seed));
    const std::string complaint = ComplaintOfRules(scene, tally);
    ASSERT_EQ(complaint, "") << Describe(scene);
  }
}

INSTANTIATE_TEST_SUITE_P(Families, SweepGuard, testing::Range(std::size_t{0}, FamilyCount()),
                         [](const testing::TestParamInfo<std::size_t>& tested) {
                           return std::string(FamilyName(tested.param));
                         });

} // namespace
