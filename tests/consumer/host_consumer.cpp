// Uses the host's libraries without the geometry.

#include "check.h"

#include <atr_String.h>
#include <cls_Uid.h>
#include <cow_String.h>
#include <nex_CommandException.h>

int main() {
  Check(cls_Uid::AllocateUid() != cls_Uid::AllocateUid(), "identifiers are unique");
  const cow_String text("text");
  Check(cow_String(text).SharesWith(text), "copies of a text share it");
  atr_String message = atr_translate("no %s");
  Check(atr_SubstituteFormat(message, 1, "way") && message == atr_String("no way"), "messages");
  try {
    nex_Exception::Throw(nex_CommandException(text), "consumer", 1);
  } catch (const nex_Exception& error) {
    return error.Message() == text ? 0 : 1;
  }
}
