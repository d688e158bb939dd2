#ifndef OMU_VALUE_ERROR_EXCEPTION_H
#define OMU_VALUE_ERROR_EXCEPTION_H

#include "nex_CommandException.h"

/// Reports a value that the object model does not allow.
class GSL_HOST_API omu_ValueErrorException : public nex_CommandException {
public:
  explicit omu_ValueErrorException(const cow_String& message, const cls_Uid& uid = cls_Uid());
  omu_ValueErrorException(const omu_ValueErrorException&) noexcept = default;
  omu_ValueErrorException& operator=(const omu_ValueErrorException&) noexcept = default;
  ~omu_ValueErrorException() override;

protected:
  [[noreturn]] void Raise(const cow_String& sourceName, int lineNumber) const override;
};

#endif
