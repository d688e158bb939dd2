#ifndef REFERENCE_CROSSING_JUDGE_H
#define REFERENCE_CROSSING_JUDGE_H

#include "RationalSweep.h"

namespace reference {

/// Returns whether two triangles share a point that is neither a common corner nor on a common
/// edge, by cutting the one triangle down to the other in rationals. Two triangles with the same
/// corners do; triangles without area do not.
bool Cross(const std::array<Coord3, 3>& a, const std::array<Coord3, 3>& b);

} // namespace reference

#endif
