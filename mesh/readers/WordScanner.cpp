#include "readers/WordScanner.h"

#include <fast_float/fast_float.h>

#include <algorithm>
#include <charconv>
#include <limits>

namespace gsl_mesh {

namespace {

char LowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// A number without its sign, as the Microsoft C library prints it: 1.#QNAN, 1.#IND, 1.#INF.
bool ParseHashName(std::string_view text, double& value) {
  if (!BeginsWithNoCase(text, "1.#")) return false;
  text.remove_prefix(3);
  if (BeginsWithNoCase(text, "inf")) {
    value = std::numeric_limits<double>::infinity();
    return true;
  }
  for (const std::string_view name : {"ind", "qnan", "snan"}) {
    if (!BeginsWithNoCase(text, name)) continue;
    value = std::numeric_limits<double>::quiet_NaN();
    return true;
  }
  return false;
}

} // namespace

bool ParseReal(std::string_view token, double& value) {
  if (!token.empty() && token.front() == '+') {
    token.remove_prefix(1);
    if (!token.empty() && token.front() == '-') return false;
  }
  const char* const end = token.data() + token.size();
  const auto result = fast_float::from_chars(token.data(), end, value);
  if (result.ec == std::errc() && result.ptr == end) return true;
  const bool negative = !token.empty() && token.front() == '-';
  if (!ParseHashName(token.substr(negative ? 1 : 0), value)) return false;
  if (negative) value = -value;
  return true;
}

bool ParseInteger(std::string_view token, std::int64_t& value) {
  if (!token.empty() && token.front() == '+') {
    token.remove_prefix(1);
    if (!token.empty() && token.front() == '-') return false;
  }
  const char* const end = token.data() + token.size();
  const auto result = std::from_chars(token.data(), end, value);
  return result.ec == std::errc() && result.ptr == end;
}

bool BeginsWithNoCase(std::string_view text, std::string_view lowerCase) {
  return text.size() >= lowerCase.size() &&
         std::equal(lowerCase.begin(), lowerCase.end(), text.begin(),
                    [](char expected, char c) { return expected == LowerCase(c); });
}

void WordScanner::Report() {
  ReportPosition(m_source, m_next);
  m_report = m_next + std::min(kProgressStep, BytesLeft());
}

void WordScanner::SkipSpace(bool stayOnLine) {
  while (m_next < m_end) {
    if (m_comments && *m_next == '#') {
      while (m_next < m_end && *m_next != '\n' && *m_next != '\r')
        ++m_next;
    } else if (!IsSpace(*m_next) || (stayOnLine && (*m_next == '\n' || *m_next == '\r'))) {
      return;
    } else {
      ++m_next;
    }
  }
}

std::string_view WordScanner::Word() {
  m_word = m_next;
  while (!EndsWord(m_next))
    ++m_next;
  return {m_word, static_cast<std::size_t>(m_next - m_word)};
}

std::string_view WordScanner::Next() {
  SkipSpace(false);
  if (m_next > m_report) Report();
  return Word();
}

std::string_view WordScanner::NextOnLine() {
  SkipSpace(true);
  if (m_next == m_end || *m_next == '\n' || *m_next == '\r') return {};
  return Word();
}

void WordScanner::SkipLine() {
  while (m_next < m_end && *m_next != '\n' && *m_next != '\r')
    ++m_next;
}

bool WordScanner::AtEnd() {
  SkipSpace(false);
  return m_next == m_end;
}

template <class Number, class Parse>
bool WordScanner::TakeNumber(Number& value, const Parse& parse) {
  SkipSpace(false);
  if (m_next > m_report) Report();
  const auto result = parse(m_next, m_end, value);
  const bool isWord = result.ec == std::errc() && EndsWord(result.ptr);
  if (isWord) {
    m_word = m_next;
    m_next = result.ptr;
  }
  return isWord;
}

double WordScanner::Real(const char* what) {
  double value = 0.0;
  const auto parse = [](const char* begin, const char* end, double& number) {
    return fast_float::from_chars(begin, end, number);
  };
  if (TakeNumber(value, parse)) return value;
  const std::string_view word = Next();
  if (word.empty()) Fail(std::string("the file ends before ") + what);
  if (!ParseReal(word, value)) Fail(std::string(what) + " is not a number: " + Quoted(word));
  return value;
}

std::int64_t WordScanner::Integer(const char* what) {
  std::int64_t value = 0;
  const auto parse = [](const char* begin, const char* end, std::int64_t& number) {
    return std::from_chars(begin, end, number);
  };
  if (TakeNumber(value, parse)) return value;
  const std::string_view word = Next();
  if (word.empty()) Fail(std::string("the file ends before ") + what);
  if (!ParseInteger(word, value)) {
    Fail(std::string(what) + " is not a whole number: " + Quoted(word));
  }
  return value;
}

} // namespace gsl_mesh
