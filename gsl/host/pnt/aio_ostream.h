#ifndef AIO_OSTREAM_H
#define AIO_OSTREAM_H

#include "aio_fwd.h"
#include "mem_Export.h"

#include <ostream>

// The host's text output stream, aio_ostream. The library writes `const char*`, `char` and
// aio_FormattedDouble with <<, each of which returns the stream, and calls `flush()`.

/// A double, and the form in which a stream writes it: `out << aio_FormattedDouble{value, 0, 15}`.
///
/// Flag 0, the only flag, is the general form: `precision` significant digits (1 to 17) without
/// trailing zeros, scientific where the exponent is below -4 or at least `precision`. The locale
/// and the stream's own format settings have no effect.
struct aio_FormattedDouble {
  double value;  ///< the number
  int flag;      ///< 0
  int precision; ///< significant digits
};

GSL_HOST_API aio_ostream& operator<<(aio_ostream& out, const aio_FormattedDouble& number);

#endif
