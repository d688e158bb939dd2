#ifndef GSL_KERNEL_SWEEP_CONTACTS_H
#define GSL_KERNEL_SWEEP_CONTACTS_H

#include "kernel/Vector.h"

/// The results of the sweeps. A kernel does not allocate identities. Every point says where it came
/// from, and the caller allocates the identity.
namespace gsl_kernel {

/// Where a point came from. 0 to 2 are the vertices of A, and 3 to 5 are the vertices of B.
enum PointSource : int { kFirstOfA = 0, kFirstOfB = 3, kFirstContact = 6, kComputed = 7 };

struct SourcedPoint {
  Coord3 c;
  int source;
};

struct SourcedTriangle {
  SourcedPoint p[3];
};

/// Returns the slot of the contact on the body that `side` names: +1 for A, -1 for B.
inline int SlotOf(int side) {
  return (1 - side) / 2;
}

/// The caller's running minimum: the contact on A (slot 0) and on B (slot 1).
struct SweepContacts {
  SourcedPoint point[2];
  bool written[2];
  double distance;

  void Accept(int slot, const SourcedPoint& onSlot, const SourcedPoint& onOther, double g) {
    point[slot] = onSlot;
    point[1 - slot] = onOther;
    written[0] = written[1] = true;
    distance = g;
  }
};

/// Returns the number of the lowest bit that is set.
inline unsigned LowestBit(unsigned bits) {
  return static_cast<unsigned>(__builtin_ctz(bits));
}

struct SweepTolerances {
  double linear;
  double cosine;
};

} // namespace gsl_kernel

#endif
