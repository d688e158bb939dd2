#include "gsl_RecordReader.h"

gsl_RecordReader::~gsl_RecordReader() = default;
