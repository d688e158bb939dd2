#ifndef GSL_VIEW_PAGE_PARTS_H
#define GSL_VIEW_PAGE_PARTS_H

#include <string_view>
#include <vector>

/// The parts of the viewer page that are the same for every scene, in pieces that follow each
/// other. page/embed.cmake makes their source from the files of the folder page.
namespace gsl_view {

const std::vector<std::string_view>& PageMarkup();
const std::vector<std::string_view>& PageStyle();
const std::vector<std::string_view>& PageScript();

/// Return the SHA-256 of a part, in hexadecimal digits.
const char* PageStyleHash();
const char* PageScriptHash();

} // namespace gsl_view

#endif
