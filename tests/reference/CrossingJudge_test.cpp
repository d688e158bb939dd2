#include "CrossingJudge.h"

#include "RandomNumbers.h"
#include "TestScale.h"

#include "gsl_Sweep.h"
#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace reference;
using Triangle = std::array<Coord3, 3>;

TEST(CrossingJudge, JudgesWhatIsPlain) {
  const Triangle floorFace{{{0, 0, 0}, {8, 0, 0}, {0, 8, 0}}};
  EXPECT_TRUE(Cross(floorFace, {{{1, 1, -1}, {3, 1, -1}, {2, 2, 1}}}));
  EXPECT_TRUE(Cross(floorFace, {{{2, 2, 0}, {1, 1, 4}, {5, 1, 4}}}));
  EXPECT_FALSE(Cross(floorFace, {{{2, 2, 1}, {1, 1, 4}, {5, 1, 4}}}));
  EXPECT_FALSE(Cross(floorFace, {{{0, 0, 0}, {1, 1, 4}, {5, 1, 4}}}));
  EXPECT_TRUE(Cross(floorFace, {{{0, 0, 0}, {4, 0, 0}, {2, -3, 1}}}));
  EXPECT_FALSE(Cross(floorFace, {{{0, 0, 0}, {8, 0, 0}, {2, 2, 1}}}));
  EXPECT_FALSE(Cross(floorFace, {{{0, 0, 0}, {8, 0, 0}, {0, -8, 0}}}));
  EXPECT_TRUE(Cross(floorFace, {{{0, 0, 0}, {8, 0, 0}, {2, 2, 0}}}));
  EXPECT_TRUE(Cross(floorFace, floorFace));
  EXPECT_FALSE(Cross(floorFace, {{{2, 2, -1}, {2, 2, 1}, {2, 2, 0}}}));
}

/// Triangles whose corners are often common, in one plane, or nearly so.
class Soup {
public:
  explicit Soup(unsigned seed) : m_random(seed) {
    m_reach = 1 + static_cast<int>(seed % 4);
    m_isFlat = seed % 5 == 0;
    m_nudge = seed % 3 == 0 ? 0x1p-52 : 0.0;
    m_scale = seed % 7 == 0 ? 0x1p200 : seed % 7 == 1 ? 0x1p-180 : 1.0;
  }

  Triangle Next() {
    Triangle t;
    for (Coord3& p : t)
      p = {Number(), Number(), m_isFlat ? 0.0 : Number()};
    return t;
  }

private:
  double Number() {
    const int whole = static_cast<int>(m_random() % static_cast<unsigned>(2 * m_reach + 1));
    const double nudge = m_random() % 8 == 0 ? m_nudge : 0.0;
    return (whole - m_reach + nudge) * m_scale;
  }

  std::mt19937_64 m_random;
  int m_reach;
  bool m_isFlat;
  double m_nudge, m_scale;
};

/// The crossings of a body, by its numbers.
std::vector<gsl_sweep::Crossing> Told(const std::vector<Triangle>& triangles) {
  std::vector<double> vertices;
  for (const Triangle& t : triangles) {
    for (const Coord3& p : t)
      vertices.insert(vertices.end(), {p.x, p.y, p.z});
  }
  gsl_sweep::TriangleView view;
  view.vertices = vertices.data();
  view.vertexCount = 3 * triangles.size();
  view.triangleCount = triangles.size();
  std::vector<gsl_sweep::Crossing> told(triangles.size() * triangles.size());
  told.resize(gsl_sweep::Crossings(gsl_sweep::Body(view), told.data(), told.size()));
  return told;
}

TEST(CrossingJudge, SweepAgreesOnEveryPair) {
  const unsigned scenes = static_cast<unsigned>(Scaled(400));
  std::size_t crossing = 0;
  std::size_t apart = 0;
  for (unsigned seed = 0; seed < scenes; ++seed) {
    Soup soup(seed);
    std::vector<Triangle> triangles(6);
    std::generate(triangles.begin(), triangles.end(), [&soup] { return soup.Next(); });
    const std::vector<gsl_sweep::Crossing> told = Told(triangles);
    std::size_t k = 0;
    for (std::size_t i = 0; i < triangles.size(); ++i) {
      for (std::size_t j = i + 1; j < triangles.size(); ++j) {
        const bool isTold = k < told.size() && told[k].first == i && told[k].second == j;
        ASSERT_EQ(isTold, Cross(triangles[i], triangles[j])) << seed << ": " << i << ", " << j;
        ASSERT_EQ(Cross(triangles[j], triangles[i]), isTold);
        k += isTold;
        ++(isTold ? crossing : apart);
      }
    }
    ASSERT_EQ(k, told.size());
  }
  EXPECT_GT(crossing, scenes);
  EXPECT_GT(apart, scenes);
}

} // namespace
