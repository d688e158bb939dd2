#include "gsl_RecordError.h"

gsl_RecordError::gsl_RecordError(const std::string& message) : std::runtime_error(message) {}

gsl_RecordError::~gsl_RecordError() = default;
