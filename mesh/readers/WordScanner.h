#ifndef GSL_MESH_WORD_SCANNER_H
#define GSL_MESH_WORD_SCANNER_H

#include "MeshSource.h"

#include <cstdint>
#include <string_view>

/// Words and numbers of text formats.
namespace gsl_mesh {

/// Reads all of `token` as a number, correctly rounded. A leading '+' and the names that C
/// libraries print for NaN and infinity are read too. False for anything else.
bool ParseReal(std::string_view token, double& value);

/// Reads all of `token` as a decimal integer of at most 64 bits.
bool ParseInteger(std::string_view token, std::int64_t& value);

inline bool IsSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

/// True when `text` begins with `lowerCase`, in upper or lower case.
bool BeginsWithNoCase(std::string_view text, std::string_view lowerCase);

/// Splits a text into words between white space; the ends of lines count as white space. A '#'
/// begins a comment when `comments` is set.
class WordScanner {
public:
  WordScanner(const MeshSource& source, std::string_view text, bool comments)
      : m_source(source), m_next(text.data()), m_end(text.data() + text.size()), m_report(m_end),
        m_word(text.data()), m_comments(comments) {
    if (source.progress != nullptr) Report();
  }

  /// Returns the next word; empty at the end of the text.
  std::string_view Next();

  /// Returns the next word if it is on the line of the last word, else an empty word.
  std::string_view NextOnLine();

  /// Skips the rest of the line of the last word.
  void SkipLine();

  /// Returns the next word as a number; `what` names the number in the error.
  double Real(const char* what);
  std::int64_t Integer(const char* what);

  bool AtEnd();
  std::size_t BytesLeft() const { return static_cast<std::size_t>(m_end - m_next); }
  const char* Position() const { return m_next; }

  /// Throws MeshError for the line of the last word.
  [[noreturn]] void Fail(const std::string& message) const {
    FailReadAt(m_source, m_word, message);
  }

private:
  void Report();
  void SkipSpace(bool stayOnLine);
  bool EndsWord(const char* p) const {
    return p == m_end || IsSpace(*p) || (m_comments && *p == '#');
  }
  /// Reads the next word when `parse` takes all of it; else takes nothing.
  template <class Number, class Parse>
  bool TakeNumber(Number& value, const Parse& parse);
  std::string_view Word();

  const MeshSource& m_source;
  const char* m_next;
  const char* m_end;
  const char* m_report; ///< progress is reported beyond this place
  const char* m_word;   ///< where the last word began
  bool m_comments;
};

} // namespace gsl_mesh

#endif
