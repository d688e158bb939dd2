#ifndef GSL_TOOLS_SCENE_VIEW_H
#define GSL_TOOLS_SCENE_VIEW_H

#include "ViewScene.h"
#include "support/Report.h"

#include <vector>

/// What people look at, made of a report.
namespace gsl_tools {

/// Returns the corners of a body with the offset, nine numbers for each triangle. Those of a
/// triangle that the body skips are NaN.
std::vector<double> PlacedCorners(const Body& body, const Coord3& offset);

/// Returns the scene of a report, without an answer. The surfaces are those of the moving body,
/// before any travel, and of each fixed body. Their arrays must outlive the scene.
gsl_view::ViewScene SceneWithoutAnswer(const SceneReport& report,
                                       const gsl_sweep::Question& question,
                                       const std::vector<gsl_sweep::TriangleView>& surfaces);

/// Returns the same with the answer and the patch.
gsl_view::ViewScene ViewSceneOf(const SweepReport& report, const gsl_sweep::Question& question,
                                const std::vector<gsl_sweep::TriangleView>& surfaces);

} // namespace gsl_tools

#endif
