#include "SolidJudge.h"

#include "SolidScenes.h"
#include "TestScale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

using namespace reference;

Piece BoxOf(const LatticePoint& low, const LatticePoint& high) {
  Piece piece;
  for (const std::int64_t x : {low[0], high[0]})
    for (const std::int64_t y : {low[1], high[1]})
      for (const std::int64_t z : {low[2], high[2]})
        piece.push_back({x, y, z});
  return piece;
}

LatticeSolid SolidOf(const std::vector<Piece>& pieces) {
  LatticeSolid solid;
  solid.pieces = pieces;
  for (const Piece& piece : pieces) {
    const auto surface = SurfaceOf(piece);
    solid.surface.insert(solid.surface.end(), surface.begin(), surface.end());
  }
  return solid;
}

Rational Ratio(int over, int under) {
  Rational ratio(over, under);
  ratio.canonicalize();
  return ratio;
}

const LatticePoint down{0, 0, -1};
const LatticePoint up{0, 0, 1};
const LatticePoint right{1, 0, 0};

void ExpectOverlap(const Piece& moving, const Piece& fixed, const LatticePoint& direction,
                   const Rational& first, const Rational& last) {
  const auto interval = OverlapOf(moving, fixed, direction);
  ASSERT_TRUE(interval.has_value());
  EXPECT_EQ(interval->first, first);
  EXPECT_EQ(interval->last, last);
}

TEST(SolidJudgePieces, BoxesOverlapWhileTheirExtentsDo) {
  const Piece low = BoxOf({0, 0, 0}, {4, 4, 2});
  ExpectOverlap(BoxOf({1, 1, 5}, {2, 2, 6}), low, down, 3, 6);
  ExpectOverlap(BoxOf({1, 1, 5}, {2, 2, 6}), low, {0, 0, -2}, Ratio(3, 2), 3);
  ExpectOverlap(BoxOf({0, 0, 2}, {4, 4, 3}), low, up, -3, 0);
  // Walls in a common plane never overlap.
  EXPECT_FALSE(OverlapOf(BoxOf({4, 0, 5}, {6, 4, 6}), low, down).has_value());
  EXPECT_FALSE(OverlapOf(BoxOf({0, 0, 2}, {4, 4, 3}), low, right).has_value());
}

TEST(SolidJudgePieces, ACornerMeetsASlopeOfAThird) {
  // The top of the fixed piece is z = x / 3, and the corner of the moving piece is at x = 1.
  const Piece slope{{-9, -9, -3}, {9, -9, 3},  {-9, 9, -3}, {9, 9, 3},
                    {-9, -9, -9}, {9, -9, -9}, {-9, 9, -9}, {9, 9, -9}};
  const Piece spike{{1, 0, 1}, {0, -1, 9}, {0, 1, 9}, {3, 0, 9}};
  const auto interval = OverlapOf(spike, slope, down);
  ASSERT_TRUE(interval.has_value());
  EXPECT_EQ(interval->first, Ratio(2, 3));
}

TEST(SolidJudgePieces, EdgesThatCrossDecide) {
  // A ridge along y at z = 2 over x = 0, and a keel along x at z = 5 over y = 0.
  const Piece ridge{{-2, -5, 0}, {2, -5, 0}, {0, -5, 2}, {-2, 5, 0}, {2, 5, 0}, {0, 5, 2}};
  const Piece keel{{-5, -2, 7}, {-5, 2, 7}, {-5, 0, 5}, {5, -2, 7}, {5, 2, 7}, {5, 0, 5}};
  const auto interval = OverlapOf(keel, ridge, down);
  ASSERT_TRUE(interval.has_value());
  EXPECT_EQ(interval->first, 3);
  // Only a common normal of edges separates tetrahedra whose edges cross.
  const Piece a{{-1, 0, 0}, {1, 0, 0}, {0, 1, -3}, {0, -1, -3}};
  const Piece b{{0, -1, 0}, {0, 1, 0}, {1, 0, 3}, {-1, 0, 3}};
  const auto apart = OverlapOf(b, a, down);
  ASSERT_TRUE(apart.has_value());
  EXPECT_EQ(apart->first, 0);
}

TEST(SolidJudgeSurface, IsClosedAndTurnedOutwards) {
  const auto surface = SurfaceOf(BoxOf({1, 2, 3}, {3, 5, 7}));
  EXPECT_EQ(surface.size(), 36u);
  EXPECT_EQ(SixfoldVolume(surface), 6 * 2 * 3 * 4);
  // Points inside a facet or an edge are not corners.
  Piece more = BoxOf({0, 0, 0}, {2, 2, 2});
  more.insert(more.end(), {{1, 1, 0}, {1, 0, 0}, {1, 1, 1}, {0, 0, 0}});
  EXPECT_EQ(SurfaceOf(more).size(), 36u);
  EXPECT_EQ(SixfoldVolume(SurfaceOf(more)), 48);
}

SolidVerdict Judged(const std::vector<Piece>& moving, const std::vector<Piece>& fixed,
                    const LatticePoint& direction) {
  return JudgeSolids({SolidOf(moving), SolidOf(fixed), direction});
}

TEST(SolidJudge, TellsTheOutcomesApart) {
  const Piece table = BoxOf({0, 0, 0}, {4, 4, 2});
  const SolidVerdict above = Judged({BoxOf({1, 1, 5}, {2, 2, 6})}, {table}, down);
  EXPECT_EQ(above.outcome, SolidOutcome::Contact);
  EXPECT_EQ(above.travel, 3);
  EXPECT_FALSE(above.touches);
  EXPECT_TRUE(above.hasPair);
  const Piece standing = BoxOf({1, 1, 2}, {2, 2, 6});
  const SolidVerdict onTable = Judged({standing}, {table}, down);
  EXPECT_EQ(onTable.outcome, SolidOutcome::OverlapAfterStart);
  EXPECT_TRUE(onTable.touches);
  EXPECT_TRUE(onTable.hasPair);
  EXPECT_EQ(Judged({standing}, {table}, up).outcome, SolidOutcome::None);
  EXPECT_EQ(Judged({standing}, {table}, right).outcome, SolidOutcome::None);
  const SolidVerdict sunk = Judged({BoxOf({1, 1, 1}, {2, 2, 6})}, {table}, up);
  EXPECT_EQ(sunk.outcome, SolidOutcome::OverlapAtStart);
  EXPECT_TRUE(sunk.touches);
  const SolidVerdict inside =
      Judged({BoxOf({1, 1, 1}, {2, 2, 2})}, {BoxOf({0, 0, 0}, {4, 4, 4})}, up);
  EXPECT_EQ(inside.outcome, SolidOutcome::OverlapAtStart);
  EXPECT_FALSE(inside.touches);
}

TEST(SolidJudge, NamesNoTrianglesThatAreTurnedOver) {
  // A box between a floor and a lid. In the plane z = 0, both bodies begin with two triangles with
  // the same corners that face opposite ways.
  const std::vector<LatticePoint> sheet{{1, 1, 0}, {3, 1, 0}, {1, 3, 0},
                                        {1, 1, 0}, {1, 3, 0}, {3, 1, 0}};
  SolidQuestion question{SolidOf({BoxOf({0, 0, 0}, {4, 4, 2})}),
                         SolidOf({BoxOf({0, 0, -2}, {4, 4, 0}), BoxOf({0, 0, 2}, {4, 4, 3})}), up};
  for (LatticeSolid* solid : {&question.moving, &question.fixed})
    solid->surface.insert(solid->surface.begin(), sheet.begin(), sheet.end());
  const SolidVerdict verdict = JudgeSolids(question);
  EXPECT_EQ(verdict.outcome, SolidOutcome::OverlapAfterStart);
  ASSERT_TRUE(verdict.hasPair);
  for (std::size_t c = 0; c < 3; ++c) {
    EXPECT_EQ(question.moving.surface[3 * verdict.moving + c][2], 2);
    EXPECT_EQ(question.fixed.surface[3 * verdict.fixed + c][2], 2);
  }
  // On the floor the triangles that face as the box and the floor do are named.
  question.direction = down;
  const SolidVerdict onFloor = JudgeSolids(question);
  EXPECT_EQ(onFloor.moving, 1u);
  EXPECT_EQ(onFloor.fixed, 0u);
}

TEST(SolidJudge, TakesTheFirstOfSeveralPieces) {
  const std::vector<Piece> fixed{BoxOf({0, 0, -5}, {9, 9, -4}), BoxOf({0, 0, 0}, {2, 2, 1}),
                                 BoxOf({6, 6, 9}, {9, 9, 10})};
  const SolidVerdict verdict =
      Judged({BoxOf({5, 0, 3}, {6, 1, 4}), BoxOf({1, 1, 6}, {2, 2, 7})}, fixed, down);
  EXPECT_EQ(verdict.outcome, SolidOutcome::Contact);
  EXPECT_EQ(verdict.travel, 5);
}

/// Six times the volume of a tetrahedron.
Rational Sixfold(const std::array<RationalPoint, 4>& t) {
  const auto from = [&t](std::size_t k) {
    return RationalPoint{t[k].x - t[0].x, t[k].y - t[0].y, t[k].z - t[0].z};
  };
  const RationalPoint a = from(1);
  const RationalPoint b = from(2);
  const RationalPoint c = from(3);
  return a.x * (b.y * c.z - b.z * c.y) + a.y * (b.z * c.x - b.x * c.z) +
         a.z * (b.x * c.y - b.y * c.x);
}

using RationalTetrahedron = std::array<RationalPoint, 4>;

/// Appends the part of a tetrahedron where plane(p) is at most zero, as tetrahedra.
template <class Plane>
void Clip(const RationalTetrahedron& t, const Plane& plane,
          std::vector<RationalTetrahedron>& kept) {
  std::vector<RationalPoint> inside;
  std::vector<RationalPoint> outside;
  std::vector<Rational> below;
  std::vector<Rational> above;
  for (const RationalPoint& p : t) {
    const Rational height = plane(p);
    (height <= 0 ? inside : outside).push_back(p);
    (height <= 0 ? below : above).push_back(height);
  }
  const auto cut = [&](std::size_t i, std::size_t o) {
    const Rational at = below[i] / (below[i] - above[o]);
    const RationalPoint& p = inside[i];
    const RationalPoint& q = outside[o];
    return RationalPoint{p.x + at * (q.x - p.x), p.y + at * (q.y - p.y), p.z + at * (q.z - p.z)};
  };
  if (inside.size() == 4) {
    kept.push_back(t);
  } else if (inside.size() == 3) {
    const RationalPoint c[3] = {cut(0, 0), cut(1, 0), cut(2, 0)};
    kept.push_back({inside[0], inside[1], inside[2], c[0]});
    kept.push_back({inside[1], inside[2], c[0], c[1]});
    kept.push_back({inside[2], c[0], c[1], c[2]});
  } else if (inside.size() == 2) {
    const RationalPoint c[4] = {cut(0, 0), cut(0, 1), cut(1, 0), cut(1, 1)};
    kept.push_back({inside[0], c[0], c[1], inside[1]});
    kept.push_back({inside[1], c[0], c[1], c[2]});
    kept.push_back({inside[1], c[1], c[2], c[3]});
  } else if (inside.size() == 1) {
    kept.push_back({inside[0], cut(0, 0), cut(0, 1), cut(0, 2)});
  }
}

/// Returns six times the volume that two tetrahedra share.
Rational SixfoldOfBoth(const RationalTetrahedron& a, const RationalTetrahedron& b) {
  std::vector<RationalTetrahedron> parts{a};
  for (std::size_t k = 0; k < 4; ++k) {
    const RationalPoint& apex = b[k];
    const RationalPoint& p = b[(k + 1) % 4];
    const RationalPoint& q = b[(k + 2) % 4];
    const RationalPoint& r = b[(k + 3) % 4];
    const int side = sgn(Sixfold({p, q, r, apex}));
    const auto plane = [&](const RationalPoint& x) {
      return Rational(-side * Sixfold({p, q, r, x}));
    };
    std::vector<RationalTetrahedron> kept;
    for (const RationalTetrahedron& part : parts)
      Clip(part, plane, kept);
    parts = kept;
  }
  Rational volume = 0;
  for (const RationalTetrahedron& part : parts)
    volume += abs(Sixfold(part));
  return volume;
}

/// The tetrahedra from one corner of a surface to its triangles.
std::vector<RationalTetrahedron> TetrahedraOf(const std::vector<LatticePoint>& surface,
                                              const LatticePoint& direction,
                                              const Rational& travel) {
  const auto at = [&](const LatticePoint& p) {
    return RationalPoint{p[0] + travel * direction[0], p[1] + travel * direction[1],
                         p[2] + travel * direction[2]};
  };
  std::vector<RationalTetrahedron> result;
  for (std::size_t k = 0; k < surface.size(); k += 3) {
    const RationalTetrahedron t{at(surface[0]), at(surface[k]), at(surface[k + 1]),
                                at(surface[k + 2])};
    if (Sixfold(t) != 0) result.push_back(t);
  }
  return result;
}

/// Returns true when the solids that two surfaces enclose share volume. This looks at the surfaces
/// alone: the volume that they share, each point as often as both surfaces wind around it.
bool ShareVolume(const SolidQuestion& question, const Rational& travel) {
  const auto moving = TetrahedraOf(question.moving.surface, question.direction, travel);
  const auto fixed = TetrahedraOf(question.fixed.surface, question.direction, 0);
  Rational volume = 0;
  for (const RationalTetrahedron& a : moving) {
    for (const RationalTetrahedron& b : fixed)
      volume += sgn(Sixfold(a)) * sgn(Sixfold(b)) * SixfoldOfBoth(a, b);
  }
  return volume > 0;
}

TEST(SolidJudge, AgreesWithTheVolumesThatSurfacesShare) {
  std::size_t overlaps = 0;
  std::size_t judged = 0;
  for (std::size_t family = 0; family < SolidFamilyCount(); ++family) {
    for (std::uint64_t seed = 0; seed < static_cast<std::uint64_t>(Scaled(80)); seed += 20) {
      const SolidScene scene = MakeSolidScene(family, seed);
      const SolidQuestion& question = scene.question;
      if (question.moving.surface.size() * question.fixed.surface.size() > 9 * 16 * 24) continue;
      // The state can change at the ends of the intervals of pieces alone.
      std::set<Rational> ends{0};
      for (const Piece& a : question.moving.pieces) {
        for (const Piece& b : question.fixed.pieces) {
          const auto interval = OverlapOf(a, b, question.direction);
          if (!interval) continue;
          ends.insert(interval->first);
          ends.insert(interval->last);
        }
      }
      const SolidVerdict verdict = JudgePieces(question);
      EXPECT_EQ(ShareVolume(question, 0), verdict.outcome == SolidOutcome::OverlapAtStart)
          << Describe(scene);
      Rational before = 0;
      bool found = verdict.outcome == SolidOutcome::OverlapAtStart;
      for (auto end = ends.upper_bound(0); !found; ++end) {
        const Rational next = end == ends.end() ? Rational(before + 1) : *end;
        found = ShareVolume(question, (before + next) / 2);
        if (found || end == ends.end()) break;
        before = next;
      }
      EXPECT_EQ(found, verdict.outcome != SolidOutcome::None) << Describe(scene);
      if (found && verdict.outcome != SolidOutcome::OverlapAtStart) {
        EXPECT_EQ(verdict.travel, before) << Describe(scene);
      }
      overlaps += found ? 1 : 0;
      ++judged;
    }
  }
  EXPECT_GE(judged, static_cast<std::size_t>(Scaled(20)));
  EXPECT_GE(overlaps, static_cast<std::size_t>(Scaled(10)));
}

} // namespace
