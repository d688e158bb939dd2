#ifndef GSL_VIEW_GLTF_SCENE_H
#define GSL_VIEW_GLTF_SCENE_H

#include "Base64.h"
#include "ViewScene.h"

#include <string>

namespace gsl_view {

/// Returns whether a file name has the extension .glb, in upper or lower case.
bool IsGltfName(const std::string& path);

/// Writes the bodies at their contact as binary glTF 2.0, a file of 3-D viewers, in parts.
///
/// Nodes       one for each body, named after its file, the moving body first; then "contact", with
///             one child for each point of the contact and one for its normal. A contact with a
///             clearance has two points, others one. A solid inside another has no contact node.
/// Units       those of the bodies, and their axes: nothing is scaled or turned. Viewers read the
///             numbers as metres, with y up.
/// Origin      that of the bodies, unless they are 128 times their size away from it. Then single
///             precision would move them against each other, and a point near them becomes the
///             origin of the file. Both functions return it, and it is in `extras`.
/// Precision   a corner is single precision around the middle of its own body, see PageBody.
/// NaN         triangles with a NaN or infinite corner are left out.
/// Answer      status, travel, kind, direction, normal, triangles and points are in `extras` of the
///             scene, as the same doubles. The point of the moving body is the one before its
///             travel.
/// Requires    an answer with a contact. `atContact` holds the moving body after its travel.
/// Same bytes for the same scene.
/// Errors      std::range_error for coordinates beyond the range of single precision, and for
/// bodies
///             smaller than its least normal number; std::length_error for a file of 4 GiB or more.
///             The sink then has received nothing.
gsl_arithmetic::Coord3 MakeGltfScene(const ViewScene& scene,
                                     const gsl_sweep::TriangleView& atContact,
                                     const PageSink& sink);

/// Writes the scene to a file, which appears whole or not at all. Throws gsl_mesh::OutputError,
/// also for the errors above, and for a file that exists, unless `force` is set.
gsl_arithmetic::Coord3 WriteGltfScene(const std::string& path, const ViewScene& scene,
                                      const gsl_sweep::TriangleView& atContact, bool force);

} // namespace gsl_view

#endif
