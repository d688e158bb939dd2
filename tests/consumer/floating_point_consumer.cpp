// Asks for nothing but what its own flags make of the arithmetic.

#include "check.h"

#include <gsl_FloatingPoint.h>

int main() {
  const char* const fault = gsl_CheckFloatingPoint();
  Check(fault == nullptr, fault);
  return 0;
}
