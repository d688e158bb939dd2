#include "nex_Exception.h"

#include <cstdlib>

nex_Exception::nex_Exception(const cow_String& text, const cls_Uid& object)
    : m_message(text), m_uid(object) {}

nex_Exception::~nex_Exception() = default;

const char* nex_Exception::what() const noexcept {
  return m_message.CStr();
}

void nex_Exception::Throw(const nex_Exception& exception, const char* source, int line) {
  exception.Raise(cow_String(source), line);
  // Raise must throw: the caller goes on only without an exception.
  std::abort();
}

void nex_Exception::Raise(const cow_String& source, int line) const {
  RaiseCopy(*this, source, line);
}
