#ifndef OPEN_DESCRIPTORS_H
#define OPEN_DESCRIPTORS_H

#include <fcntl.h>

/// Returns how many of the lowest descriptors of this process are open.
inline int OpenDescriptors() {
  constexpr int kLooked = 256;
  int open = 0;
  for (int descriptor = 0; descriptor < kLooked; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) >= 0) ++open;
  }
  return open;
}

#endif
