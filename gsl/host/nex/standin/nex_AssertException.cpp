#include "nex_AssertException.h"

nex_AssertException::nex_AssertException(const cow_String& text, const cls_Uid& object)
    : nex_Exception(text, object) {}

nex_AssertException::~nex_AssertException() = default;

void nex_AssertException::Raise(const cow_String& source, int line) const {
  RaiseCopy(*this, source, line);
}
