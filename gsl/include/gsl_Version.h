#ifndef GSL_VERSION_H
#define GSL_VERSION_H

#include "gsl_Export.h"

// The version is defined here only; the build reads it from the three lines of numbers.
/// The first number of the version of these headers.
#define GSL_VERSION_MAJOR 0
/// The second number of the version of these headers.
#define GSL_VERSION_MINOR 2
/// The third number of the version of these headers.
#define GSL_VERSION_PATCH 0

/// The version of these headers as one number, for comparisons: 10203 is 1.2.3.
#define GSL_VERSION_NUMBER (GSL_VERSION_MAJOR * 10000 + GSL_VERSION_MINOR * 100 + GSL_VERSION_PATCH)

/// Returns GSL_VERSION_NUMBER of the library that the process has loaded, which may differ from the
/// compiled headers. The call is safe at any time, also before gsl_initialize.
GSL_API int gsl_LibraryVersion();

/// Returns the version as text, "1.2.3", a literal of the library.
GSL_API const char* gsl_LibraryVersionText();

#endif
