#ifndef GSL_TOOLS_RECORD_DIFF_H
#define GSL_TOOLS_RECORD_DIFF_H

#include "gsl_RecordStore.h"

#include <cstddef>
#include <string>
#include <vector>

/// Differences of two files of records, without the classes that wrote them.
namespace gsl_tools {

/// Differences after this many are not looked for.
constexpr std::size_t kMostDifferences = 1000;

/// Returns one line for each difference; none when both have the same contents.
///
/// Roots      of one name are compared; roots without a name by their order.
/// Fields     of one name are compared, whatever their order; the order and the indices are not
///            compared. Entries of lists are compared by their positions.
/// Values     are compared by their bits, so that NaN equals itself and 0 differs from -0.
/// Sharing    is compared: fields share an object in one file where they share one in the other.
/// Lines      "- axis/_flip: true" is only in the first, "+ ..." only in the second, and
///            "~ axis/_flip: true -> false" in both.
///
/// Requires records that CheckNesting accepts.
std::vector<std::string> DifferencesOf(const gsl_RecordStore& first, const gsl_RecordStore& second);

} // namespace gsl_tools

#endif
