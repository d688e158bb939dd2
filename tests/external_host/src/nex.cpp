#include "cls_RecordException.h"
#include "nex_AssertException.h"
#include "nex_CommandException.h"
#include "omu_ValueErrorException.h"

#include <cstdlib>

nex_Exception::nex_Exception(const cow_String& message, const cls_Uid& uid)
    : m_text(message), m_subject(uid), m_line(0) {}

nex_Exception::nex_Exception(const nex_Exception&) = default;

nex_Exception::~nex_Exception() = default;

void nex_Exception::Throw(const nex_Exception& exception, const char* sourceName, int lineNumber) {
  exception.m_unit = cow_String(sourceName);
  exception.m_line = lineNumber;
  exception.xh_Throw();
  std::abort();
}

#define XH_EXCEPTION(name, base)                                                                   \
  name::name(const cow_String& message, const cls_Uid& uid) : base(message, uid) {}                \
  name::name(const name&) = default;                                                               \
  name::~name() = default;                                                                         \
  void name::xh_Throw() const {                                                                    \
    throw *this;                                                                                   \
  }

XH_EXCEPTION(nex_AssertException, nex_Exception)
XH_EXCEPTION(nex_CommandException, nex_Exception)
XH_EXCEPTION(omu_ValueErrorException, nex_CommandException)
XH_EXCEPTION(cls_RecordException, nex_CommandException)
