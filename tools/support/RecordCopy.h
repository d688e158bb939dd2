#ifndef GSL_TOOLS_RECORD_COPY_H
#define GSL_TOOLS_RECORD_COPY_H

#include "gsl_RecordReader.h"
#include "gsl_RecordWriter.h"

namespace gsl_tools {

/// Writes every root of a reader to a writer, with the names of roots and classes, and with the
/// same objects shared. The field of an object that is read first holds it. No depth of nesting
/// costs stack. Throws what the writer throws.
void CopyRecords(const gsl_RecordReader& from, gsl_RecordWriter& to);

} // namespace gsl_tools

#endif
