#ifndef NEX_COMMAND_EXCEPTION_H
#define NEX_COMMAND_EXCEPTION_H

#include "nex_Exception.h"

class XH_API nex_CommandException : public nex_Exception {
public:
  explicit nex_CommandException(const cow_String& message, const cls_Uid& uid = cls_Uid());
  nex_CommandException(const nex_CommandException&);
  ~nex_CommandException() override;

private:
  [[noreturn]] void xh_Throw() const override;
};

#endif
