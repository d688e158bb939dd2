#include "PreparedBody.h"

#include "InwardRays.h"

#include "gsl_Matrix.h"
#include "gsl_Point.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace gsl_sweep {

PreparedBody::PreparedBody(const TriangleView& view, Team& team)
    : m_corners(view, team), m_isComfortable(m_corners.AreComfortable()),
      m_leastMagnitude(m_corners.LeastMagnitude()), m_triangleCount(m_corners.Count()),
      m_skippedCount(m_corners.SkippedCount()) {}

PreparedBody::PreparedBody(const PreparedBody& other, const Array<double>& vertices)
    : m_corners(other.Triangles(), vertices.data()), m_isComfortable(m_corners.AreComfortable()),
      m_leastMagnitude(m_corners.LeastMagnitude()), m_triangleCount(m_corners.Count()),
      m_skippedCount(m_corners.SkippedCount()) {
  if (m_triangleCount != other.m_triangleCount) return; // some corner has left the range of double
  std::call_once(m_leavesOnce, [&] {
    m_leaves.begin = other.m_leaves.begin.Copy();
    LeafBoxes boxes;
    MeasureLeaves(m_corners, m_leaves, boxes);
    m_bounds = boxes.bounds;
    m_leafBoxes = std::move(boxes.boxes);
  });
  if (m_isComfortable && other.m_isComfortable) {
    std::call_once(m_singleOnce, [&] { m_single = other.SingleTree().Refitted(m_leafBoxes); });
    m_leafBoxes = Array<Box<float>>();
    m_hasSingle = true;
  }
}

void PreparedBody::Prepare(Team& team) const {
  if (m_isComfortable) {
    NeedSingle(team);
  } else {
    NeedDouble(team);
  }
}

void PreparedBody::NeedLeaves(Team& team) const {
  std::call_once(m_leavesOnce, [this, &team] {
    LeafBoxes boxes;
    m_leaves = MakeLeaves(m_corners, boxes, team.OwnThreads());
    m_bounds = boxes.bounds;
    m_leafBoxes = std::move(boxes.boxes);
  });
}

const SolidSurface& PreparedBody::Surface() const {
  NeedLeaves();
  std::call_once(m_surfaceOnce, [this] {
    m_surface = SolidSurfaceOf(m_corners);
    if (m_surface.components.size() > 1) TestComponents();
    MakeParts();
    m_surfaceBytes = m_surface.Bytes();
    m_isDecided = true;
  });
  return m_surface;
}

const PreparedBody& PreparedBody::Distinct() const {
  Surface();
  return m_distinct == nullptr ? *this : *m_distinct;
}

const PreparedBody& PreparedBody::Counted() const {
  Surface();
  return m_counted == nullptr ? *this : *m_counted;
}

std::unique_ptr<PreparedBody> PreparedBody::PartOf(const std::vector<std::uint32_t>& places) const {
  std::vector<std::uint32_t> byNumber = places;
  std::sort(byNumber.begin(), byNumber.end(), [this](std::uint32_t a, std::uint32_t b) {
    return m_corners.Number(a) < m_corners.Number(b);
  });
  std::vector<double> vertices;
  std::vector<std::uint32_t> numbers;
  for (const std::uint32_t place : byNumber) {
    numbers.push_back(WholeNumber(m_corners.Number(place)));
    for (int k = 0; k < 3; ++k) {
      const Coord3 p = m_corners.At(place, k);
      vertices.insert(vertices.end(), {p.x, p.y, p.z});
    }
  }
  TriangleView view;
  view.vertices = vertices.data();
  view.vertexCount = 3 * numbers.size();
  view.triangleCount = numbers.size();
  auto part = std::make_unique<PreparedBody>(view);
  part->m_wholeNumbers = std::move(numbers);
  return part;
}

/// Makes the bodies without the copies of triangles.
void PreparedBody::MakeParts() const {
  const TriangleCopies& copies = m_surface.copies;
  std::vector<int> weightOf(copies.weights.empty() ? 0 : m_triangleCount, 1);
  for (const TriangleCopies::Weight& weight : copies.weights)
    weightOf[weight.place] = weight.weight;
  std::vector<std::uint32_t> distinct;
  std::vector<std::uint32_t> counted;
  auto repeated = copies.repeated.begin();
  for (std::uint32_t place = 0; place < weightOf.size(); ++place) {
    if (weightOf[place] != 0) counted.push_back(place);
    if (repeated != copies.repeated.end() && *repeated == place) {
      ++repeated;
    } else {
      distinct.push_back(place);
    }
  }
  if (!copies.repeated.empty()) m_distinct = PartOf(distinct);
  if (copies.weights.empty()) return;
  m_counted = PartOf(counted);
  std::sort(counted.begin(), counted.end(), [this](std::uint32_t a, std::uint32_t b) {
    return m_corners.Number(a) < m_corners.Number(b);
  });
  for (const std::uint32_t place : counted)
    m_counted->m_weights.push_back(weightOf[place]);
}

/// Looks for a component that is inside out: the surface winds the wrong way around points beside
/// its triangles.
void PreparedBody::TestComponents() const {
  double largest = 0.0;
  for (int k = 0; k < 3; ++k)
    largest = std::max({largest, std::fabs(m_bounds.low[k]), std::fabs(m_bounds.high[k])});
  const auto turnsUnderAndOver = [this, largest](auto scalar) {
    using Scalar = decltype(scalar);
    const Placement<Scalar> placement({0.0, 0.0, 0.0}, RangeScale(largest));
    const PlacedBody<Scalar> self(*this, placement);
    InwardRays rays;
    for (const std::uint32_t place : m_surface.components) {
      SurfaceTriangle face = self.TriangleAt(place);
      rays.Add(face);
      std::swap(face.corner[1], face.corner[2]);
      rays.Add(face);
    }
    return rays.TurnsAround(self, [] { return true; });
  };
  const std::vector<int> turns = m_isComfortable ? turnsUnderAndOver(0.0f) : turnsUnderAndOver(0.0);
  const auto wrong = std::find_if(turns.begin(), turns.end(), [](int turn) { return turn < 0; });
  if (wrong == turns.end()) return;
  const auto ray = static_cast<std::size_t>(wrong - turns.begin());
  m_surface.solidity.fault = SolidityFault::WrongOrientation;
  m_surface.solidity.triangle = m_corners.Number(m_surface.components[ray / 2]);
}

const Tree<float>& PreparedBody::NeedSingle(Team& team) const {
  NeedLeaves(team);
  std::call_once(m_singleOnce, [this, &team] {
    m_single = Tree<float>::Over(m_corners, m_leaves, m_leafBoxes, team.OwnThreads());
    m_leafBoxes = Array<Box<float>>();
    m_hasSingle = true;
  });
  return m_single;
}

const Tree<double>& PreparedBody::NeedDouble(Team& team) const {
  NeedLeaves(team);
  std::call_once(m_doubleOnce, [this, &team] {
    Team& own = team.OwnThreads();
    const Array<Box<double>> boxes = ExactBoxes(m_corners, m_leaves, own);
    m_double = Tree<double>::Over(m_corners, m_leaves, boxes, own);
    m_hasDouble = true;
  });
  return m_double;
}

void PreparedBody::MakeSlabs(const std::function<bool()>& goesOn, Team& team) const {
  const Tree<float>& tree = NeedSingle(team);
  m_slabs.MakeOnce(goesOn, [&](const std::function<bool()>& asked) {
    return Slabs::Of(m_corners, m_leaves, tree, asked, team);
  });
}

void PreparedBody::MakeFine(const std::function<bool()>& goesOn, Team& team) const {
  const Tree<float>& tree = NeedSingle(team);
  m_fine.MakeOnce(goesOn, [&](const std::function<bool()>& asked) {
    return FineTree::Of(m_corners, m_leaves, tree, asked, team);
  });
}

void PreparedBody::MakeFacings(const std::function<bool()>& goesOn, Team& team) const {
  const Tree<float>& tree = NeedSingle(team);
  m_facings.MakeOnce(goesOn, [&](const std::function<bool()>& asked) {
    return Facings::Of(m_corners, m_leaves, tree, asked, team);
  });
}

std::size_t PreparedBody::Bytes() const {
  NeedLeaves();
  std::size_t bytes = m_corners.Bytes() + m_leaves.begin.Bytes();
  if (m_hasSingle) {
    bytes += m_single.Bytes();
  } else {
    bytes += m_leaves.Count() * sizeof(Box<float>);
  }
  if (m_hasDouble) bytes += m_double.Bytes();
  if (m_surfaceBytes > 0) {
    bytes += m_surfaceBytes;
    for (const auto& part : {m_distinct.get(), m_counted.get()})
      if (part != nullptr) bytes += part->Bytes();
  }
  bytes += m_wholeNumbers.capacity() * sizeof(std::uint32_t) + m_weights.capacity() * sizeof(int);
  if (const Slabs* slabs = SlabsIfMade()) bytes += slabs->Bytes();
  if (const FineTree* fine = FineIfMade()) bytes += fine->Bytes();
  if (const Facings* facings = FacingsIfMade()) bytes += facings->Bytes();
  return bytes;
}

Array<double> MovedVertices(const PreparedBody& body, const gsl_Matrix& matrix) {
  const Corners& corners = body.Triangles();
  Array<double> moved(3 * corners.VertexCount());
  gsl_Point point;
  for (std::size_t vertex = 0; vertex < corners.VertexCount(); ++vertex) {
    const Coord3 p = corners.VertexAt(vertex);
    point.x = p.x;
    point.y = p.y;
    point.z = p.z;
    matrix.Transform(point);
    moved[3 * vertex] = point.x;
    moved[3 * vertex + 1] = point.y;
    moved[3 * vertex + 2] = point.z;
  }
  return moved;
}

Array<double> ShiftedVertices(const PreparedBody& body, const Coord3& offset) {
  const Corners& corners = body.Triangles();
  Array<double> shifted(3 * corners.VertexCount());
  for (std::size_t vertex = 0; vertex < corners.VertexCount(); ++vertex) {
    const Coord3 p = corners.VertexAt(vertex);
    shifted[3 * vertex] = p.x + offset.x;
    shifted[3 * vertex + 1] = p.y + offset.y;
    shifted[3 * vertex + 2] = p.z + offset.z;
  }
  return shifted;
}

} // namespace gsl_sweep
