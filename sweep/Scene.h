#ifndef GSL_SWEEP_SCENE_H
#define GSL_SWEEP_SCENE_H

#include "PairKernel.h"
#include "Placement.h"
#include "PreparedBody.h"
#include "TravelTest.h"

#include <vector>

namespace gsl_sweep {

/// The bodies of a question.
struct SceneBodies {
  const PreparedBody* moving;
  std::vector<const PreparedBody*> fixed;
};

/// The tree of a body that a question uses.
template <class Scalar>
struct TreeInUse {
  const Tree<Scalar>* tree = nullptr;
  const Leaves* leaves = nullptr;
  const Slabs* slabs = nullptr; ///< may be missing
  bool isFine = false;
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
        oneSided(question.oneSided), filters(canFilter), m_movingTree(BestTree(*bodies.moving)),
        m_fixedTrees(bodies.fixed.size()) {
    for (std::size_t body = 0; body < bodies.fixed.size(); ++body)
      m_fixedTrees[body] = BestTree(*bodies.fixed[body]);
  }

  /// Converts multiples of the direction in the kernel's coordinates to multiples in those of the
  /// walk.
  double WalkTravel(double inKernel) const {
    return sizeof(Scalar) == sizeof(float) ? std::ldexp(inKernel, scale.Exponent()) : inKernel;
  }

  template <bool kMoving>
  const PreparedBody& BodyOf(std::size_t fixedBody) const {
    return kMoving ? *bodies.moving : *bodies.fixed[fixedBody];
  }
  template <bool kMoving>
  const TreeInUse<Scalar>& TreeOf(std::size_t fixedBody) const {
    return kMoving ? m_movingTree : m_fixedTrees[fixedBody];
  }
  /// Uses the best tree that a body has by now. Returns the fine tree where it was not in use
  /// before, and null elsewhere.
  template <bool kMoving>
  const FineTree* UseBestTree(std::size_t fixedBody) const {
    TreeInUse<Scalar>& used = kMoving ? m_movingTree : m_fixedTrees[fixedBody];
    if (used.isFine) return nullptr;
    const PreparedBody& body = BodyOf<kMoving>(fixedBody);
    used = BestTree(body);
    return used.isFine ? body.FineIfMade() : nullptr;
  }

  const SceneBodies& bodies;
  const TravelDirection& direction;
  const RangeScale& scale;
  TravelTest<Scalar> test;
  SlabTest slabTest;
  Placement<Scalar> moving, fixed;
  bool oneSided;
  /// Returns true when products of three coordinates stay in the range in which rounding is
  /// relative.
  bool filters;

private:
  /// In double, the coordinates differ from those in which the slabs were made.
  static TreeInUse<Scalar> BestTree(const PreparedBody& body) {
    if constexpr (sizeof(Scalar) == sizeof(float)) {
      if (const FineTree* fine = body.FineIfMade())
        return {&fine->tree, &fine->leaves, fine->slabs.get(), true};
      return {&body.SingleTree(), &body.Runs(), body.SlabsIfMade(), false};
    } else {
      return {&body.DoubleTree(), &body.Runs(), nullptr, false};
    }
  }

  // A walk can go on with finer trees while it runs. They change no answer.
  mutable TreeInUse<Scalar> m_movingTree;
  mutable std::vector<TreeInUse<Scalar>> m_fixedTrees;
};

/// A triangle of several fixed bodies, in their order.
inline std::uint64_t FixedNumber(std::size_t body, std::uint32_t triangle) {
  return static_cast<std::uint64_t>(body) << 32 | triangle;
}

} // namespace gsl_sweep

#endif
