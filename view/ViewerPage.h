#ifndef GSL_VIEW_VIEWER_PAGE_H
#define GSL_VIEW_VIEWER_PAGE_H

#include "Base64.h"
#include "ViewScene.h"

#include <string>
#include <vector>

namespace gsl_view {

/// Makes a page of HTML that shows the scene in any browser with WebGL 2. The page holds all that
/// it needs, and its policy forbids it every connection.
///
/// Numbers    of the question and the answer read back as the same doubles; surfaces are drawn in
///            single precision, see PageBody.
/// Names      may hold any characters. Bytes that are not UTF-8 become U+FFFD.
/// Same bytes for the same scene.
void MakeViewerPage(const ViewScene& scene, const PageSink& sink);

/// Makes the same page with a sphere of many answers, of which it shows one after the other. The
/// answer of the scene is the first that is shown; it is the answer of SphereTally::ShownFirst.
/// Requires at least one answer.
void MakeSpherePage(const ViewScene& scene, const std::vector<gsl_sweep::Answer>& answers,
                    const PageSink& sink);

/// Writes a page to a file, which appears whole or not at all. Throws gsl_mesh::OutputError, also
/// for a file that exists, unless `force` is set.
void WriteViewerPage(const std::string& path, const ViewScene& scene, bool force);
void WriteSpherePage(const std::string& path, const ViewScene& scene,
                     const std::vector<gsl_sweep::Answer>& answers, bool force);

} // namespace gsl_view

#endif
