#include "aio_ostream.h"

#include <charconv>
#include <ostream>

aio_ostream& operator<<(aio_ostream& out, const aio_FormattedDouble& number) {
  // A sign, 17 digits, a point and an exponent of three digits are 24 characters at most.
  char text[32];
  const int precision = number.precision < 1 ? 1 : (number.precision > 17 ? 17 : number.precision);
  const std::to_chars_result end =
      std::to_chars(text, text + sizeof text, number.value, std::chars_format::general, precision);
  out.write(text, end.ptr - text);
  return out;
}
