#ifndef CLS_RECORD_EXCEPTION_H
#define CLS_RECORD_EXCEPTION_H

#include "nex_CommandException.h"

class XH_API cls_RecordException : public nex_CommandException {
public:
  explicit cls_RecordException(const cow_String& message, const cls_Uid& uid = cls_Uid());
  cls_RecordException(const cls_RecordException&);
  ~cls_RecordException() override;

private:
  [[noreturn]] void xh_Throw() const override;
};

#endif
