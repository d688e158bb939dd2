#ifndef AIO_OSTREAM_H
#define AIO_OSTREAM_H

#include "mem_Export.h"

#include <iosfwd>

/// The host's text output stream.
using aio_ostream = std::ostream;

/// A double together with how to write it: `out << aio_FormattedDouble{value, 0, 15}`.
///
/// Flag 0 is the general form: `precision` significant digits (1 to 17), trailing zeros dropped,
/// scientific where the exponent is below -4 or at least `precision`. Independent of the locale and
/// of the stream's own format settings. It is the only flag.
struct aio_FormattedDouble {
  double value;
  int flag;
  int precision;
};

GSL_HOST_API aio_ostream& operator<<(aio_ostream& out, const aio_FormattedDouble& number);

#endif
