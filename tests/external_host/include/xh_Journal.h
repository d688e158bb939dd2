#ifndef XH_JOURNAL_H
#define XH_JOURNAL_H

#include "xh_Export.h"

/// Returns the starts and stops of the libraries so far, "+mem +typ -typ -mem ". The pointer is
/// valid until the next start or stop.
XH_API const char* xh_Journal();

#endif
