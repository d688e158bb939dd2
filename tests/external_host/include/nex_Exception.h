#ifndef NEX_EXCEPTION_H
#define NEX_EXCEPTION_H

#include "cls_Uid.h"
#include "cow_String.h"

/// The root of this host's exceptions. It does not derive from an exception of the standard
/// library.
class XH_API nex_Exception {
public:
  nex_Exception(const cow_String& message, const cls_Uid& uid);
  nex_Exception(const nex_Exception&);
  virtual ~nex_Exception();

  [[noreturn]] static void Throw(const nex_Exception& exception, const char* sourceName,
                                 int lineNumber);

  const cow_String& xh_Text() const { return m_text; }
  const cls_Uid& xh_Subject() const { return m_subject; }
  const cow_String& xh_Unit() const { return m_unit; }
  int xh_Line() const { return m_line; }

private:
  /// Throws a copy of the dynamic type.
  [[noreturn]] virtual void xh_Throw() const = 0;

  cow_String m_text;
  cls_Uid m_subject;
  mutable cow_String m_unit;
  mutable int m_line;
};

#endif
