#ifndef GSL_VIEW_TITLE_BLOCK_H
#define GSL_VIEW_TITLE_BLOCK_H

#include "Page.h"
#include "ViewScene.h"

#include <string>
#include <vector>

namespace gsl_view {

/// Returns the answer in one line, such as "Contact after a travel of 30".
std::string HeadlineOf(const ViewScene& scene);

/// Returns the kind of the contact in words, such as "vertex on face"; "none" without a contact.
std::string KindInWords(const ViewScene& scene);

/// Returns what was asked, apart from the direction, such as "first contact, up to 20".
std::string AskedText(const ViewScene& scene);

/// One line of the block.
struct TitleRow {
  std::string label, value;
  bool isBold = false;
};

/// What a title block says besides the files and the version.
struct TitleTexts {
  std::vector<TitleRow> rows; ///< at most five; how the moving body was changed comes after them
  double errorBound = 0.0;    ///< of every number; 0 for exact numbers
  std::string note;           ///< one line about the drawing; it may be empty
};

/// Draws a title block about an answer, or about many where `showsBodies` is false. Then the bodies
/// have no colours, and none is met.
void DrawTitleBlock(Page& page, const ViewScene& scene, const Rect& block, const TitleTexts& texts,
                    bool showsBodies);

/// Draws the title block: the files, the direction, the travel, the kind, what was asked, and the
/// version of the program. `note` is one line about the drawing; it may be empty.
void DrawTitleBlock(Page& page, const ViewScene& scene, const Rect& block, const std::string& note);

} // namespace gsl_view

#endif
