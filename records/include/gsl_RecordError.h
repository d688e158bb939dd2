#ifndef GSL_RECORD_ERROR_H
#define GSL_RECORD_ERROR_H

#include "gsl_RecordExport.h"

#include <stdexcept>

/// Records cannot be stored, or bytes are not records. The message is one line.
class GSL_RECORDS_API gsl_RecordError : public std::runtime_error {
public:
  /// The message is one line.
  explicit gsl_RecordError(const std::string& message);
  gsl_RecordError(const gsl_RecordError&) noexcept = default;
  gsl_RecordError& operator=(const gsl_RecordError&) noexcept = default;
  ~gsl_RecordError() override;
};

#endif
