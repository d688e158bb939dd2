#include "cls_Uid.h"

#include <cstdio>

/// Prints a hundred identifiers of a process of its own.
int main() {
  for (int i = 0; i < 100; ++i) {
    const cls_Uid uid = cls_Uid::AllocateUid();
    std::printf("%llu %llu\n", static_cast<unsigned long long>(uid.Prefix()),
                static_cast<unsigned long long>(uid.Serial()));
  }
  return 0;
}
