#ifndef NEX_EXCEPTION_H
#define NEX_EXCEPTION_H

#include "cls_Uid.h"
#include "cow_String.h"

#include <exception>

/// Base of the host's exceptions: a message, the identifier of the object concerned, and the source
/// unit and line that raised it. Copying shares the texts and does not throw.
class GSL_HOST_API nex_Exception : public std::exception {
public:
  explicit nex_Exception(const cow_String& message, const cls_Uid& uid = cls_Uid());
  nex_Exception(const nex_Exception&) noexcept = default;
  nex_Exception& operator=(const nex_Exception&) noexcept = default;
  ~nex_Exception() override;

  const cow_String& Message() const noexcept { return m_message; }
  /// Returns the null uid unless the exception concerns one object.
  const cls_Uid& Uid() const noexcept { return m_uid; }
  /// Return the empty text and 0 for an exception that was not raised through Throw.
  const cow_String& SourceName() const noexcept { return m_sourceName; }
  int LineNumber() const noexcept { return m_lineNumber; }
  /// Returns the message.
  const char* what() const noexcept override;

  /// Raises a copy of `exception`, in its own dynamic type, that carries the source location.
  [[noreturn]] static void Throw(const nex_Exception& exception, const char* sourceName,
                                 int lineNumber);

protected:
  /// Throws a copy of this object that carries the location; every derived class overrides it.
  [[noreturn]] virtual void Raise(const cow_String& sourceName, int lineNumber) const;

  /// The body of Raise for a derived class.
  template <class E>
  [[noreturn]] static void RaiseCopy(const E& exception, const cow_String& sourceName,
                                     int lineNumber) {
    E copy(exception);
    copy.SetLocation(sourceName, lineNumber);
    throw copy;
  }

  /// Remembers the source file and the line.
  void SetLocation(const cow_String& source, int line) noexcept {
    m_sourceName = source;
    m_lineNumber = line;
  }

private:
  cow_String m_message;
  cls_Uid m_uid;
  cow_String m_sourceName;
  int m_lineNumber = 0;
};

#endif
