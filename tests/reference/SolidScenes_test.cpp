#include "SolidScenes.h"

#include "TestScale.h"
#include "gsl_Sweep.h"

#include <gtest/gtest.h>

namespace {

using namespace reference;

gsl_sweep::Solidity SolidityOf(const SolidScene& scene, const LatticeSolid& solid) {
  std::vector<double> vertices;
  for (const Coord3& p : CornersOf(scene, solid))
    vertices.insert(vertices.end(), {p.x, p.y, p.z});
  gsl_sweep::TriangleView view;
  view.vertices = vertices.data();
  view.vertexCount = vertices.size() / 3;
  view.triangleCount = vertices.size() / 9;
  return gsl_sweep::Body(view).IsSolid();
}

TEST(SolidScenes, AreSolids) {
  for (std::size_t family = 0; family < SolidFamilyCount(); ++family) {
    for (std::uint64_t seed = 0; seed < 40; ++seed) {
      const SolidScene scene = MakeSolidScene(family, seed);
      for (const LatticeSolid* solid : {&scene.question.moving, &scene.question.fixed}) {
        const gsl_sweep::Solidity solidity = SolidityOf(scene, *solid);
        EXPECT_TRUE(solidity) << solidity.Reason() << '\n' << Describe(scene);
        EXPECT_FALSE(solid->pieces.empty());
        for (const Piece& piece : solid->pieces) {
          for (const LatticePoint& p : piece)
            for (const std::int64_t c : p)
              ASSERT_LE(std::abs(c), 1 << 16);
        }
      }
    }
  }
}

TEST(SolidScenes, TogetherShowEveryOutcome) {
  std::size_t outcomes[4] = {};
  std::size_t touching = 0;
  std::size_t inside = 0;
  std::size_t all = 0;
  const auto seeds = static_cast<std::uint64_t>(Scaled(40));
  for (std::size_t family = 0; family < SolidFamilyCount(); ++family) {
    for (std::uint64_t seed = 0; seed < seeds; ++seed) {
      const SolidScene scene = MakeSolidScene(family, seed);
      const SolidVerdict verdict = JudgeSolids(scene.question);
      ++outcomes[static_cast<int>(verdict.outcome)];
      ++all;
      touching += verdict.touches ? 1 : 0;
      const bool isAtStart = verdict.outcome == SolidOutcome::OverlapAtStart;
      inside += isAtStart && !verdict.touches ? 1 : 0;
      const bool wantsPair = verdict.outcome == SolidOutcome::Contact ||
                             verdict.outcome == SolidOutcome::OverlapAfterStart;
      EXPECT_EQ(verdict.hasPair, wantsPair) << Describe(scene);
    }
  }
  for (const std::size_t count : outcomes)
    EXPECT_GE(count, all / 20);
  EXPECT_GE(touching, all / 2);
  EXPECT_GE(inside, all / 200);
}

TEST(SolidScenes, AreTheSameEachTime) {
  for (std::size_t family = 0; family < SolidFamilyCount(); ++family) {
    EXPECT_EQ(Describe(MakeSolidScene(family, 7)), Describe(MakeSolidScene(family, 7)));
    EXPECT_NE(Describe(MakeSolidScene(family, 7)), Describe(MakeSolidScene(family, 8)));
  }
}

} // namespace
