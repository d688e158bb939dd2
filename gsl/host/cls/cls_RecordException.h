#ifndef CLS_RECORD_EXCEPTION_H
#define CLS_RECORD_EXCEPTION_H

#include "nex_CommandException.h"

/// Reports that a record cannot be written or read. The uid belongs to the record concerned, if
/// any.
class GSL_HOST_API cls_RecordException : public nex_CommandException {
public:
  explicit cls_RecordException(const cow_String& message, const cls_Uid& uid = cls_Uid());
  cls_RecordException(const cls_RecordException&) noexcept = default;
  cls_RecordException& operator=(const cls_RecordException&) noexcept = default;
  ~cls_RecordException() override;

protected:
  [[noreturn]] void Raise(const cow_String& sourceName, int lineNumber) const override;
};

#endif
