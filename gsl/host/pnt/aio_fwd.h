#ifndef AIO_FWD_H
#define AIO_FWD_H

#include <iosfwd>

/// The host's text output stream, for declarations. aio_ostream.h defines it.
using aio_ostream = std::ostream;
/// The host's text input stream, for declarations. aio_istream.h defines it.
using aio_istream = std::istream;

#endif
