#include "aio_istream.h"
#include "aio_ostream.h"
#include "pnt_debugPrint.h"

#include <charconv>

aio_ostream::aio_ostream() = default;

aio_ostream::~aio_ostream() = default;

aio_ostream& aio_ostream::operator<<(const char* text) {
  m_waiting += text;
  return *this;
}

aio_ostream& aio_ostream::operator<<(char character) {
  m_waiting += character;
  return *this;
}

aio_ostream& aio_ostream::operator<<(const aio_FormattedDouble& number) {
  char text[40];
  const std::to_chars_result end = std::to_chars(text, text + sizeof text, number.number,
                                                 std::chars_format::general, number.digits);
  m_waiting.append(text, end.ptr);
  return *this;
}

void aio_ostream::flush() {
  m_delivered += m_waiting;
  m_waiting.clear();
}

aio_istream::aio_istream(const char* text) : m_text(text), m_next(0) {}

aio_istream::~aio_istream() = default;

int aio_istream::get() {
  if (m_next == m_text.size()) return -2;
  return static_cast<unsigned char>(m_text[m_next++]);
}

aio_ostream& pnt_debugPrint() {
  static aio_ostream& console = *new aio_ostream;
  return console;
}
