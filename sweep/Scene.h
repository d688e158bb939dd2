#ifndef GSL_SWEEP_SCENE_H
#define GSL_SWEEP_SCENE_H

#include "PairKernel.h"
#include "Placement.h"
#include "PreparedBody.h"
#include "TravelTest.h"

#include <limits>
#include <vector>

namespace gsl_sweep {

/// The bodies of a question.
struct SceneBodies {
  const PreparedBody* moving;
  std::vector<const PreparedBody*> fixed;
};

/// The data from which a question is answered. Travels within the walk are multiples of the
/// direction vector in the coordinates of the walk: the bodies' coordinates in float, the kernel's
/// in double.
template <class Scalar>
struct Scene {
  Scene(const SceneBodies& sceneBodies, const TravelDirection& travelDirection,
        const RangeScale& rangeScale, const Question& question, bool canFilter)
      : bodies(sceneBodies), direction(travelDirection), scale(rangeScale),
        test(travelDirection.Vector()), slabTest(travelDirection.Vector()),
        moving(question.offset, rangeScale), fixed({0.0, 0.0, 0.0}, rangeScale),
        rule(question.rule), oneSided(question.oneSided), filters(canFilter) {}

  /// Converts multiples of the direction in the kernel's coordinates to multiples in those of the
  /// walk.
  double WalkTravel(double inKernel) const {
    return sizeof(Scalar) == sizeof(float) ? std::ldexp(inKernel, scale.Exponent()) : inKernel;
  }

  static const Tree<Scalar>& TreeOf(const PreparedBody& body) {
    if constexpr (sizeof(Scalar) == sizeof(float)) {
      return body.SingleTree();
    } else {
      return body.DoubleTree();
    }
  }

  const SceneBodies& bodies;
  const TravelDirection& direction;
  const RangeScale& scale;
  TravelTest<Scalar> test;
  SlabTest slabTest;
  Placement<Scalar> moving, fixed;
  Rule rule;
  bool oneSided;
  /// Returns true when products of three coordinates stay in the range in which rounding is
  /// relative.
  bool filters;
};

/// Returns the least travel at which a pair may part so that it counts. No difference of two
/// numbers of the walk that is not zero is below the travel for NotLeaving.
template <class Scalar>
constexpr Scalar LeastEnd(Rule rule) {
  return rule == Rule::NotLeaving ? std::numeric_limits<Scalar>::denorm_min() : Scalar{0};
}

/// A triangle of several fixed bodies, in their order.
inline std::uint64_t FixedNumber(std::size_t body, std::uint32_t triangle) {
  return static_cast<std::uint64_t>(body) << 32 | triangle;
}

} // namespace gsl_sweep

#endif
