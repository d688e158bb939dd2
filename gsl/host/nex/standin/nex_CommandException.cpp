#include "nex_CommandException.h"

nex_CommandException::nex_CommandException(const cow_String& text, const cls_Uid& object)
    : nex_Exception(text, object) {}

nex_CommandException::~nex_CommandException() = default;

void nex_CommandException::Raise(const cow_String& source, int line) const {
  RaiseCopy(*this, source, line);
}
