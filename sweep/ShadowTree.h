#ifndef GSL_SWEEP_SHADOW_TREE_H
#define GSL_SWEEP_SHADOW_TREE_H

#include "PairKernel.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

/// Boxes of triangles as seen along a direction, for leaving out pairs that cannot touch.
///
/// Everything here is rounded and knows by how much: nothing that touches is ever left out.
namespace gsl_sweep {

/// Coordinates u, v across the direction and z along it.
class ShadowFrame {
public:
  /// For points whose coordinates differ from those of `center` by at most `reach`.
  ShadowFrame(const TravelDirection& direction, const Coord3& center, double reach);

  /// The same frame, turned about the direction.
  ShadowFrame Turned(double angle) const;

  /// (u, v, z) of a point, each within Error().
  Coord3 Transform(const Coord3& p) const;

  /// Covers also the drift of u and v over any travel between such points.
  double Error() const { return m_error; }

  /// A cross product of two (u, v) differences is known within this.
  double CrossError() const { return m_crossError; }

private:
  Coord3 m_center, m_u, m_v, m_z;
  double m_error, m_crossError;
};

struct ShadowBox {
  Coord3 low, high; ///< u, v, z; grown by the frame's error

  /// True when no travel within [0, limit] lets anything of `moving` touch anything of `fixed`.
  static bool AreApart(const ShadowBox& moving, const ShadowBox& fixed, double limit) {
    return moving.high.x < fixed.low.x || fixed.high.x < moving.low.x ||
           moving.high.y < fixed.low.y || fixed.high.y < moving.low.y ||
           fixed.high.z < moving.low.z || fixed.low.z - moving.high.z > limit;
  }

  /// No contact comes before this travel.
  static double Gap(const ShadowBox& moving, const ShadowBox& fixed) {
    return fixed.low.z - moving.high.z;
  }
};

/// The shadow of one triangle and its extent along the direction.
struct ShadowTriangle {
  double u[3], v[3];
  double zLow, zHigh; ///< grown by the frame's error
  std::uint32_t index;

  ShadowBox Box(double error) const {
    const auto least = [](const double(&c)[3]) { return std::min(c[0], std::min(c[1], c[2])); };
    const auto most = [](const double(&c)[3]) { return std::max(c[0], std::max(c[1], c[2])); };
    return {{least(u) - error, least(v) - error, zLow}, {most(u) + error, most(v) + error, zHigh}};
  }
};

/// True when a line across the direction separates the shadows beyond doubt.
bool ShadowsApart(const ShadowTriangle& a, const ShadowTriangle& b, double crossError);

/// A tree of boxes over the triangles of one body. Depends on the triangles alone.
class ShadowTree {
public:
  struct Node {
    ShadowBox box;
    std::uint32_t first; ///< of the triangles of a leaf; else the node of the right child
    std::uint32_t count; ///< of the triangles of a leaf; else 0; the left child is the next node
  };

  /// Takes the triangles and puts them into the order of the leaves.
  ShadowTree(const ShadowFrame& frame, std::vector<ShadowTriangle> triangles);

  bool IsEmpty() const { return m_nodes.empty(); }
  const Node& At(std::uint32_t node) const { return m_nodes[node]; }
  const ShadowTriangle& TriangleAt(std::uint32_t position) const { return m_triangles[position]; }

private:
  struct Range {
    std::size_t begin, end;
  };

  static constexpr int binCount = 16;

  /// Triangles whose middle on the axis is in one of the first slices go left.
  struct Cut {
    int axis = -1; ///< -1: none
    int lastLeft = 0;
    double low = 0.0, scale = 0.0;
    double cost = std::numeric_limits<double>::infinity();

    int Bin(double middle) const;
  };

  /// A box with its high side negated, so that including another is one minimum six times over.
  struct Bounds {
    double least[6];

    Bounds();
    Bounds(const ShadowTriangle& t, double error);
    void Include(const Bounds& other);
    /// Twice the middle along one axis.
    double Middle(int axis) const { return least[axis] - least[axis + 3]; }
    /// Half the surface: the chance that a box is met grows with it.
    double Surface() const;
  };

  /// Equal slices of one axis, with the boxes and counts of the triangles in each.
  struct Slices {
    Bounds bounds[binCount];
    std::size_t counts[binCount] = {};

    /// Finds the cheapest cut between two slices of `total` triangles.
    void Weigh(std::size_t total, Cut& cut) const;
  };

  std::uint32_t Build(Range range, int depth);
  std::size_t SplitRange(Range range, int depth);
  Cut CheapestCut(Range range, Cut (&cuts)[3]) const;
  std::size_t SplitInHalf(Range range, int axis);

  double m_error;
  std::vector<ShadowTriangle> m_triangles;
  std::vector<Node> m_nodes;
};

} // namespace gsl_sweep

#endif
