#ifndef NEX_COMMAND_EXCEPTION_H
#define NEX_COMMAND_EXCEPTION_H

#include "nex_Exception.h"

/// Reports that a command received an argument that it cannot use.
class GSL_HOST_API nex_CommandException : public nex_Exception {
public:
  explicit nex_CommandException(const cow_String& message, const cls_Uid& uid = cls_Uid());
  nex_CommandException(const nex_CommandException&) noexcept = default;
  nex_CommandException& operator=(const nex_CommandException&) noexcept = default;
  ~nex_CommandException() override;

protected:
  [[noreturn]] void Raise(const cow_String& sourceName, int lineNumber) const override;
};

#endif
