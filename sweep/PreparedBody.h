#ifndef GSL_SWEEP_PREPARED_BODY_H
#define GSL_SWEEP_PREPARED_BODY_H

#include "Facings.h"
#include "FineTree.h"
#include "MadeLater.h"
#include "Solidity.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace gsl_sweep {

/// The part that bodies share: their triangles, the leaves and the trees over them. Leaves and
/// trees are made once, when they are first needed, by the first thread that needs them and the
/// threads of its team. Other threads that need them wait, so an executor gets no part of this
/// work.
class PreparedBody {
public:
  explicit PreparedBody(const TriangleView& view, Team& team = Team::Alone());
  /// Holds the same triangles with other vertices, three numbers each, in the order of Triangles().
  PreparedBody(const PreparedBody& other, const Array<double>& vertices);

  /// Makes the leaves, and the tree that questions about this body use.
  void Prepare(Team& team) const;
  std::size_t TriangleCount() const { return m_triangleCount; }
  std::size_t SkippedCount() const { return m_skippedCount; }
  bool IsEmpty() const { return m_triangleCount == 0; }
  /// Returns the triangles in the order of the leaves.
  const Corners& Triangles() const {
    NeedLeaves();
    return m_corners;
  }
  const Leaves& Runs() const {
    NeedLeaves();
    return m_leaves;
  }
  /// Returns the exact bounds, which are empty for an empty body.
  const Box<double>& Bounds() const {
    NeedLeaves();
    return m_bounds;
  }

  /// Returns true when single-precision boxes are enough: coordinates are zero or from 2^-100 to
  /// 2^120 in magnitude. Then no difference or product of them leaves the range in which rounding
  /// is relative.
  bool IsComfortable() const { return m_isComfortable; }
  /// Returns a magnitude that no coordinate other than zero is below.
  double LeastMagnitude() const { return m_leastMagnitude; }

  /// Returns whether it has been decided whether the triangles are the surface of a solid.
  bool IsDecided() const { return m_isDecided; }
  /// Returns whether the triangles are the surface of a solid, decided by the first call.
  const Solidity& AsSolid() const { return Surface().solidity; }
  /// Returns a triangle of each component of a solid, see SolidSurface.
  const std::vector<std::uint32_t>& Components() const { return Surface().components; }
  /// Returns whether some component has no triangle with area, as long as no offset is added.
  bool HasFlatComponent() const { return Surface().hasFlatComponent; }
  /// Returns the component of the triangle at a place of a solid, as a number below the number of
  /// triangles.
  std::uint32_t ComponentOf(std::size_t place) const {
    const std::vector<std::uint32_t>& componentOf = Surface().componentOf;
    return componentOf.empty() ? 0 : componentOf[place];
  }

  /// Returns a body with the triangles of this solid that differ in their corners or in the order
  /// of the corners: of equal triangles the one with the lowest number. It is this body when no
  /// triangle is there twice.
  const PreparedBody& Distinct() const;
  /// Returns a body with the triangles that count where the surface of this solid is summed up,
  /// with their weights. It is this body when no triangle has copies. So walls of zero thickness,
  /// which cancel themselves, and equal components take no time.
  const PreparedBody& Counted() const;
  /// Returns how often the triangle at a place counts, of a body that Counted has returned.
  int WeightOf(std::size_t place) const {
    return m_weights.empty() ? 1 : m_weights[m_corners.Number(place)];
  }
  /// Returns a body with the triangles at some places, in the order of their numbers.
  std::unique_ptr<PreparedBody> PartOf(const std::vector<std::uint32_t>& places) const;
  /// Returns the number of a triangle in the whole body, of a part or a body of Distinct.
  std::uint32_t WholeNumber(std::uint32_t number) const {
    return m_wholeNumbers.empty() ? number : m_wholeNumbers[number];
  }

  const Tree<float>& SingleTree() const { return NeedSingle(Team::Alone()); }
  /// Returns the tree over the exact coordinates, wherever the body is.
  const Tree<double>& DoubleTree() const { return NeedDouble(Team::Alone()); }

  /// Return null until they have been made.
  const Slabs* SlabsIfMade() const { return m_slabs.IfMade(); }
  const FineTree* FineIfMade() const { return m_fine.IfMade(); }
  const Facings* FacingsIfMade() const { return m_facings.IfMade(); }
  /// Return at once where another thread is making them. Give up, so that they can be made later,
  /// when `goesOn`, which is called now and then, returns false.
  void MakeSlabs(const std::function<bool()>& goesOn = {}, Team& team = Team::Alone()) const;
  void MakeFine(const std::function<bool()>& goesOn = {}, Team& team = Team::Alone()) const;
  void MakeFacings(const std::function<bool()>& goesOn = {}, Team& team = Team::Alone()) const;

  /// Counts the visits of walks through the trees.
  void CountVisits(std::size_t count) const {
    m_visits.fetch_add(count, std::memory_order_relaxed);
  }
  /// Returns true when walks have taken about as long as making the fine tree takes.
  bool DeservesFine() const {
    return m_visits.load(std::memory_order_relaxed) >= kLeastVisits + m_triangleCount;
  }

  std::size_t Bytes() const;

private:
  static constexpr std::size_t kLeastVisits = 10000;

  void NeedLeaves(Team& team = Team::Alone()) const;
  const Tree<float>& NeedSingle(Team& team) const;
  const Tree<double>& NeedDouble(Team& team) const;
  const SolidSurface& Surface() const;
  void TestComponents() const;
  void MakeParts() const;

  mutable Corners m_corners; ///< sorted when the leaves are made
  bool m_isComfortable;
  double m_leastMagnitude;
  std::size_t m_triangleCount, m_skippedCount;
  mutable std::once_flag m_leavesOnce;
  mutable Leaves m_leaves;
  mutable Box<double> m_bounds = Box<double>::Empty();
  mutable Array<Box<float>> m_leafBoxes; ///< until the tree is made
  mutable std::once_flag m_surfaceOnce, m_singleOnce, m_doubleOnce;
  mutable SolidSurface m_surface;
  mutable std::unique_ptr<PreparedBody> m_distinct, m_counted; ///< null: this body
  std::vector<std::uint32_t> m_wholeNumbers; ///< by number, of a part of another body
  std::vector<int> m_weights;                ///< by number, of a counted body
  mutable Tree<float> m_single;
  mutable Tree<double> m_double;
  mutable std::atomic<bool> m_hasSingle{false}, m_hasDouble{false}, m_isDecided{false};
  mutable std::atomic<std::size_t> m_surfaceBytes{0}; ///< of m_surface, when it is made
  mutable MadeLater<Slabs> m_slabs;
  mutable MadeLater<FineTree> m_fine;
  mutable MadeLater<Facings> m_facings;
  mutable std::atomic<std::size_t> m_visits{0};
};

/// Returns as many threads as it is worth to prepare so many triangles: making what fewer triangles
/// need takes less time than starting a thread.
constexpr std::size_t WorthwhileThreads(std::size_t triangleCount) {
  return triangleCount >> 13;
}

/// The vertices of a body after a matrix, and after an offset, has moved them.
Array<double> MovedVertices(const PreparedBody& body, const gsl_Matrix& matrix);
Array<double> ShiftedVertices(const PreparedBody& body, const Coord3& offset);

} // namespace gsl_sweep

#endif
