#ifndef GSL_TESTS_SWEEP_BODIES_H
#define GSL_TESTS_SWEEP_BODIES_H

#include "Leaves.h"
#include "SweepAsk.h"
#include "SweepShapes.h"
#include "Tree.h"

#include <cmath>
#include <random>

/// Meshes and their prepared parts, for the tests of the engine.
namespace sweep_bodies {

using gsl_arithmetic::Coord3;
using gsl_mesh::Mesh;
using gsl_sweep::Box;
using gsl_sweep::Corners;
using gsl_sweep::LeafBoxes;
using gsl_sweep::Leaves;
using gsl_sweep::Tree;
using gsl_sweep::TreeRef;
using gsl_tools::ViewOf;

/// The corners, rounded to single precision.
inline Mesh Single(Mesh mesh) {
  for (Coord3& p : mesh.corners) {
    volatile float x = static_cast<float>(p.x);
    volatile float y = static_cast<float>(p.y);
    volatile float z = static_cast<float>(p.z);
    p = {x, y, z};
  }
  return mesh;
}

/// z = bend * (x^2 + y^2) over [-1, 1]^2, 2 * count^2 triangles row by row.
inline Mesh Bowl(int count, double bend) {
  Mesh mesh;
  const auto at = [&](int i, int j) {
    const double x = 2.0 * i / count - 1.0;
    const double y = 2.0 * j / count - 1.0;
    return Coord3{x, y, bend * (x * x + y * y)};
  };
  for (int j = 0; j < count; ++j) {
    for (int i = 0; i < count; ++i) {
      sweep_shapes::AddQuad(mesh, at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1));
    }
  }
  return mesh;
}

inline Mesh Soup(unsigned seed, std::size_t count) {
  std::mt19937_64 random(seed);
  return sweep_shapes::Soup(random, count, 1.0, 0.1, 0.0);
}

/// What a body is prepared with.
struct Parts {
  explicit Parts(const Mesh& mesh) : corners(ViewOf(mesh)) {
    leaves = MakeLeaves(corners, boxes);
    tree = Tree<float>::Over(corners, leaves, boxes.boxes);
  }

  Corners corners;
  LeafBoxes boxes;
  Leaves leaves;
  Tree<float> tree;
};

/// Calls work(place) for each triangle below a lane.
template <class Scalar, class Work>
void EachPlace(const Tree<Scalar>& tree, const Leaves& leaves, TreeRef ref, const Work& work) {
  if (ref.IsNone()) return;
  if (ref.IsLeaf()) {
    for (std::size_t place = leaves.begin[ref.Index()]; place < leaves.begin[ref.Index() + 1];
         ++place)
      work(place);
    return;
  }
  for (const TreeRef child : tree.nodes[ref.Index()].child)
    EachPlace(tree, leaves, child, work);
}

template <class Scalar>
bool Holds(const Box<Scalar>& box, const Coord3& p) {
  const double c[3] = {p.x, p.y, p.z};
  for (int k = 0; k < 3; ++k) {
    if (!(static_cast<double>(box.low[k]) <= c[k] && c[k] <= static_cast<double>(box.high[k])))
      return false;
  }
  return true;
}

} // namespace sweep_bodies

#endif
