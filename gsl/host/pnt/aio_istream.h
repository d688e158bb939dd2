#ifndef AIO_ISTREAM_H
#define AIO_ISTREAM_H

#include <iosfwd>

/// The host's text input stream.
using aio_istream = std::istream;

#endif
