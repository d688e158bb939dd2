// Checks only the arithmetic that its own flags produce.

#include "check.h"

#include <gsl_FloatingPoint.h>

int main() {
  const char* const fault = gsl_CheckFloatingPoint();
  Check(fault == nullptr, fault);
  return 0;
}
