#include "cls_RecordException.h"

cls_RecordException::cls_RecordException(const cow_String& text, const cls_Uid& object)
    : nex_CommandException(text, object) {}

cls_RecordException::~cls_RecordException() = default;

void cls_RecordException::Raise(const cow_String& source, int line) const {
  RaiseCopy(*this, source, line);
}
