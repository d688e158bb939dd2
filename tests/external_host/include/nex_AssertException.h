#ifndef NEX_ASSERT_EXCEPTION_H
#define NEX_ASSERT_EXCEPTION_H

#include "nex_Exception.h"

class XH_API nex_AssertException : public nex_Exception {
public:
  explicit nex_AssertException(const cow_String& message, const cls_Uid& uid = cls_Uid());
  nex_AssertException(const nex_AssertException&);
  ~nex_AssertException() override;

private:
  [[noreturn]] void xh_Throw() const override;
};

#endif
