#ifndef GSL_TOOLS_RECORD_CHECK_H
#define GSL_TOOLS_RECORD_CHECK_H

#include "gsl_RecordStore.h"

#include <string>

/// What bytes may hold and the library does not restore.
namespace gsl_tools {

/// The deepest nesting that the library writes or reads; a root has level 0.
constexpr unsigned int kMostNesting = 1000;

/// Returns an empty text, or what is wrong: records that are nested deeper than kMostNesting. The
/// functions that show and compare records require that nothing is wrong.
std::string CheckNesting(const gsl_RecordStore& records);

/// Returns an empty text, or what is wrong: an object that contains itself through references.
std::string CheckCycles(const gsl_RecordStore& records);

} // namespace gsl_tools

#endif
