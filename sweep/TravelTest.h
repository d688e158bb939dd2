#ifndef GSL_SWEEP_TRAVEL_TEST_H
#define GSL_SWEEP_TRAVEL_TEST_H

#include "Slabs.h"
#include "Tree.h"

#include <limits>

/// Tests for which travels boxes, and slabs, can touch. A travel is a multiple of the direction
/// vector, whose largest component is from 1/2 to 1 in magnitude. A reported travel is never later
/// than the first such travel, so that nothing that touches is left out.
namespace gsl_sweep {

// The bound of box against box is a difference of two numbers times a reciprocal. Let h be half a
// unit in the last place of 1 (2^-24 in float). The difference is off by a factor of 1 + h, the
// product by 1 + h, and the reciprocal by 1 + h and two roundings in double. Together that is less
// than 1 + 4 h, which is 2^-22 in float and 2^-51 in double. A reciprocal that is reduced by twice
// that part results in a first travel that is not later than the true one. A reciprocal that is
// enlarged by the same part results in a last travel that is not earlier. Both hold for positive
// bounds. A negative first travel counts as zero, and a negative last travel rejects, whatever
// their sizes; their signs are exact.
template <class Scalar>
constexpr double kReciprocalMargin = 8.0 * std::numeric_limits<Scalar>::epsilon() / 2.0;

/// The travels from `from` to `to`, both included.
template <class Scalar>
struct TravelRange {
  Scalar from, to;
};

/// Boxes of which one travels.
template <class Scalar>
class TravelTest {
public:
  explicit TravelTest(const Coord3& direction) {
    const double components[3] = {direction.x, direction.y, direction.z};
    for (int k = 0; k < 3; ++k) {
      const double d = components[k];
      m_isNegative[k] = d < 0.0;
      m_isAcross[k] = d == 0.0;
      // Zero times infinity is NaN, which Most and Least ignore, so boxes that touch stay.
      const double reciprocal = d == 0.0 ? std::numeric_limits<double>::infinity() : 1.0 / d;
      m_first[k] = static_cast<Scalar>(reciprocal * (1.0 - kReciprocalMargin<Scalar>));
      m_last[k] = static_cast<Scalar>(reciprocal * (1.0 + kReciprocalMargin<Scalar>));
    }
  }

  /// Tests four boxes against one. Bit k of the result is set when box k can touch the other box
  /// within the range, which must not begin below zero. `first` and `last` receive the first and
  /// the last such travels.
  template <bool kFourMove>
  unsigned Survivors(const Boxes<Scalar>& four, const Box<Scalar>& one,
                     const TravelRange<Scalar>& range, Four<Scalar>& first,
                     Four<Scalar>& last) const {
    first = Four<Scalar>::Of(range.from);
    last = Four<Scalar>::Of(range.to);
    for (int k = 0; k < 3; ++k) {
      const bool swapped = m_isNegative[k];
      // The fronts meet first, and the backs part last.
      const Four<Scalar>& fourFront = swapped == kFourMove ? four.low[k] : four.high[k];
      const Four<Scalar>& fourBack = swapped == kFourMove ? four.high[k] : four.low[k];
      const Scalar oneFront = swapped == kFourMove ? one.high[k] : one.low[k];
      const Scalar oneBack = swapped == kFourMove ? one.low[k] : one.high[k];
      Four<Scalar> toMeet, toPart;
      if (kFourMove) {
        toMeet = Four<Scalar>::Of(oneFront) - fourFront;
        toPart = Four<Scalar>::Of(oneBack) - fourBack;
      } else {
        toMeet = fourFront - Four<Scalar>::Of(oneFront);
        toPart = fourBack - Four<Scalar>::Of(oneBack);
      }
      first = Most(toMeet * Four<Scalar>::Of(m_first[k]), first);
      last = Least(toPart * Four<Scalar>::Of(m_last[k]), last);
    }
    return AtMost(first, last);
  }

  /// Bit k is clear when box k and the other box share no area across the direction, as seen along
  /// an axis that is across it.
  unsigned SharingShadow(const Boxes<Scalar>& four, const Box<Scalar>& one) const {
    unsigned apart = 0;
    for (int k = 0; k < 3; ++k) {
      if (!m_isAcross[k]) continue;
      apart |= AtMost(four.high[k], Four<Scalar>::Of(one.low[k]));
      apart |= AtMost(Four<Scalar>::Of(one.high[k]), four.low[k]);
    }
    return 15u & ~apart;
  }

  /// Tests two boxes. Returns false when they cannot touch within the range.
  bool CanTouch(const Box<Scalar>& moving, const Box<Scalar>& fixed,
                const TravelRange<Scalar>& range, Scalar& first, Scalar& last) const {
    first = range.from;
    last = range.to;
    for (int k = 0; k < 3; ++k) {
      const bool swapped = m_isNegative[k];
      const Scalar toMeet = swapped ? fixed.high[k] - moving.low[k] : fixed.low[k] - moving.high[k];
      const Scalar toPart = swapped ? fixed.low[k] - moving.high[k] : fixed.high[k] - moving.low[k];
      const Scalar meets = toMeet * m_first[k];
      const Scalar parts = toPart * m_last[k];
      if (meets > first) first = meets;
      if (parts < last) last = parts;
    }
    return first <= last;
  }

private:
  bool m_isNegative[3];
  bool m_isAcross[3];           ///< the direction has no such component
  Scalar m_first[3], m_last[3]; ///< reciprocals, rounded toward zero and away from it
};

/// Tests slabs of which some travel. It rejects pairs that the boxes accept.
class SlabTest {
public:
  explicit SlabTest(const Coord3& direction)
      : m_direction{static_cast<float>(direction.x), static_cast<float>(direction.y),
                    static_cast<float>(direction.z)} {}

  /// Tests four children, each within its box and its slab, against one box with its slab. A slab
  /// may raise `first` and lower `last`. `error` is at least kSlabError, or kShiftedSlabError, of
  /// the reach of everything that takes part, and the clearance.
  template <bool kFourMove>
  void Narrow(const Boxes<float>& boxes, const SlabNode& slabs, const Box<float>& box,
              const Slab& slab, const Float4& error, Float4& first, Float4& last) const {
    // n . p = alpha (m . p) + (n - alpha m) . p: a slab across m bounds n . p well where the two
    // normals are nearly equal. Elsewhere the box bounds it as well.
    Float4 alpha = slabs.normal[0] * Float4::Of(slab.normal[0]) +
                   slabs.normal[1] * Float4::Of(slab.normal[1]) +
                   slabs.normal[2] * Float4::Of(slab.normal[2]);
    const Float4 zero = Float4::Of(0.0f);
    alpha = Choose(Float4::Of(0.5f), Magnitude(alpha), alpha, zero);
    NarrowByOne<kFourMove>(boxes, slabs, slab, alpha, error, first, last);
    NarrowByFour<kFourMove>(slabs, box, slab, alpha, error, first, last);
  }

  /// Tests in the same way where the children, or the one, have side slabs: `sides` counts where
  /// `haveSides` says so. `error` is at least kSideError, or kShiftedSideError, of the reach, and
  /// the clearance.
  template <bool kFourMove>
  void NarrowBySides(const Boxes<float>& boxes, const SlabNode& slabs, const SlabLanes& sides,
                     bool haveSides, const Box<float>& box, const Slab& slab, const Slab& side,
                     const Float4& error, Float4& first, Float4& last) const {
    const Alone alone{Repeated(box), Repeated(slab), Repeated(side)};
    const auto test = [&](const SlabLanes& own, bool isOfFour) {
      Float4 from, to;
      if (isOfFour) {
        ExtentAcross(alone.boxes, alone.slabs, alone.sides, own.normal, error, from, to);
        NarrowAlong(own.normal, kFourMove ? own : SlabLanes{{}, from, to},
                    kFourMove ? SlabLanes{{}, from, to} : own, first, last);
      } else {
        ExtentAcross(boxes, slabs, sides, own.normal, error, from, to);
        NarrowAlong(own.normal, kFourMove ? SlabLanes{{}, from, to} : own,
                    kFourMove ? own : SlabLanes{{}, from, to}, first, last);
      }
    };
    test(alone.slabs, false);
    if (!side.IsNone()) test(alone.sides, false);
    test(slabs, true);
    if (haveSides) test(sides, true);
  }

private:
  /// One box with its slabs, four times.
  struct Alone {
    Boxes<float> boxes;
    SlabLanes slabs, sides;
  };

  static Boxes<float> Repeated(const Box<float>& box) {
    Boxes<float> boxes;
    for (int k = 0; k < 3; ++k) {
      boxes.low[k] = Float4::Of(box.low[k]);
      boxes.high[k] = Float4::Of(box.high[k]);
    }
    return boxes;
  }
  static SlabLanes Repeated(const Slab& slab) {
    return {{Float4::Of(slab.normal[0]), Float4::Of(slab.normal[1]), Float4::Of(slab.normal[2])},
            Float4::Of(slab.from),
            Float4::Of(slab.to)};
  }

  /// Writes the extents of four bodies along n, where their slabs decide them rather than their
  /// boxes: the slabs have a part of at least a half in n.
  static void ExtentAcross(const Boxes<float>& boxes, const SlabLanes& slabs,
                           const SlabLanes& sides, const Float4 (&n)[3], const Float4& error,
                           Float4& from, Float4& to) {
    SlabShares shares = SharesOf(slabs, sides, n);
    const Float4 squares = shares.ofSlab * shares.ofSlab + shares.ofSide * shares.ofSide;
    const Float4 zero = Float4::Of(0.0f);
    shares.ofSlab = Choose(Float4::Of(0.25f), squares, shares.ofSlab, zero);
    shares.ofSide = Choose(Float4::Of(0.25f), squares, shares.ofSide, zero);
    ExtentOfFour(boxes, slabs, sides, n, shares, error, from, to);
  }

  /// Applies the extents of the moving and of the fixed bodies along n.
  void NarrowAlong(const Float4 (&n)[3], const SlabLanes& moving, const SlabLanes& fixed,
                   Float4& first, Float4& last) const {
    const Float4 along = n[0] * Float4::Of(m_direction[0]) + n[1] * Float4::Of(m_direction[1]) +
                         n[2] * Float4::Of(m_direction[2]);
    const Float4 least = Float4::Of(kLeastAlong);
    const Float4 zero = Float4::Of(0.0f);
    const Float4 up = fixed.from - moving.to;
    const Float4 down = fixed.to - moving.from;
    StayApart(Most(up, -down), Magnitude(along), last);
    if (AtMost(Magnitude(along), least) == 15u) return;
    const Float4 reciprocal = Float4::Of(1.0f) / along;
    Float4 meets = first;
    Float4 parts = last;
    Apply(Choose(along, zero, down, up) * reciprocal, Choose(along, zero, up, down) * reciprocal,
          Magnitude(reciprocal), meets, parts);
    first = Choose(least, Magnitude(along), meets, first);
    last = Choose(least, Magnitude(along), parts, last);
  }

  /// A slab with n . d below this limit does not say when the other body comes.
  static constexpr float kLeastAlong = 0x1p-6f;
  // n . d is off by less than 9 u (see below), and 2^-19 is 32 u. The factor covers the roundings
  // of the sum and of the product with a travel.
  static constexpr float kAlongError = 0x1p-19f;
  static constexpr float kReachFactor = 1.0f + 0x1p-20f;
  // n . d is off by less than 9 u (u = 2^-24): a rounded direction, products and sums of at most
  // 1.8 in all. The quotient x / (n . d) is off by 9 u / |n . d| of itself, and by 4 u for the
  // reciprocal, the product and the sum that takes this margin off; |n . d| is at most 1.8. That is
  // less than 17 u / |n . d|; the rest covers squares of these errors.
  static constexpr float kQuotientError = 0x1p-19f;

  float Along(const float (&n)[3]) const {
    return n[0] * m_direction[0] + n[1] * m_direction[1] + n[2] * m_direction[2];
  }

  /// Tests the children against the one slab.
  template <bool kFourMove>
  void NarrowByOne(const Boxes<float>& boxes, const SlabNode& slabs, const Slab& slab,
                   const Float4& alpha, const Float4& error, Float4& first, Float4& last) const {
    const float along = Along(slab.normal);
    Float4 from = Least(alpha * slabs.from, alpha * slabs.to) - error;
    Float4 to = Most(alpha * slabs.from, alpha * slabs.to) + error;
    for (int k = 0; k < 3; ++k) {
      const Float4 rest = Float4::Of(slab.normal[k]) - alpha * slabs.normal[k];
      const Float4 low = rest * boxes.low[k];
      const Float4 high = rest * boxes.high[k];
      from = from + Least(low, high);
      to = to + Most(low, high);
    }
    if (!(std::fabs(along) > kLeastAlong)) {
      const Float4 gap = Most(Float4::Of(slab.from) - to, from - Float4::Of(slab.to));
      StayApart(gap, Float4::Of(std::fabs(along)), last);
      return;
    }
    Float4 toMeet = kFourMove ? Float4::Of(slab.from) - to : from - Float4::Of(slab.to);
    Float4 toPart = kFourMove ? Float4::Of(slab.to) - from : to - Float4::Of(slab.from);
    if (along < 0.0f) std::swap(toMeet, toPart);
    const Float4 reciprocal = Float4::Of(1.0f / along);
    Apply(toMeet * reciprocal, toPart * reciprocal, Magnitude(reciprocal), first, last);
  }

  /// Tests the children's slabs against the one box.
  template <bool kFourMove>
  void NarrowByFour(const SlabNode& slabs, const Box<float>& box, const Slab& slab,
                    const Float4& alpha, const Float4& error, Float4& first, Float4& last) const {
    const Float4 along = slabs.normal[0] * Float4::Of(m_direction[0]) +
                         slabs.normal[1] * Float4::Of(m_direction[1]) +
                         slabs.normal[2] * Float4::Of(m_direction[2]);
    const Float4 least = Float4::Of(kLeastAlong);
    const Float4 zero = Float4::Of(0.0f);
    const Float4 atFrom = alpha * Float4::Of(slab.from);
    const Float4 atTo = alpha * Float4::Of(slab.to);
    Float4 from = Least(atFrom, atTo) - error;
    Float4 to = Most(atFrom, atTo) + error;
    for (int k = 0; k < 3; ++k) {
      const Float4 rest = slabs.normal[k] - alpha * Float4::Of(slab.normal[k]);
      const Float4 low = rest * Float4::Of(box.low[k]);
      const Float4 high = rest * Float4::Of(box.high[k]);
      from = from + Least(low, high);
      to = to + Most(low, high);
    }
    StayApart(Most(from - slabs.to, slabs.from - to), Magnitude(along), last);
    if (AtMost(Magnitude(along), least) == 15u) return;
    const Float4 up = kFourMove ? from - slabs.to : slabs.from - to;
    const Float4 down = kFourMove ? to - slabs.from : slabs.to - from;
    const Float4 toMeet = Choose(along, zero, down, up);
    const Float4 toPart = Choose(along, zero, up, down);
    const Float4 reciprocal = Float4::Of(1.0f) / along;
    Float4 meets = first;
    Float4 parts = last;
    Apply(toMeet * reciprocal, toPart * reciprocal, Magnitude(reciprocal), meets, parts);
    first = Choose(least, Magnitude(along), meets, first);
    last = Choose(least, Magnitude(along), parts, last);
  }

  /// Rejects bodies that are farther apart along a normal than they move along it up to the last
  /// travel. `along` is the magnitude of n . d.
  static void StayApart(const Float4& gap, const Float4& along, Float4& last) {
    const Float4 speed = (along + Float4::Of(kAlongError)) * Float4::Of(kReachFactor);
    last = Choose(last * speed, gap, Float4::Of(-1.0f), last);
  }

  static void Apply(const Float4& meets, const Float4& parts, const Float4& reciprocal,
                    Float4& first, Float4& last) {
    const Float4 margin = reciprocal * Float4::Of(kQuotientError);
    first = Most(meets - Magnitude(meets) * margin, first);
    last = Least(parts + Magnitude(parts) * margin, last);
  }

  float m_direction[3];
};

} // namespace gsl_sweep

#endif
