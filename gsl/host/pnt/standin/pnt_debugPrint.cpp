#include "pnt_debugPrint.h"

#include <iostream>

namespace {
aio_ostream* redirected = nullptr;
}

aio_ostream& pnt_debugPrint() {
  return redirected != nullptr ? *redirected : std::cerr;
}

void pnt_redirectDebugPrint(aio_ostream* out) {
  redirected = out;
}
