#ifndef GSL_VIEW_SCENE_H
#define GSL_VIEW_SCENE_H

#include "gsl_Sweep.h"

#include <cstddef>
#include <string>
#include <vector>

namespace gsl_view {

/// A body as it is drawn. The arrays of its triangles must outlive the scene.
struct ViewBody {
  std::string name;                  ///< as people read it, without control characters
  gsl_sweep::TriangleView triangles; ///< where the question has them before any travel
};

/// One question about bodies and its answer: all that a picture or a page shows.
struct ViewScene {
  ViewBody moving;
  std::string changes; ///< how it differs from its file, such as "grown by 0.1, posed"; or empty
  std::vector<ViewBody> fixed;  ///< in the order of the pair; at least one
  gsl_sweep::Question question; ///< the offset is in the corners already
  bool last = false;            ///< the answer is the last contact, not the first
  gsl_sweep::Answer answer;
  std::size_t pairCount = 0;             ///< of the patch; 0 where it was not asked for
  std::vector<gsl_sweep::Contact> patch; ///< the first of its pairs, as Pair::FindPatch writes them
  std::string toolVersion;               ///< of the program that shows it
};

} // namespace gsl_view

#endif
