#ifndef NEX_ASSERT_EXCEPTION_H
#define NEX_ASSERT_EXCEPTION_H

#include "nex_Exception.h"

/// Reports an assertion that does not hold. The message is the text of the assertion.
class GSL_HOST_API nex_AssertException : public nex_Exception {
public:
  explicit nex_AssertException(const cow_String& message, const cls_Uid& uid = cls_Uid());
  nex_AssertException(const nex_AssertException&) noexcept = default;
  nex_AssertException& operator=(const nex_AssertException&) noexcept = default;
  ~nex_AssertException() override;

protected:
  [[noreturn]] void Raise(const cow_String& sourceName, int lineNumber) const override;
};

#endif
