#ifndef ATR_STRING_H
#define ATR_STRING_H

#include "xh_Export.h"

#include <cstddef>
#include <string>
#include <vector>

/// A message: pieces of text, some of which wait for an argument.
class XH_API atr_String {
public:
  atr_String();
  explicit atr_String(const char* text);
  ~atr_String();
  atr_String(const atr_String&);
  atr_String& operator=(const atr_String&);

  const char* CStr() const;
  std::size_t Length() const;

  bool xh_Fill(int position, char kind, const std::string& value);
  static atr_String xh_Parse(const char* format);

private:
  struct Piece {
    int position; ///< 0 for text
    char kind;
    std::string text;
  };

  void Join();

  std::vector<Piece> m_pieces;
  std::string m_joined;
};

XH_API atr_String atr_translate(const char* format);
XH_API bool atr_SubstituteFormat(atr_String& message, int position, const char* value);
XH_API bool atr_SubstituteFormat(atr_String& message, int position, int value);
/// Gives a format another text in the user's language.
XH_API void xh_Translate(const char* format, const char* text);

#endif
