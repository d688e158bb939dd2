#ifndef GSL_TOOLS_RECORD_JSON_H
#define GSL_TOOLS_RECORD_JSON_H

#include "gsl_RecordStore.h"
#include "support/RecordText.h"

#include <cstddef>
#include <string>

/// Records as strict JSON; docs/gsl-model.md and docs/gsl-model.schema.json describe the documents.
/// Numbers read back as the same doubles; NaN, infinities and -0 are written as their bits. Bytes
/// that are not UTF-8 become U+FFFD.
namespace gsl_tools {

/// Writes the roots of a file. `file` is its name as it was given.
void ListAsJson(const gsl_RecordStore& records, const std::string& file, TextPortions& out);

/// Writes a root and everything that it holds. Requires records that CheckNesting accepts.
void ShowAsJson(const gsl_RecordReader& records, std::size_t root, const std::string& file,
                TextPortions& out);

} // namespace gsl_tools

#endif
