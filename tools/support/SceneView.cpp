#include "support/SceneView.h"

namespace gsl_tools {

using gsl_view::ViewScene;

std::vector<double> PlacedCorners(const Body& body, const Coord3& offset) {
  std::vector<double> corners(9 * body.TriangleCount());
  body.GetTriangles(corners.data());
  const double step[] = {offset.x, offset.y, offset.z};
  for (std::size_t k = 0; k < corners.size(); ++k)
    corners[k] += step[k % 3];
  return corners;
}

ViewScene ViewSceneOf(const SweepReport& report, const gsl_sweep::Question& question,
                      const std::vector<gsl_sweep::TriangleView>& surfaces) {
  ViewScene scene;
  scene.moving = {NameInText(report.movingFile), surfaces.at(0)};
  for (std::size_t k = 0; k < report.fixed.size(); ++k)
    scene.fixed.push_back({NameInText(report.fixed[k].file), surfaces.at(k + 1)});
  scene.question = question;
  scene.last = report.last;
  scene.answer = report.answer;
  if (report.patch) {
    scene.pairCount = report.patch->pairCount;
    scene.patch = report.patch->listed;
  }
  scene.toolVersion = report.toolVersion;
  return scene;
}

} // namespace gsl_tools
