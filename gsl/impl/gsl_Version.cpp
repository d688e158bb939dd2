#include "gsl_Version.h"

#define TEXT_OF(number) #number
#define DOTTED(a, b, c) TEXT_OF(a) "." TEXT_OF(b) "." TEXT_OF(c)

int gsl_LibraryVersion() {
  return GSL_VERSION_NUMBER;
}

const char* gsl_LibraryVersionText() {
  return DOTTED(GSL_VERSION_MAJOR, GSL_VERSION_MINOR, GSL_VERSION_PATCH);
}
