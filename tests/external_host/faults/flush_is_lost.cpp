#include "aio_ostream.h"

void aio_ostream::flush() {}
