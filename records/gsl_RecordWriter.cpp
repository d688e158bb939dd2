#include "gsl_RecordWriter.h"

gsl_RecordWriter::~gsl_RecordWriter() = default;
