#include "PreparedBody.h"

#include "gsl_Matrix.h"
#include "gsl_Point.h"

namespace gsl_sweep {

namespace {

constexpr double kLeastComfortable = 0x1p-100;
constexpr double kMostComfortable = 0x1p120;

/// Returns true when each number is zero or of a comfortable magnitude.
template <class Scalar>
bool AreComfortable(const Scalar* numbers, std::size_t count) {
  constexpr std::size_t kBlock = 4096;
  for (std::size_t begin = 0; begin < count; begin += kBlock) {
    const std::size_t end = std::min(begin + kBlock, count);
    unsigned outside = 0;
    for (std::size_t k = begin; k < end; ++k) {
      const Scalar magnitude = std::fabs(numbers[k]);
      outside |= static_cast<unsigned>(magnitude > static_cast<Scalar>(kMostComfortable)) |
                 (static_cast<unsigned>(magnitude < static_cast<Scalar>(kLeastComfortable)) &
                  static_cast<unsigned>(magnitude > Scalar{0}));
    }
    if (outside != 0) return false;
  }
  return true;
}

/// The same for the triangles that take part. Slower; needed only where some vertex fails, which
/// may belong to no triangle or to one that is skipped.
bool TakePartComfortably(const Corners& corners) {
  for (std::size_t place = 0; place < corners.Count(); ++place) {
    for (int corner = 0; corner < 3; ++corner) {
      const Coord3 p = corners.At(place, corner);
      const double numbers[3] = {p.x, p.y, p.z};
      if (!AreComfortable(numbers, 3)) return false;
    }
  }
  return true;
}

} // namespace

PreparedBody::PreparedBody(const TriangleView& view) : m_corners(view) {
  LeafBoxes boxes;
  m_leaves = MakeLeaves(m_corners, boxes);
  Measure(boxes);
  m_leafBoxes = std::move(boxes.boxes);
}

PreparedBody::PreparedBody(const PreparedBody& other, const Array<double>& vertices)
    : m_corners(other.m_corners, vertices.data()) {
  LeafBoxes boxes;
  if (m_corners.Count() != other.m_corners.Count()) {
    // Some corner has left the range of double.
    m_leaves = MakeLeaves(m_corners, boxes);
    Measure(boxes);
    m_leafBoxes = std::move(boxes.boxes);
    return;
  }
  m_leaves.begin = Array<std::uint32_t>(other.m_leaves.begin.size());
  std::copy(other.m_leaves.begin.begin(), other.m_leaves.begin.end(), m_leaves.begin.begin());
  MeasureLeaves(m_corners, m_leaves, boxes);
  Measure(boxes);
  if (m_isComfortable && other.m_isComfortable) {
    std::call_once(m_singleOnce, [&] { m_single = other.SingleTree().Refitted(boxes.boxes); });
    m_hasSingle = true;
  } else {
    m_leafBoxes = std::move(boxes.boxes);
  }
}

void PreparedBody::Measure(const LeafBoxes& boxes) {
  m_bounds = boxes.bounds;
  m_corners.Read([this](const auto& reader) {
    m_isComfortable = AreComfortable(reader.vertices, 3 * m_corners.VertexCount());
  });
  if (!m_isComfortable) m_isComfortable = TakePartComfortably(m_corners);
}

const Tree<float>& PreparedBody::SingleTree() const {
  std::call_once(m_singleOnce, [this] {
    m_single = Tree<float>::Over(m_corners, m_leaves, m_leafBoxes);
    m_leafBoxes = Array<Box<float>>();
    m_hasSingle = true;
  });
  return m_single;
}

const Tree<double>& PreparedBody::DoubleTree() const {
  std::call_once(m_doubleOnce, [this] {
    m_double = Tree<double>::Over(m_corners, m_leaves, ExactBoxes(m_corners, m_leaves));
    m_hasDouble = true;
  });
  return m_double;
}

void PreparedBody::MakeSlabs(const std::function<bool()>& goesOn) const {
  if (m_slabsBegun.exchange(true)) return;
  try {
    m_ownSlabs = Slabs::Of(m_corners, m_leaves, SingleTree(), goesOn);
  } catch (const std::bad_alloc&) {
    return; // they save time and nothing else
  } catch (...) {
    m_slabsBegun = false;
    throw;
  }
  if (!m_ownSlabs) {
    m_slabsBegun = false;
    return;
  }
  m_slabs.store(m_ownSlabs.get(), std::memory_order_release);
}

std::size_t PreparedBody::Bytes() const {
  std::size_t bytes = m_corners.Bytes() + m_leaves.begin.Bytes();
  if (m_hasSingle) {
    bytes += m_single.Bytes();
  } else {
    bytes += m_leaves.Count() * sizeof(Box<float>);
  }
  if (m_hasDouble) bytes += m_double.Bytes();
  if (const Slabs* slabs = SlabsIfMade()) bytes += slabs->Bytes();
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
