#include "AxisGaps.h"

namespace gsl_sweep {

using gsl_exact::Expansion;
using gsl_exact::TwoDifference;

void AxisGaps::SetTravel(const ExactRatio& travel) {
  m_travel = travel;
  for (bool& has : m_hasEqual)
    has = false;
}

bool AxisGaps::ArePartedAfter(const Box<double>& moving, const Box<double>& fixed) {
  const Coord3& vector = m_direction.Vector();
  const double d[3] = {vector.x, vector.y, vector.z};
  for (int k = 0; k < 3; ++k) {
    if (d[k] == 0.0) continue;
    const DoubleDouble gap = d[k] > 0.0 ? TwoDifference(fixed.high[k], moving.low[k])
                                        : TwoDifference(fixed.low[k], moving.high[k]);
    // They part at zero or before.
    if (gap.hi == 0.0 || (gap.hi > 0.0) != (d[k] > 0.0)) return true;
    if (Compare(k, d[k], gap) <= 0) return true;
  }
  return false;
}

/// Returns the exact sign of gap / d - travel, for a positive gap / d.
int AxisGaps::Compare(int axis, double d, const DoubleDouble& gap) {
  DoubleDouble& equal = m_equal[axis];
  if (m_hasEqual[axis] && gap.hi == equal.hi && gap.lo == equal.lo) return 0;
  const double travel = gap.hi / d;
  const double given = m_travel.rounded.hi;
  if (travel < given * (1.0 - 0x1p-45)) return -1;
  if (travel > given * (1.0 + 0x1p-45)) return 1;
  ExactRatio exact;
  Expansion<192> over;
  Expansion<192> under;
  over.Append(gap.lo);
  over.Append(gap.hi);
  under.Append(d);
  exact.Set(over, under);
  const int order = CompareRatios(exact, m_travel);
  if (order == 0) {
    equal = gap;
    m_hasEqual[axis] = true;
  }
  return order;
}

} // namespace gsl_sweep
