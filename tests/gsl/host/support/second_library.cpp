#include "SingletonProbe.h"
#include "nex_AssertException.h"
#include "nex_CommandException.h"

ProbeAddresses AddressesInSecondLibrary() {
  return {&omi_Singleton<SingletonProbe>::Instance(),
          &HeaderOnlyStatic<HeaderOnlyProbe>::Instance()};
}

void RaiseAssertInSecondLibrary() {
  nex_Exception::Throw(nex_AssertException("asserted"), "second_library", 11);
}

void RaiseCommandInSecondLibrary() {
  nex_Exception::Throw(nex_CommandException("commanded"), "second_library", 12);
}

void RaisePlainInSecondLibrary() {
  nex_Exception::Throw(nex_Exception("plain"), "second_library", 13);
}
