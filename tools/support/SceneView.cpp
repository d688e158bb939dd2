#include "support/SceneView.h"

#include "support/VectorText.h"

namespace gsl_tools {

using gsl_view::ViewScene;

namespace {

/// Says how the moving body differs from its file, in the order of the changes.
std::string ChangesOf(const SceneReport& report) {
  std::string text;
  const auto add = [&text](const std::string& change) {
    text += (text.empty() ? "" : ", ") + change;
  };
  if (report.allowance != 0.0) add("grown by " + NumberText(report.allowance));
  if (report.pose) add("posed");
  const Coord3& by = report.offset;
  if (by.x != 0.0 || by.y != 0.0 || by.z != 0.0) add("moved by " + VectorText(by));
  return text;
}

} // namespace

std::vector<double> PlacedCorners(const Body& body, const Coord3& offset) {
  std::vector<double> corners(9 * body.TriangleCount());
  body.GetTriangles(corners.data());
  const double step[] = {offset.x, offset.y, offset.z};
  for (std::size_t k = 0; k < corners.size(); ++k)
    corners[k] += step[k % 3];
  return corners;
}

ViewScene SceneWithoutAnswer(const SceneReport& report, const gsl_sweep::Question& question,
                             const std::vector<gsl_sweep::TriangleView>& surfaces) {
  ViewScene scene;
  scene.moving = {NameInText(report.movingFile), surfaces.at(0)};
  scene.changes = ChangesOf(report);
  for (std::size_t k = 0; k < report.fixed.size(); ++k)
    scene.fixed.push_back({NameInText(report.fixed[k].file), surfaces.at(k + 1)});
  scene.question = question;
  scene.last = report.last;
  scene.toolVersion = report.toolVersion;
  return scene;
}

ViewScene ViewSceneOf(const SweepReport& report, const gsl_sweep::Question& question,
                      const std::vector<gsl_sweep::TriangleView>& surfaces) {
  ViewScene scene = SceneWithoutAnswer(report, question, surfaces);
  scene.answer = report.answer;
  if (report.patch) {
    scene.pairCount = report.patch->pairCount;
    scene.patch = report.patch->listed;
  }
  return scene;
}

} // namespace gsl_tools
