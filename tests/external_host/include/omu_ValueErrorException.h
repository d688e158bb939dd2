#ifndef OMU_VALUE_ERROR_EXCEPTION_H
#define OMU_VALUE_ERROR_EXCEPTION_H

#include "nex_CommandException.h"

class XH_API omu_ValueErrorException : public nex_CommandException {
public:
  explicit omu_ValueErrorException(const cow_String& message, const cls_Uid& uid = cls_Uid());
  omu_ValueErrorException(const omu_ValueErrorException&);
  ~omu_ValueErrorException() override;

private:
  [[noreturn]] void xh_Throw() const override;
};

#endif
