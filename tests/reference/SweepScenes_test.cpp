#include "SweepScenes.h"

#include "SweepGuard.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

using namespace reference;

TEST(SweepScenes, TogetherShowEveryOutcomeKindAndTie) {
  Tally tally;
  for (std::size_t family = 0; family < FamilyCount(); ++family) {
    Tally own;
    for (std::uint64_t seed = 0; seed < 12; ++seed)
      Count(MakeScene(family, seed), own);
    EXPECT_GT(own.contacts + own.starts, 0u) << FamilyName(family);
    tally.Add(own);
  }
  EXPECT_GT(tally.contacts, 150u);
  EXPECT_GT(tally.starts, 60u);
  EXPECT_GT(tally.nones, 40u);
  EXPECT_GT(tally.tied, 60u);
  EXPECT_GT(tally.single, 10u);
  EXPECT_GT(tally.limited, 10u);
  for (const std::size_t kind : tally.kinds)
    EXPECT_GT(kind, 4u);
}

/// Returns the FNV-1a hash of the bits of numbers.
class Hash {
public:
  void Add(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    for (int byte = 0; byte < 8; ++byte)
      m_state = (m_state ^ (bits >> (8 * byte) & 0xff)) * 0x100000001b3u;
  }
  void Add(const Coord3& p) {
    Add(p.x);
    Add(p.y);
    Add(p.z);
  }
  std::uint64_t Value() const { return m_state; }

private:
  std::uint64_t m_state = 0xcbf29ce484222325u;
};

TEST(SweepScenes, AreTheSameWithEveryCompiler) {
  Hash hash;
  for (std::size_t family = 0; family < FamilyCount(); ++family) {
    for (std::uint64_t seed = 0; seed < 8; ++seed) {
      const Scene scene = MakeScene(family, seed);
      hash.Add(scene.question.direction);
      hash.Add(static_cast<double>(scene.limit));
      for (const auto* corners : {&scene.question.moving, &scene.question.fixed})
        for (const Coord3& p : *corners)
          for (const double c : {p.x, p.y, p.z})
            hash.Add(c == c ? c : 0.0);
    }
  }
  EXPECT_EQ(hash.Value(), 0x878b14669d4da4aau);
}

} // namespace
