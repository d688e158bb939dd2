#ifndef GSL_VIEW_TITLE_BLOCK_H
#define GSL_VIEW_TITLE_BLOCK_H

#include "Page.h"
#include "ViewScene.h"

#include <string>

namespace gsl_view {

/// Returns the answer in one line, such as "Contact after a travel of 30".
std::string HeadlineOf(const ViewScene& scene);

/// Returns the kind of the contact in words, such as "vertex on face"; "none" without a contact.
std::string KindInWords(const ViewScene& scene);

/// Draws the title block: the files, the direction, the travel, the kind, what was asked, and the
/// version of the program. `note` is one line about the drawing; it may be empty.
void DrawTitleBlock(Page& page, const ViewScene& scene, const Rect& block, const std::string& note);

} // namespace gsl_view

#endif
