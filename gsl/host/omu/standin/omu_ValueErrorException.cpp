#include "omu_ValueErrorException.h"

omu_ValueErrorException::omu_ValueErrorException(const cow_String& text, const cls_Uid& object)
    : nex_CommandException(text, object) {}

omu_ValueErrorException::~omu_ValueErrorException() = default;

void omu_ValueErrorException::Raise(const cow_String& source, int line) const {
  RaiseCopy(*this, source, line);
}
