#ifndef AIO_ISTREAM_H
#define AIO_ISTREAM_H

#include "aio_fwd.h"

#include <istream>

// The host's text input stream, aio_istream. The library calls only `int get()`, which takes the
// next character and returns its value as an unsigned char, or a negative number at the end.

#endif
