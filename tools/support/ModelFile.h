#ifndef GSL_TOOLS_MODEL_FILE_H
#define GSL_TOOLS_MODEL_FILE_H

#include "gsl_RecordStore.h"

#include <string>
#include <string_view>

/// Files of saved models: the byte form of records, and databases.
namespace gsl_tools {

/// Whether the bytes begin as a database does.
[[nodiscard]] bool IsDatabase(std::string_view bytes);

/// Whether a new file of that name is a database: for the extensions .gslm, .sqlite and .db.
[[nodiscard]] bool NamesDatabase(const std::string& path);

/// Loads a file of either kind. Errors are gsl_RecordError and begin with the path.
gsl_RecordStore LoadModelFile(const std::string& path);

/// Saves to a file, whose kind its name decides. The file appears whole or not at all.
///
/// Errors  gsl_RecordError that begins with the path; the old file stays.
void SaveModelFile(const gsl_RecordStore& records, const std::string& path);

} // namespace gsl_tools

#endif
