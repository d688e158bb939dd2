#ifndef GSL_TESTS_VIEW_SAMPLES_H
#define GSL_TESTS_VIEW_SAMPLES_H

#include "ViewScene.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <string>
#include <utility>
#include <vector>

/// Scenes for pictures.
namespace view_samples {

using gsl_arithmetic::Coord3;
using gsl_sweep::TriangleView;
using gsl_view::ViewScene;

/// Directions that are spread evenly over the sphere, on a spiral from the top down.
inline std::vector<Coord3> SpiralDirections(std::size_t count) {
  std::vector<Coord3> directions;
  for (std::size_t k = 0; k < count; ++k) {
    const double z = 1.0 - (2.0 * static_cast<double>(k) + 1.0) / static_cast<double>(count);
    const double around = 2.399963229728653 * static_cast<double>(k);
    const double radius = std::sqrt(1.0 - z * z);
    directions.push_back({radius * std::cos(around), radius * std::sin(around), z});
  }
  return directions;
}

/// The nine numbers of each triangle of a box.
inline std::vector<double> BoxCorners(const Coord3& low, const Coord3& high) {
  const int faces[12][3] = {{0, 2, 3}, {0, 3, 1}, {4, 5, 7}, {4, 7, 6}, {0, 1, 5}, {0, 5, 4},
                            {2, 6, 7}, {2, 7, 3}, {0, 4, 6}, {0, 6, 2}, {1, 3, 7}, {1, 7, 5}};
  std::vector<double> numbers;
  for (const auto& face : faces) {
    for (const int corner : face) {
      numbers.push_back((corner & 1) != 0 ? high.x : low.x);
      numbers.push_back((corner & 2) != 0 ? high.y : low.y);
      numbers.push_back((corner & 4) != 0 ? high.z : low.z);
    }
  }
  return numbers;
}

inline TriangleView ViewOf(const std::vector<double>& numbers) {
  TriangleView view;
  view.vertices = numbers.data();
  view.vertexCount = numbers.size() / 3;
  view.triangleCount = numbers.size() / 9;
  return view;
}

/// A scene with its triangles.
class Sample {
public:
  Sample(std::vector<double> moving, std::vector<std::vector<double>> fixed,
         const Coord3& direction) {
    m_corners.push_back(std::move(moving));
    scene.moving = {"moving.stl", ViewOf(m_corners.back())};
    for (std::vector<double>& body : fixed) {
      m_corners.push_back(std::move(body));
      scene.fixed.push_back({"fixed.stl", ViewOf(m_corners.back())});
    }
    scene.question.direction = direction;
    scene.toolVersion = "1.2.3";
  }

  // The views stay those of the triangles.
  Sample(const Sample&) = delete;
  Sample& operator=(const Sample&) = delete;
  Sample(Sample&&) = default;
  Sample& operator=(Sample&&) = default;

  /// Asks the question of the scene, with all pairs of the patch.
  Sample& Ask(bool wantsPatch = false) {
    std::vector<gsl_sweep::Body> bodies;
    for (const gsl_view::ViewBody& body : scene.fixed)
      bodies.emplace_back(body.triangles);
    const gsl_sweep::Pair pair(gsl_sweep::Body(scene.moving.triangles), bodies);
    scene.answer = scene.last ? pair.Last(scene.question) : pair.First(scene.question);
    if (!wantsPatch) return *this;
    scene.patch.resize(100);
    scene.pairCount = pair.Patch(scene.question, scene.patch.data(), scene.patch.size());
    scene.patch.resize(std::min(scene.patch.size(), scene.pairCount));
    return *this;
  }

  ViewScene scene;

private:
  std::deque<std::vector<double>> m_corners;
};

/// A box that is 2 above a slab and falls onto it; all numbers are multiplied by `scale`.
inline Sample FallingBox(double scale = 1.0) {
  const auto at = [&](double x, double y, double z) {
    return Coord3{x * scale, y * scale, z * scale};
  };
  Sample sample(BoxCorners(at(0.25, 0.25, 3), at(1.25, 1.25, 4)),
                {BoxCorners(at(-1, -1, 0), at(3, 2, 1))}, {0.0, 0.0, -1.0});
  sample.Ask();
  return sample;
}

} // namespace view_samples

#endif
