#ifndef ATR_STRING_H
#define ATR_STRING_H

#include "mem_Export.h"

#include <cstddef>
#include <string>
#include <vector>

/// A text of the message library. It is plain, or it is a format with arguments that are still
/// open.
class GSL_HOST_API atr_String {
public:
  atr_String() = default;
  /// Makes a plain text. Null makes the empty text.
  explicit atr_String(const char* text);
  /// Holds a copy of the text.
  explicit atr_String(const std::string& text);
  atr_String(const atr_String&) = default;
  atr_String(atr_String&&) noexcept = default;
  /// After std::bad_alloc the text is as it was.
  atr_String& operator=(const atr_String& other) { return *this = atr_String(other); }
  atr_String& operator=(atr_String&&) noexcept = default;
  ~atr_String() = default;

  const char* CStr() const { return m_text.c_str(); }
  std::size_t Length() const { return m_text.size(); }

  [[nodiscard]] friend bool operator==(const atr_String& a, const atr_String& b) {
    return a.m_text == b.m_text;
  }
  [[nodiscard]] friend bool operator!=(const atr_String& a, const atr_String& b) {
    return !(a == b);
  }

private:
  friend GSL_HOST_API atr_String atr_translate(const char* format);
  friend GSL_HOST_API bool atr_SubstituteFormat(atr_String&, int, const char*);
  friend GSL_HOST_API bool atr_SubstituteFormat(atr_String&, int, int);

  struct OpenArgument {
    int position;
    char kind;
    std::size_t offset;
    std::size_t length;
  };

  void FindArguments();
  bool Substitute(int position, char kind, const std::string& value);

  std::string m_text;
  std::vector<OpenArgument> m_open;
};

/// Returns the format in the user's language with its arguments open. "%d" and "%s" count from 1 in
/// their order, "%2$s" names its position, "%%" is a percent sign. A format without a translation
/// is used as it is.
GSL_HOST_API atr_String atr_translate(const char* format);

/// Fills every open place of that position and kind. Returns false, and changes nothing, when there
/// is no such place. Text that was filled in is never searched for arguments again. Null text is
/// the empty text. After std::bad_alloc the message is as it was.
GSL_HOST_API bool atr_SubstituteFormat(atr_String& message, int position, const char* value);
/// Does the same with an integer.
GSL_HOST_API bool atr_SubstituteFormat(atr_String& message, int position, int value);

/// Sets the text that atr_translate uses for a format; null removes it. Nothing happens for a null
/// format. Safe from any thread.
GSL_HOST_API void atr_SetTranslation(const char* format, const char* translated);

#endif
