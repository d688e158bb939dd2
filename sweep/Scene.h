#ifndef GSL_SWEEP_SCENE_H
#define GSL_SWEEP_SCENE_H

#include "PairKernel.h"
#include "Placement.h"
#include "PreparedBody.h"
#include "ShadowExtent.h"
#include "TravelTest.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <optional>
#include <vector>

namespace gsl_sweep {

/// The bodies of a question.
struct SceneBodies {
  const PreparedBody* moving;
  std::vector<const PreparedBody*> fixed;
};

/// Enlarges a rounded travel, so that it is at least every travel that was rounded to it. A travel
/// is rounded within 2^-52 of it, or within a few units of 2^-1074 where it is subnormal.
inline double Enlarged(double travel) {
  return travel * (1.0 + 0x1p-50) + 0x1p-1060;
}
/// Reduces a rounded travel in the same way, but not below zero.
inline double Reduced(double travel) {
  return std::max(travel * (1.0 - 0x1p-50) - 0x1p-1060, 0.0);
}

/// Returns a double that is at least every rounded travel whose exact travel is at most `length`.
inline double JustBeyond(const ScaledLength& length) {
  return Enlarged(std::ldexp(length.value, length.exponent));
}
/// Returns a double that is at most every rounded travel whose exact travel is at least `length`.
inline double JustBefore(const ScaledLength& length) {
  return Reduced(std::ldexp(length.value, length.exponent));
}

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
        const RangeScale& rangeScale, const Question& question, bool canFilter,
        Team& sceneTeam = Team::Alone())
      : bodies(sceneBodies), team(sceneTeam), direction(travelDirection), scale(rangeScale),
        test(travelDirection.Vector()), slabTest(travelDirection.Vector()),
        shadowAxes(travelDirection), moving(question.offset, rangeScale, question.clearance),
        fixed({0.0, 0.0, 0.0}, rangeScale), clearance(rangeScale.Down(question.clearance)),
        slabMargin(SlabMargin(question.clearance)), rule(question.rule),
        oneSided(question.oneSided || question.rule == Rule::Solid), filters(canFilter),
        hasExactBoxes(HaveExactBoxes(sceneBodies)), m_movingTree(BestTree(*bodies.moving)),
        m_fixedTrees(bodies.fixed.size()),
        m_fixedFaced(rule == Rule::Solid ? bodies.fixed.size() : 0) {
    for (std::size_t body = 0; body < bodies.fixed.size(); ++body)
      m_fixedTrees[body] = BestTree(*bodies.fixed[body]);
  }

  /// Converts multiples of the direction in the kernel's coordinates to multiples in those of the
  /// walk.
  double WalkTravel(double inKernel) const {
    return sizeof(Scalar) == sizeof(float) ? std::ldexp(inKernel, scale.Exponent()) : inKernel;
  }

  /// Converts back. The result is not more than the true multiple.
  double KernelTravel(double inWalk) const {
    return sizeof(Scalar) == sizeof(float) ? Reduced(std::ldexp(inWalk, -scale.Exponent()))
                                           : inWalk;
  }

  /// Return a multiple of the direction vector, in the kernel's coordinates, that is not shorter
  /// than a length, and one that is not longer. The vector's length is from 1/2 to 2.
  double MultipleAtLeast(const ScaledLength& length) const {
    return Enlarged(JustBeyond(length) / direction.Length().hi);
  }
  double MultipleAtMost(const ScaledLength& length) const {
    return Reduced(JustBefore(length) / direction.Length().hi);
  }

  /// Round a travel of the walk up and down, which covers a subnormal remainder and the rounding to
  /// float.
  static Scalar AtLeast(double travel) {
    if constexpr (sizeof(Scalar) == sizeof(float)) {
      volatile float rounded = static_cast<float>(travel);
      return std::nextafter(static_cast<float>(rounded), Box<float>::kFar);
    } else {
      return travel;
    }
  }
  static Scalar AtMost(double travel) {
    if constexpr (sizeof(Scalar) == sizeof(float)) {
      volatile float rounded = static_cast<float>(travel);
      return std::nextafter(static_cast<float>(rounded), 0.0f);
    } else {
      return travel;
    }
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

  /// Bit k is clear when a solid meets nothing by the triangles below child k of a node. Requires
  /// Rule::Solid.
  template <bool kMoving>
  unsigned ThatMayMeet(std::size_t fixedBody, std::size_t node) const {
    if (sizeof(Scalar) != sizeof(float)) return 15u;
    Faced& faced = kMoving ? m_movingFaced : m_fixedFaced[fixedBody];
    if (!faced.isSettled) Settle<kMoving>(BodyOf<kMoving>(fixedBody), faced);
    return faced.nodes ? faced.nodes->Of(node) : 15u;
  }

  const SceneBodies& bodies;
  Team& team; ///< makes what the walk finds worth making
  const TravelDirection& direction;
  const RangeScale& scale;
  TravelTest<Scalar> test;
  SlabTest slabTest;
  ShadowAxes shadowAxes;
  Placement<Scalar> moving, fixed;
  double clearance; ///< in the kernel's coordinates
  /// At least the clearance along the normal of a slab, which may be longer than 1 by 2^-20.
  float slabMargin;
  Rule rule;
  bool oneSided;
  /// Returns true when products of three coordinates stay in the range in which rounding is
  /// relative.
  bool filters;
  /// Returns true when the boxes of the trees are not rounded.
  bool hasExactBoxes;

private:
  /// The nodes of a body by which a solid may meet another.
  struct Faced {
    bool isSettled = false; ///< whether they are used
    std::optional<FacedNodes> nodes;
  };

  /// Uses how the triangles of a body face, as soon as that is known.
  template <bool kMoving>
  void Settle(const PreparedBody& body, Faced& faced) const {
    const Facings* facings = body.FacingsIfMade();
    if (facings == nullptr) return;
    faced.isSettled = true;
    const Coord3& d = direction.Vector();
    if (kMoving && !facings->Hold(moving.Offset(), d)) return;
    try {
      faced.nodes.emplace(*facings, body.SingleTree(), kMoving ? d : Coord3{-d.x, -d.y, -d.z});
    } catch (const std::bad_alloc&) {
      // They only save time.
    }
  }

  static bool HaveExactBoxes(const SceneBodies& bodies) {
    if constexpr (sizeof(Scalar) == sizeof(double)) return true;
    const auto isSingle = [](const PreparedBody* body) { return body->Triangles().IsSingle(); };
    return isSingle(bodies.moving) &&
           std::all_of(bodies.fixed.begin(), bodies.fixed.end(), isSingle);
  }

  static float SlabMargin(double clearance) {
    return clearance == 0.0 ? 0.0f : RoundedUp(clearance * (1.0 + 0x1p-16));
  }

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
  mutable Faced m_movingFaced;
  mutable std::vector<Faced> m_fixedFaced; ///< for solids
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
