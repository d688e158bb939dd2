#ifndef GSL_TESTS_SWEEP_BODIES_H
#define GSL_TESTS_SWEEP_BODIES_H

#include "Jobs.h"
#include "Leaves.h"
#include "SweepAsk.h"
#include "SweepShapes.h"
#include "Tree.h"

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

/// Meshes and their prepared parts, for the tests of the engine.
namespace sweep_bodies {

using gsl_arithmetic::Coord3;
using gsl_mesh::Mesh;
using gsl_sweep::Box;
using gsl_sweep::Corners;
using gsl_sweep::LeafBoxes;
using gsl_sweep::Leaves;
using gsl_sweep::Team;
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

/// The surface of a box in squares, `grid` along each edge.
inline Mesh Squares(int grid, const Coord3& low, const Coord3& high) {
  Mesh mesh;
  const double from[3] = {low.x, low.y, low.z};
  const double to[3] = {high.x, high.y, high.z};
  for (int face = 0; face < 6; ++face) {
    const auto at = [&](int i, int j) {
      const double part[3] = {face < 3 ? 1.0 : 0.0, static_cast<double>(i) / grid,
                              static_cast<double>(j) / grid};
      double c[3];
      for (int k = 0; k < 3; ++k) {
        const int axis = (face + k) % 3;
        c[axis] = from[axis] + part[k] * (to[axis] - from[axis]);
      }
      return Coord3{c[0], c[1], c[2]};
    };
    for (int j = 0; j < grid; ++j) {
      for (int i = 0; i < grid; ++i) {
        if (face < 3) {
          sweep_shapes::AddQuad(mesh, at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1));
        } else {
          sweep_shapes::AddQuad(mesh, at(i, j), at(i, j + 1), at(i + 1, j + 1), at(i + 1, j));
        }
      }
    }
  }
  return mesh;
}

/// Every corner moved along x by a quarter of its z.
inline Mesh Sheared(Mesh mesh) {
  for (Coord3& p : mesh.corners)
    p.x += 0.25 * p.z;
  return mesh;
}

/// The rotation by the unit quaternion (0.8, 0.36, 0.48, 0), so that nothing is along an axis.
inline Coord3 Turned(const Coord3& p) {
  return {0.5392 * p.x + 0.3456 * p.y + 0.768 * p.z, 0.3456 * p.x + 0.7408 * p.y - 0.576 * p.z,
          -0.768 * p.x + 0.576 * p.y + 0.28 * p.z};
}

/// Strips side by side, of length 1 and width 2^-8, at every 2^-7 along z = bend * y^2, turned
/// against the axes. Each strip is two triangles.
inline Mesh Needles(int count, double bend) {
  Mesh mesh;
  const auto at = [&](double x, double y) { return Turned({x, y, bend * y * y}); };
  for (int k = 0; k < count; ++k) {
    const double y = 0x1p-7 * (k - 0.5 * count);
    const double next = y + 0x1p-8;
    sweep_shapes::AddQuad(mesh, at(0.0, y), at(1.0, y), at(1.0, next), at(0.0, next));
  }
  return mesh;
}

/// Returns a fan of triangles from a tip to a ring of radius 1 around the z axis, in single
/// precision. Seen from above, they turn left.
inline Mesh Fan(int count, const Coord3& tip, double ringHeight) {
  Mesh mesh;
  const auto ring = [&](int k) {
    const double angle = 6.283185307179586 * (k % count) / count;
    return Coord3{std::cos(angle), std::sin(angle), ringHeight};
  };
  for (int k = 0; k < count; ++k)
    sweep_shapes::AddTriangle(mesh, tip, ring(k), ring(k + 1));
  return Single(mesh);
}

/// The same triangles, turned over.
inline Mesh TurnedOver(Mesh mesh) {
  for (std::size_t k = 0; k < mesh.corners.size(); k += 3)
    std::swap(mesh.corners[k + 1], mesh.corners[k + 2]);
  return mesh;
}

/// Returns a solid of two fans that share the ring around the origin. A flat one makes it a cone.
inline Mesh DoubleCone(int count, double top, double bottom) {
  Mesh mesh = Fan(count, {0, 0, top}, 0.0);
  sweep_shapes::Append(mesh, TurnedOver(Fan(count, {0, 0, bottom}, 0.0)));
  return mesh;
}

/// Turns the order of the triangles, so that the first of equals is found late.
inline Mesh Backwards(const Mesh& mesh) {
  Mesh turned = mesh;
  turned.corners.clear();
  for (std::size_t k = mesh.corners.size(); k > 0; k -= 3) {
    turned.corners.insert(turned.corners.end(), mesh.corners.begin() + static_cast<long>(k) - 3,
                          mesh.corners.begin() + static_cast<long>(k));
  }
  return turned;
}

/// The triangles in an order that begins with the last one, then the first, and so on inwards.
inline Mesh FromBothEnds(const Mesh& mesh) {
  Mesh result;
  const std::size_t count = mesh.corners.size() / 3;
  for (std::size_t k = 0; k < count; ++k) {
    const std::size_t from = 3 * (k % 2 == 0 ? count - 1 - k / 2 : k / 2);
    for (std::size_t c = 0; c < 3; ++c)
      result.corners.push_back(mesh.corners[from + c]);
  }
  return result;
}

/// Returns a triangle in a plane z = constant that faces up.
inline Mesh Sheet(double z, double reach) {
  Mesh mesh;
  sweep_shapes::AddTriangle(mesh, {-reach, -reach, z}, {reach, -reach, z}, {0, reach, z});
  return mesh;
}

/// Returns a box from z = 1 to 2 whose bottom has so many walls of zero thickness, the first
/// triangles of the body. Each wall is two triangles, whose reach is from `least` to 1.
inline Mesh Walls(int count, double least) {
  Mesh mesh;
  for (int k = 0; k < count; ++k) {
    const double reach = 1.0 - (1.0 - least) * k / count;
    sweep_shapes::Append(mesh, TurnedOver(Sheet(1, reach)));
    sweep_shapes::Append(mesh, Sheet(1, reach));
  }
  sweep_shapes::Append(mesh, sweep_shapes::Box({-2, -2, 1}, {2, 2, 2}));
  return mesh;
}

/// Returns the same with walls of different reach, whose triangles do not cancel each other: one
/// side of each wall is divided. All walls are around the first.
inline Mesh ManyWalls(int count) {
  Mesh mesh;
  for (int k = 0; k < count; ++k) {
    const Mesh side = Sheet(1, 0.5 + 0.5 * k / count);
    sweep_shapes::Append(mesh, TurnedOver(side));
    const Coord3 middle{0, 0, 1};
    for (std::size_t c = 0; c < 3; ++c)
      sweep_shapes::AddTriangle(mesh, side.corners[c], side.corners[(c + 1) % 3], middle);
  }
  sweep_shapes::Append(mesh, sweep_shapes::Box({-2, -2, 1}, {2, 2, 2}));
  return mesh;
}

inline Mesh Soup(unsigned seed, std::size_t count) {
  std::mt19937_64 random(seed);
  return sweep_shapes::Soup(random, count, 1.0, 0.1, 0.0);
}

/// What a body is prepared with.
struct Parts {
  explicit Parts(const Mesh& mesh, Team& team = Team::Alone()) : corners(ViewOf(mesh), team) {
    leaves = MakeLeaves(corners, boxes, team);
    tree = Tree<float>::Over(corners, leaves, boxes.boxes, team);
  }

  Corners corners;
  LeafBoxes boxes;
  Leaves leaves;
  Tree<float> tree;
};

/// Meshes that are large enough for several blocks: in order, in no order, with side slabs, in
/// double precision with triangles that are skipped, and of coincident triangles.
inline std::vector<Mesh> LargeMeshes() {
  Mesh needles = Needles(12000, 1e-4);
  Mesh skipped = Bowl(120, 0.3);
  for (const std::size_t corner : {0u, 40000u, 80000u})
    skipped.corners[corner].x = std::nan("");
  Mesh copies = Single(Bowl(60, 0.3));
  for (int k = 0; k < 20000; ++k)
    sweep_shapes::AddTriangle(copies, {0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0});
  return {Single(Bowl(120, 0.3)), Soup(17, 40000), Single(std::move(needles)), std::move(skipped),
          std::move(copies)};
}

/// Calls check(team) for teams of several threads, and for one of an executor that goes backwards.
template <class Check>
void WithEachTeam(const Check& check) {
  for (const unsigned threads : {2u, 3u, 8u}) {
    gsl_sweep::Run run;
    run.threads = threads;
    Team team(run, threads);
    check(team);
  }
  gsl_sweep::Run run;
  run.executor = [](std::size_t count, const std::function<void(std::size_t)>& job) {
    for (std::size_t k = count; k-- > 0;)
      job(k);
  };
  Team team(run, 1);
  check(team);
}

/// Returns true when two arrays have the same bytes. Elements have no padding.
template <class T>
bool SameBytes(const gsl_sweep::Array<T>& a, const gsl_sweep::Array<T>& b) {
  return a.size() == b.size() && (a.size() == 0 || std::memcmp(a.data(), b.data(), a.Bytes()) == 0);
}

template <class Scalar>
bool SameBytes(const Tree<Scalar>& a, const Tree<Scalar>& b) {
  if (a.nodes.size() != b.nodes.size() || a.orderedCount != b.orderedCount || a.least != b.least ||
      std::memcmp(&a.root, &b.root, sizeof a.root) != 0 ||
      std::memcmp(&a.box, &b.box, sizeof a.box) != 0) {
    return false;
  }
  for (std::size_t k = 0; k < a.nodes.size(); ++k) {
    const auto& one = a.nodes[k];
    const auto& other = b.nodes[k];
    if (std::memcmp(&one.boxes, &other.boxes, sizeof one.boxes) != 0 ||
        std::memcmp(one.child, other.child, sizeof one.child) != 0 ||
        std::memcmp(one.least, other.least, sizeof one.least) != 0) {
      return false;
    }
  }
  return true;
}

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
