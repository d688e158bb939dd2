#ifndef GSL_RECORD_FILE_H
#define GSL_RECORD_FILE_H

#include "gsl_RecordExport.h"
#include "gsl_RecordStore.h"

#include <string>

/// Saves the records to a file, in their byte form. The file appears whole or not at all: the bytes
/// are written beside it, flushed to the disk, and renamed. A file that exists is replaced and
/// keeps its permissions. A symbolic link to a file stays, and the file is replaced.
///
/// Errors  gsl_RecordError that names the file and the reason, and std::bad_alloc; the file is then
///         as it was before.
GSL_RECORDS_API void gsl_SaveRecords(const gsl_RecordStore& store, const std::string& path);

/// Loads the records of a file.
///
/// Errors  gsl_RecordError that names the file and what was found in it; std::bad_alloc.
[[nodiscard]] GSL_RECORDS_API gsl_RecordStore gsl_LoadRecords(const std::string& path);

#endif
