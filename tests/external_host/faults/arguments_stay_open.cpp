#include "atr_String.h"

__attribute__((visibility("default"))) bool atr_SubstituteFormat(atr_String&, int, int) {
  return true;
}
