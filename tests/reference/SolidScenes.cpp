#include "SolidScenes.h"

#include "RandomNumbers.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace reference {

namespace {

Piece BoxPiece(const LatticePoint& low, const LatticePoint& high) {
  Piece piece;
  for (std::size_t k = 0; k < 8; ++k) {
    piece.push_back({(k & 1) != 0 ? high[0] : low[0], (k & 2) != 0 ? high[1] : low[1],
                     (k & 4) != 0 ? high[2] : low[2]});
  }
  return piece;
}

/// Returns the prism between y = `from` and y = `to` over a convex polygon of points (x, z).
Piece PrismPiece(const std::vector<std::array<std::int64_t, 2>>& polygon, std::int64_t from,
                 std::int64_t to) {
  Piece piece;
  for (const auto& p : polygon) {
    piece.push_back({p[0], from, p[1]});
    piece.push_back({p[0], to, p[1]});
  }
  return piece;
}

/// Adds a piece as a component, with walls of its own.
void AddPiece(LatticeSolid& solid, const Piece& piece) {
  solid.pieces.push_back(piece);
  const std::vector<LatticePoint> surface = SurfaceOf(piece);
  solid.surface.insert(solid.surface.end(), surface.begin(), surface.end());
}

/// Boxes of a grid, of which some are filled. The surface has no walls between filled boxes.
class Voxels {
public:
  /// The lines of the grid along each axis, in rising order.
  explicit Voxels(const std::array<std::vector<std::int64_t>, 3>& lines) : m_lines(lines) {
    m_filled.assign(Count(0) * Count(1) * Count(2), false);
  }

  std::size_t Count(std::size_t axis) const { return m_lines[axis].size() - 1; }
  void Set(std::size_t i, std::size_t j, std::size_t k, bool filled) {
    m_filled[Index(i, j, k)] = filled;
  }
  void AddTo(LatticeSolid& solid) const {
    for (std::size_t i = 0; i < Count(0); ++i) {
      for (std::size_t j = 0; j < Count(1); ++j) {
        for (std::size_t k = 0; k < Count(2); ++k) {
          if (m_filled[Index(i, j, k)]) AddVoxel({i, j, k}, solid);
        }
      }
    }
  }

private:
  using Cell = std::array<std::size_t, 3>;

  std::size_t Index(std::size_t i, std::size_t j, std::size_t k) const {
    return (i * Count(1) + j) * Count(2) + k;
  }

  void AddVoxel(const Cell& cell, LatticeSolid& solid) const {
    LatticePoint low{};
    LatticePoint high{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      low[axis] = m_lines[axis][cell[axis]];
      high[axis] = m_lines[axis][cell[axis] + 1];
    }
    solid.pieces.push_back(BoxPiece(low, high));
    for (std::size_t axis = 0; axis < 3; ++axis) {
      for (const bool isHigh : {false, true}) {
        if (!IsFilledBeside(cell, axis, isHigh)) AddWall(low, high, axis, isHigh, solid);
      }
    }
  }

  bool IsFilledBeside(Cell cell, std::size_t axis, bool isHigh) const {
    if (isHigh ? cell[axis] + 1 == Count(axis) : cell[axis] == 0) return false;
    cell[axis] = isHigh ? cell[axis] + 1 : cell[axis] - 1;
    return m_filled[Index(cell[0], cell[1], cell[2])];
  }

  static void AddWall(const LatticePoint& low, const LatticePoint& high, std::size_t axis,
                      bool isHigh, LatticeSolid& solid) {
    const std::size_t u = (axis + 1) % 3;
    const std::size_t v = (axis + 2) % 3;
    const auto corner = [&](bool highU, bool highV) {
      LatticePoint p{};
      p[axis] = isHigh ? high[axis] : low[axis];
      p[u] = highU ? high[u] : low[u];
      p[v] = highV ? high[v] : low[v];
      return p;
    };
    const LatticePoint a = corner(false, false);
    const LatticePoint b = isHigh ? corner(true, false) : corner(false, true);
    const LatticePoint c = corner(true, true);
    const LatticePoint d = isHigh ? corner(false, true) : corner(true, false);
    solid.surface.insert(solid.surface.end(), {a, b, c, a, c, d});
  }

  std::array<std::vector<std::int64_t>, 3> m_lines;
  std::vector<bool> m_filled;
};

/// Makes one scene.
class SolidMaker {
public:
  explicit SolidMaker(std::uint64_t seed) : m_random(seed) {}

  void Boxes();
  void RandomVoxels();
  void Pegs();
  void Dovetails();
  void Tetrahedra();
  void Hulls();
  void Cavities();
  void Copies();
  void Ridges();
  void Tips();
  void Combs();
  void Threads();
  void Folds();
  void Stairs();
  void SeveralBodies();
  void Flattened();

  void Disturb();
  SolidScene Finish(std::string name);

private:
  using Point = LatticePoint;

  std::int64_t Between(int low, int high) { return low + m_random.Below(high - low + 1); }
  bool Chance(double probability) { return m_random.Chance(probability); }
  Point AnyPoint(int low, int high) {
    Point p{};
    for (std::int64_t& c : p)
      c = Between(low, high);
    return p;
  }
  Point AnyDirection();
  Point AxisDirection();
  std::vector<std::int64_t> Lines(std::size_t cells, int widest);
  Voxels Grid(std::size_t x, std::size_t y, std::size_t z, int widest) {
    return Voxels({Lines(x, widest), Lines(y, widest), Lines(z, widest)});
  }
  Piece AnyHull(int points, int reach);

  template <class Change>
  static void ChangePoints(LatticeSolid& solid, const Change& change) {
    for (Piece& piece : solid.pieces)
      for (Point& p : piece)
        change(p);
    for (Point& p : solid.surface)
      change(p);
  }
  template <class Change>
  void ChangeAll(const Change& change) {
    ChangePoints(m_question.moving, change);
    ChangePoints(m_question.fixed, change);
  }
  static void Move(LatticeSolid& solid, const Point& by) {
    ChangePoints(solid, [&by](Point& p) {
      for (std::size_t k = 0; k < 3; ++k)
        p[k] += by[k];
    });
  }
  void StepBack(std::int64_t steps) {
    Point by = m_question.direction;
    for (std::int64_t& c : by)
      c *= -steps;
    Move(m_question.moving, by);
  }
  void Scale(std::int64_t factor) {
    ChangeAll([factor](Point& p) {
      for (std::int64_t& c : p)
        c *= factor;
    });
  }
  void Shear();
  void Mirror();
  void SplitEdges(std::vector<Point>& surface);
  static bool AreOnBothSides(const Point& a, const Point& b, const Point& c, const Point& d);
  void FoldAnEdge(std::vector<Point>& surface);
  void AddStair(LatticeSolid& solid, std::int64_t height);
  void AddSheet(LatticeSolid& solid, const std::array<Point, 3>& triangle);
  void Shuffle(std::vector<Point>& surface);

  RandomNumbers m_random;
  SolidQuestion m_question;
  std::vector<std::size_t> m_fixedBodies;
  bool m_isFlattened = false;
};

LatticePoint SolidMaker::AnyDirection() {
  Point d = AnyPoint(-2, 2);
  while (d == Point{0, 0, 0})
    d = AnyPoint(-2, 2);
  return d;
}

LatticePoint SolidMaker::AxisDirection() {
  Point d{0, 0, 0};
  d[static_cast<std::size_t>(Between(0, 2))] = Chance(0.5) ? 1 : -1;
  return d;
}

std::vector<std::int64_t> SolidMaker::Lines(std::size_t cells, int widest) {
  std::vector<std::int64_t> lines{0};
  for (std::size_t k = 0; k < cells; ++k)
    lines.push_back(lines.back() + Between(1, widest));
  return lines;
}

Piece SolidMaker::AnyHull(int points, int reach) {
  for (;;) {
    Piece piece;
    for (int k = 0; k < points; ++k)
      piece.push_back(AnyPoint(0, reach));
    for (std::size_t k = 3; k < piece.size(); ++k) {
      if (SixfoldVolume({piece[0], piece[1], piece[2], piece[0], piece[2], piece[k], piece[0],
                         piece[k], piece[1], piece[1], piece[k], piece[2]}) != 0) {
        return piece;
      }
    }
  }
}

/// Several boxes on a small lattice, which touch or overlap each other.
void SolidMaker::Boxes() {
  for (LatticeSolid* solid : {&m_question.moving, &m_question.fixed}) {
    for (std::int64_t k = Between(1, 3); k > 0; --k) {
      const Point low = AnyPoint(0, 3);
      Point high = low;
      for (std::int64_t& c : high)
        c += Between(1, 3);
      AddPiece(*solid, BoxPiece(low, high));
    }
  }
  m_question.direction = Chance(0.6) ? AxisDirection() : AnyDirection();
  StepBack(Between(0, 6));
}

/// Filled boxes of two grids, with every kind of touch between the boxes of one body.
void SolidMaker::RandomVoxels() {
  const bool isWide = Chance(0.3);
  for (LatticeSolid* solid : {&m_question.moving, &m_question.fixed}) {
    Voxels voxels = Grid(2, 2, isWide ? 3 : 2, 2);
    const double part = m_random.In(0.3, 0.9);
    for (std::size_t k = 0; k < 4 * voxels.Count(2); ++k)
      voxels.Set(k % 2, k / 2 % 2, k / 4, k == 0 || Chance(part));
    voxels.AddTo(*solid);
  }
  m_question.direction = Chance(0.6) ? AxisDirection() : AnyDirection();
  Move(m_question.moving, AnyPoint(-2, 2));
  StepBack(Between(0, 5));
}

/// A peg over, or in, a slot of equal size or nearly so.
void SolidMaker::Pegs() {
  const std::int64_t width = Between(1, 3);
  const std::int64_t depth = Between(1, 3);
  Voxels plate({std::vector<std::int64_t>{-2, 0, width, width + 2},
                {-2, 0, depth, depth + 2},
                {-3, -1, 0, 2}});
  const bool isThrough = Chance(0.4);
  const bool isOpen = Chance(0.3);
  for (std::size_t k = 0; k < 27; ++k) {
    const std::size_t i = k % 3;
    const std::size_t j = k / 3 % 3;
    const std::size_t layer = k / 9;
    const bool isHole = i == 1 && (j == 1 || (isOpen && j == 0)) && (layer > 0 || isThrough);
    plate.Set(i, j, layer, !isHole);
  }
  plate.AddTo(m_question.fixed);
  const std::int64_t more = Chance(0.8) ? 0 : Between(-1, 1);
  if (width + more < 1) return Pegs();
  AddPiece(m_question.moving, BoxPiece({0, 0, 0}, {width + more, depth, Between(1, 4)}));
  Move(m_question.moving, {0, 0, Between(-3, 4)});
  m_question.direction = Chance(0.6) ? Point{0, 0, -1} : AxisDirection();
  if (Chance(0.2)) m_question.direction = AnyDirection();
}

/// A tongue in a groove of equal cross section that is wider inside than at its mouth.
void SolidMaker::Dovetails() {
  const std::int64_t slope = Between(0, 1);
  const std::int64_t length = Between(1, 4);
  LatticeSolid& fixed = m_question.fixed;
  AddPiece(fixed, PrismPiece({{-4, 0}, {-1 - slope, 0}, {-1, 2}, {-4, 2}}, 0, length));
  AddPiece(fixed, PrismPiece({{4, 0}, {1 + slope, 0}, {1, 2}, {4, 2}}, 0, length));
  AddPiece(fixed, PrismPiece({{-4, -1}, {4, -1}, {4, 0}, {-4, 0}}, 0, length));
  LatticeSolid& moving = m_question.moving;
  AddPiece(moving,
           PrismPiece({{-1 - slope, 0}, {1 + slope, 0}, {1, 2}, {-1, 2}}, 0, Between(1, 4)));
  if (Chance(0.5)) AddPiece(moving, PrismPiece({{-4, 2}, {4, 2}, {4, 3}, {-4, 3}}, 0, length));
  m_question.direction = Chance(0.8) ? AxisDirection() : AnyDirection();
  if (Chance(0.5)) {
    m_question.direction = {0, Chance(0.5) ? 1 : -1, 0};
    StepBack(Between(0, 6));
  }
}

void SolidMaker::Tetrahedra() {
  for (LatticeSolid* solid : {&m_question.moving, &m_question.fixed}) {
    for (std::int64_t k = Between(1, 2); k > 0; --k)
      AddPiece(*solid, AnyHull(4, 2));
  }
  m_question.direction = AnyDirection();
  StepBack(Between(0, 2));
}

void SolidMaker::Hulls() {
  AddPiece(m_question.moving, AnyHull(static_cast<int>(Between(4, 8)), 3));
  AddPiece(m_question.fixed, AnyHull(static_cast<int>(Between(4, 8)), 3));
  m_question.direction = AnyDirection();
  Move(m_question.moving, AnyPoint(-3, 3));
  StepBack(Between(0, 3));
}

/// A box in a cavity that it fills wholly, in part or not at all.
void SolidMaker::Cavities() {
  const std::int64_t size = Between(1, 4);
  Voxels shell({std::vector<std::int64_t>{-2, 0, size, size + 2},
                {-2, 0, size, size + 2},
                {-2, 0, size, size + 2}});
  for (std::size_t k = 0; k < 27; ++k)
    shell.Set(k % 3, k / 3 % 3, k / 9, k != 13);
  shell.AddTo(m_question.fixed);
  Point low = AnyPoint(0, static_cast<int>(size) - 1);
  Point high{};
  for (std::size_t k = 0; k < 3; ++k) {
    if (Chance(0.5)) low[k] = 0;
    high[k] = Chance(0.5) ? size : low[k] + 1;
  }
  if (Chance(0.15)) low = AnyPoint(-2, -1);
  if (Chance(0.1)) {
    low = AnyPoint(-4, -3);
    high = {size + 3, size + 3, size + 3};
  }
  AddPiece(m_question.moving, BoxPiece(low, high));
  m_question.direction = Chance(0.5) ? AxisDirection() : AnyDirection();
  if (Chance(0.2)) StepBack(Between(1, 8));
  if (Chance(0.3)) std::swap(m_question.moving, m_question.fixed);
}

/// Two bodies of one shape.
void SolidMaker::Copies() {
  AddPiece(m_question.fixed, Chance(0.5) ? BoxPiece({0, 0, 0}, {2, 2, 2}) : AnyHull(5, 3));
  if (Chance(0.3)) AddPiece(m_question.fixed, BoxPiece({3, 0, 0}, {5, 2, 2}));
  m_question.moving = m_question.fixed;
  m_question.direction = Chance(0.5) ? AxisDirection() : AnyDirection();
  if (Chance(0.8)) StepBack(Between(0, 4));
  if (Chance(0.5)) Move(m_question.moving, AnyPoint(-2, 2));
}

/// Prisms whose edges meet edges and faces.
void SolidMaker::Ridges() {
  const std::int64_t reach = Between(1, 3);
  const std::int64_t height = Between(1, 2);
  AddPiece(m_question.fixed, PrismPiece({{-reach, 0}, {reach, 0}, {0, height}}, 0, Between(1, 4)));
  AddPiece(m_question.moving,
           PrismPiece({{-reach, height}, {reach, height}, {0, 0}}, 0, Between(1, 4)));
  if (Chance(0.5)) {
    ChangePoints(m_question.moving, [](Point& p) { p = {-p[1], p[0], p[2]}; });
  }
  Move(m_question.moving, {Between(-2, 2), Between(-2, 2), height * Between(0, 3)});
  m_question.direction = Chance(0.5) ? AxisDirection() : AnyDirection();
  StepBack(Between(0, 2));
}

/// Two bodies that are mirror images of each other in a common corner.
void SolidMaker::Tips() {
  const Piece piece = AnyHull(static_cast<int>(Between(4, 6)), 3);
  const std::vector<Point> surface = SurfaceOf(piece);
  const Point tip =
      surface[static_cast<std::size_t>(m_random.Below(static_cast<int>(surface.size())))];
  AddPiece(m_question.fixed, piece);
  Piece other = piece;
  for (Point& p : other) {
    for (std::size_t k = 0; k < 3; ++k)
      p[k] = 2 * tip[k] - p[k];
  }
  AddPiece(m_question.moving, other);
  m_question.direction = AnyDirection();
  StepBack(Between(0, 3));
  if (Chance(0.3)) Move(m_question.moving, AnyPoint(-1, 1));
}

/// Teeth of one body are between those of the other, with no play or a little.
void SolidMaker::Combs() {
  const std::int64_t teeth = Between(2, 3);
  const std::int64_t pitch = Chance(0.7) ? 2 : 3;
  AddPiece(m_question.fixed, BoxPiece({0, 0, -1}, {pitch * teeth, 2, 0}));
  AddPiece(m_question.moving, BoxPiece({0, 0, 3}, {pitch * teeth, 2, 4}));
  for (std::int64_t k = 0; k < teeth; ++k) {
    AddPiece(m_question.fixed, BoxPiece({pitch * k, 0, 0}, {pitch * k + 1, 2, 2}));
    AddPiece(m_question.moving, BoxPiece({pitch * k + 1, 0, 1}, {pitch * k + 2, 2, 3}));
  }
  Move(m_question.moving, {0, Between(-1, 1), Between(-1, 2)});
  m_question.direction = Chance(0.8) ? AxisDirection() : AnyDirection();
}

/// Teeth with slopes on both sides, which fit each other everywhere.
void SolidMaker::Threads() {
  const std::int64_t teeth = Between(2, 3);
  AddPiece(m_question.fixed, BoxPiece({0, 0, -2}, {4 * teeth, 2, 0}));
  AddPiece(m_question.moving, BoxPiece({0, 0, 2}, {4 * teeth, 2, 4}));
  for (std::int64_t k = 0; k < teeth; ++k) {
    const std::int64_t at = 4 * k;
    AddPiece(m_question.fixed, PrismPiece({{at, 0}, {at + 4, 0}, {at + 2, 2}}, 0, 2));
    AddPiece(m_question.moving, PrismPiece({{at + 2, 2}, {at + 6, 2}, {at + 4, 0}}, 0, 2));
  }
  Move(m_question.moving, {4 * Between(-1, 1), Between(-1, 1), Chance(0.7) ? 0 : Between(0, 2)});
  m_question.direction = Chance(0.5) ? AxisDirection() : AnyDirection();
}

/// Adds one coordinate to another, in both bodies and the direction.
void SolidMaker::Shear() {
  const std::size_t from = static_cast<std::size_t>(Between(0, 2));
  const std::size_t to = (from + static_cast<std::size_t>(Between(1, 2))) % 3;
  const std::int64_t factor = Chance(0.5) ? Between(1, 2) : -Between(1, 2);
  const auto shear = [&](Point& p) { p[to] += factor * p[from]; };
  ChangeAll(shear);
  shear(m_question.direction);
}

void SolidMaker::Mirror() {
  const auto mirror = [](Point& p) { p[0] = -p[0]; };
  ChangeAll(mirror);
  mirror(m_question.direction);
  for (LatticeSolid* solid : {&m_question.moving, &m_question.fixed}) {
    for (std::size_t k = 0; k < solid->surface.size(); k += 3)
      std::swap(solid->surface[k + 1], solid->surface[k + 2]);
  }
}

/// Divides a few edges in two, and so the triangles at them. Requires even coordinates.
void SolidMaker::SplitEdges(std::vector<Point>& surface) {
  for (std::int64_t rounds = Between(1, 3); rounds > 0; --rounds) {
    const std::size_t t =
        3 * static_cast<std::size_t>(m_random.Below(static_cast<int>(surface.size() / 3)));
    const Point a = surface[t];
    const Point b = surface[t + 1];
    Point middle{};
    for (std::size_t k = 0; k < 3; ++k)
      middle[k] = (a[k] + b[k]) / 2;
    if ((a[0] + b[0]) % 2 != 0 || (a[1] + b[1]) % 2 != 0 || (a[2] + b[2]) % 2 != 0) continue;
    std::vector<Point> divided;
    for (std::size_t k = 0; k < surface.size(); k += 3) {
      bool isDivided = false;
      for (std::size_t c = 0; c < 3 && !isDivided; ++c) {
        const Point& p = surface[k + c];
        const Point& q = surface[k + (c + 1) % 3];
        const Point& r = surface[k + (c + 2) % 3];
        isDivided = (p == a && q == b) || (p == b && q == a);
        if (isDivided) divided.insert(divided.end(), {p, middle, r, middle, q, r});
      }
      if (!isDivided) {
        divided.insert(divided.end(), {surface[k], surface[k + 1], surface[k + 2]});
      }
    }
    surface = divided;
  }
}

/// Returns true when two points in a plane through a and b are on different sides of the line.
bool SolidMaker::AreOnBothSides(const Point& a, const Point& b, const Point& c, const Point& d) {
  std::int64_t product = 0;
  for (std::size_t k = 0; k < 3; ++k) {
    const std::size_t u = (k + 1) % 3;
    const std::size_t v = (k + 2) % 3;
    const auto normal = [&](const Point& p) {
      return (b[u] - a[u]) * (p[v] - a[v]) - (b[v] - a[v]) * (p[u] - a[u]);
    };
    product += normal(c) * normal(d);
  }
  return product < 0;
}

/// Divides an edge within a flat side, by a vertex that is a step off the edge, and fills the gap
/// with a triangle. So rounding moves a vertex that is inside an edge. On one side of the edge the
/// triangle faces outwards. On the other it is turned over, and others cover it. Changes
/// nothing where no such vertex is on the lattice.
void SolidMaker::FoldAnEdge(std::vector<Point>& surface) {
  const std::size_t count = surface.size() / 3;
  const auto first = static_cast<std::size_t>(m_random.Below(static_cast<int>(count)));
  for (std::size_t n = 0; n < 9 * count * count; ++n) {
    const std::size_t one = (first + n / (9 * count)) % count;
    const std::size_t other = n / 9 % count;
    const Point* s = &surface[3 * one];
    const Point* t = &surface[3 * other];
    const Point a = s[n % 3];
    const Point b = s[(n % 3 + 1) % 3];
    const Point c = s[(n % 3 + 2) % 3];
    const Point d = t[(n / 3 % 3 + 2) % 3];
    if (one == other || t[n / 3 % 3] != b || t[(n / 3 % 3 + 1) % 3] != a) continue;
    if (SixfoldVolume({a, b, c, a, c, d, a, d, b, b, d, c}) != 0 || !AreOnBothSides(a, b, c, d)) {
      continue;
    }
    const Point& towards = Chance(0.8) ? c : d;
    const std::int64_t at = Between(1, 2);
    Point middle{};
    bool isOnLattice = true;
    for (std::size_t k = 0; k < 3; ++k) {
      const std::int64_t fourfold = at * (b[k] - a[k]) + towards[k] - a[k];
      isOnLattice = isOnLattice && fourfold % 4 == 0;
      middle[k] = a[k] + fourfold / 4;
    }
    if (!isOnLattice || middle == d) continue;
    surface.erase(surface.begin() + static_cast<std::ptrdiff_t>(3 * other),
                  surface.begin() + static_cast<std::ptrdiff_t>(3 * other + 3));
    surface.insert(surface.end(), {b, a, middle, b, middle, d, middle, a, d});
    return;
  }
}

/// Two bodies of another family, with triangles that are turned over.
void SolidMaker::Folds() {
  void (SolidMaker::*const makers[])() = {&SolidMaker::Boxes, &SolidMaker::RandomVoxels,
                                          &SolidMaker::Pegs, &SolidMaker::Combs};
  (this->*makers[Between(0, 3)])();
  Scale(4);
  for (LatticeSolid* solid : {&m_question.moving, &m_question.fixed}) {
    for (std::int64_t k = Between(1, 3); k > 0; --k) {
      FoldAnEdge(solid->surface);
      if (Chance(0.5))
        std::rotate(solid->surface.begin(), solid->surface.end() - 9, solid->surface.end());
    }
  }
}

/// Adds a triangle of a solid and its copy that faces the other way.
void SolidMaker::AddSheet(LatticeSolid& solid, const std::array<Point, 3>& triangle) {
  const Point& a = triangle[0];
  const Point& b = triangle[1];
  const Point& c = triangle[2];
  std::vector<Point> sheet{a, b, c, a, c, b};
  if (Chance(0.5)) std::rotate(sheet.begin(), sheet.begin() + 3, sheet.end());
  solid.surface.insert(solid.surface.end(), sheet.begin(), sheet.end());
}

/// Adds a box over a height and a box under it, which overlap, touch or share an edge as seen from
/// above, and sheets in the faces at that height. A sheet may be partly in the face of each box.
void SolidMaker::AddStair(LatticeSolid& solid, std::int64_t height) {
  const std::int64_t width = Between(2, 8);
  const std::int64_t depth = Between(1, 6);
  const std::int64_t toUpper = Between(1, static_cast<int>(width));
  const std::int64_t fromLower = Between(0, static_cast<int>(toUpper));
  const std::int64_t x = Between(-4, 4);
  const std::int64_t y = Between(-3, 3);
  AddPiece(solid, BoxPiece({x, y, height}, {x + toUpper, y + depth, height + Between(1, 4)}));
  const bool hasLower = fromLower < width && Chance(0.9);
  if (hasLower) {
    AddPiece(solid,
             BoxPiece({x + fromLower, y, height - Between(1, 4)}, {x + width, y + depth, height}));
  }
  const std::int64_t most = hasLower ? width : toUpper;
  for (std::int64_t k = Between(1, 3); k > 0; --k) {
    std::array<Point, 3> t{};
    for (Point& p : t)
      p = {x + Between(0, static_cast<int>(most)), y + Between(0, static_cast<int>(depth)), height};
    const std::int64_t area =
        (t[1][0] - t[0][0]) * (t[2][1] - t[0][1]) - (t[1][1] - t[0][1]) * (t[2][0] - t[0][0]);
    if (area != 0) AddSheet(solid, t);
  }
}

/// Bodies of two boxes with sheets in the plane in which the boxes meet.
void SolidMaker::Stairs() {
  AddStair(m_question.moving, 0);
  AddStair(m_question.fixed, Chance(0.7) ? 0 : Between(-3, 3));
  if (Chance(0.3)) {
    Scale(4);
    FoldAnEdge(m_question.moving.surface);
    FoldAnEdge(m_question.fixed.surface);
  }
  m_question.direction = Chance(0.6) ? AxisDirection() : AnyDirection();
  if (Chance(0.3)) StepBack(Between(1, 3));
}

/// Several fixed bodies, which touch or overlap each other.
void SolidMaker::SeveralBodies() {
  const bool isWide = Chance(0.4);
  LatticeSolid& fixed = m_question.fixed;
  for (std::int64_t k = Between(2, 3); k > 0; --k) {
    const std::size_t before = fixed.surface.size();
    if (Chance(0.3)) {
      AddStair(fixed, Between(0, 2));
    } else {
      const Point low = AnyPoint(0, isWide ? 9 : 3);
      const std::int64_t size = Between(1, isWide ? 9 : 4);
      AddPiece(fixed, BoxPiece(low, {low[0] + size, low[1] + size, low[2] + Between(1, 9)}));
    }
    m_fixedBodies.push_back((fixed.surface.size() - before) / 3);
  }
  for (std::int64_t k = Between(1, 3); k > 0; --k) {
    const Point low = AnyPoint(0, isWide ? 12 : 3);
    AddPiece(m_question.moving, BoxPiece(low, {low[0] + Between(1, 2), low[1] + Between(1, 2),
                                               low[2] + Between(1, 3)}));
  }
  m_question.direction = Chance(0.6) ? AxisDirection() : AnyDirection();
}

/// Two bodies of another family, or one in a room, with triangles that an offset makes flat.
void SolidMaker::Flattened() {
  void (SolidMaker::*const makers[])() = {&SolidMaker::Boxes, &SolidMaker::Cavities,
                                          &SolidMaker::Pegs, &SolidMaker::Hulls};
  if (Chance(0.6)) {
    (this->*makers[Between(0, 3)])();
  } else {
    Boxes();
    Move(m_question.moving, AnyPoint(-2, 2));
    m_question.fixed = {};
    AddPiece(m_question.fixed, BoxPiece({-16, -16, -16}, {20, 20, 20}));
    if (Chance(0.5)) std::swap(m_question.moving, m_question.fixed);
  }
  Scale(4);
  m_isFlattened = true;
  std::vector<Point>& surface = m_question.moving.surface;
  for (std::int64_t k = Between(1, 4); k > 0; --k) {
    // An edge is divided in its middle on one side alone, and a flat triangle fills the gap.
    const std::size_t count = surface.size() / 3;
    const std::size_t t = 3 * static_cast<std::size_t>(m_random.Below(static_cast<int>(count)));
    const Point a = surface[t];
    const Point b = surface[t + 1];
    const Point c = surface[t + 2];
    const Point middle{(a[0] + b[0]) / 2, (a[1] + b[1]) / 2, (a[2] + b[2]) / 2};
    if ((a[0] + b[0]) % 2 != 0 || (a[1] + b[1]) % 2 != 0 || (a[2] + b[2]) % 2 != 0) continue;
    if (middle == c || middle == a) continue;
    surface.erase(surface.begin() + static_cast<std::ptrdiff_t>(t),
                  surface.begin() + static_cast<std::ptrdiff_t>(t) + 3);
    const std::vector<Point> divided{a, b, middle, a, middle, c, middle, b, c};
    surface.insert(Chance(0.7) ? surface.begin() : surface.end(), divided.begin(), divided.end());
  }
}

void SolidMaker::Shuffle(std::vector<Point>& surface) {
  for (std::size_t k = surface.size() / 3; k > 0; --k) {
    const auto other = static_cast<std::size_t>(m_random.Below(static_cast<int>(k)));
    const auto first = surface.begin() + static_cast<std::ptrdiff_t>(3 * (k - 1));
    const auto second = surface.begin() + static_cast<std::ptrdiff_t>(3 * other);
    if (first != second) std::swap_ranges(first, first + 3, second);
    std::rotate(first, first + Between(0, 2), first + 3);
  }
}

/// Changes a scene in ways that keep, or hardly change, who touches whom.
void SolidMaker::Disturb() {
  if (Chance(0.4)) Shear();
  if (Chance(0.2)) Shear();
  if (Chance(0.3)) Mirror();
  if (Chance(0.3)) {
    Scale(4);
    if (!m_isFlattened) SplitEdges(m_question.moving.surface);
    if (m_fixedBodies.empty()) SplitEdges(m_question.fixed.surface);
  }
  if (Chance(0.15)) {
    Scale(64);
    Move(m_question.moving, AnyPoint(-1, 1));
  }
  if (Chance(0.5)) Shuffle(m_question.moving.surface);
  if (Chance(0.5) && m_fixedBodies.empty()) Shuffle(m_question.fixed.surface);
}

SolidScene SolidMaker::Finish(std::string name) {
  SolidScene scene;
  scene.name = std::move(name);
  scene.question = m_question;
  scene.unit = std::ldexp(1.0, static_cast<int>(Between(-3, 3)));
  scene.fixedBodies = m_fixedBodies;
  if (!m_isFlattened) return scene;
  // Each corner is moved along x by less than half a unit, and equal corners alike.
  const std::uint64_t salt = static_cast<std::uint64_t>(Between(0, 1000));
  for (const Point& p : m_question.moving.surface) {
    std::uint64_t hash = salt;
    for (const std::int64_t c : p)
      hash = (hash + static_cast<std::uint64_t>(c)) * 0x9e3779b97f4a7c15u;
    const double part = 0.125 * (static_cast<double>(hash >> 60) - 7.5) / 3.0;
    scene.beforeOffset.push_back(
        {(static_cast<double>(p[0]) + std::round(64 * part) / 64) * scene.unit,
         static_cast<double>(p[1]) * scene.unit, static_cast<double>(p[2]) * scene.unit});
  }
  return scene;
}

struct SolidFamily {
  const char* name;
  void (SolidMaker::*make)();
};

const SolidFamily solidFamilies[] = {
    {"boxes", &SolidMaker::Boxes},
    {"voxels", &SolidMaker::RandomVoxels},
    {"pegs", &SolidMaker::Pegs},
    {"dovetails", &SolidMaker::Dovetails},
    {"tetrahedra", &SolidMaker::Tetrahedra},
    {"hulls", &SolidMaker::Hulls},
    {"cavities", &SolidMaker::Cavities},
    {"copies", &SolidMaker::Copies},
    {"ridges", &SolidMaker::Ridges},
    {"tips", &SolidMaker::Tips},
    {"combs", &SolidMaker::Combs},
    {"threads", &SolidMaker::Threads},
    {"folds", &SolidMaker::Folds},
    {"stairs", &SolidMaker::Stairs},
    {"several", &SolidMaker::SeveralBodies},
    {"flattened", &SolidMaker::Flattened},
};

} // namespace

std::size_t SolidFamilyCount() {
  return std::size(solidFamilies);
}

const char* SolidFamilyName(std::size_t family) {
  return solidFamilies[family].name;
}

SolidScene MakeSolidScene(std::size_t family, std::uint64_t seed) {
  // A new family does not change the scenes of the other families.
  constexpr std::uint64_t mostFamilies = 64;
  SolidMaker maker(seed * mostFamilies + family);
  (maker.*solidFamilies[family].make)();
  maker.Disturb();
  return maker.Finish(std::string(SolidFamilyName(family)) + " " + std::to_string(seed));
}

std::vector<Coord3> CornersOf(const SolidScene& scene, const LatticeSolid& solid) {
  std::vector<Coord3> corners;
  for (const LatticePoint& p : solid.surface) {
    corners.push_back({static_cast<double>(p[0]) * scene.unit,
                       static_cast<double>(p[1]) * scene.unit,
                       static_cast<double>(p[2]) * scene.unit});
  }
  return corners;
}

std::string Describe(const SolidScene& scene) {
  std::string text = scene.name + ", unit " + std::to_string(scene.unit) + '\n';
  const auto write = [&text](const LatticePoint& p) {
    text += '(' + std::to_string(p[0]) + ", " + std::to_string(p[1]) + ", " + std::to_string(p[2]) +
            ") ";
  };
  text += "direction ";
  write(scene.question.direction);
  for (const LatticeSolid* solid : {&scene.question.moving, &scene.question.fixed}) {
    text += solid == &scene.question.moving ? "\nmoving" : "fixed";
    for (std::size_t k = 0; k < solid->surface.size(); ++k) {
      if (k % 3 == 0) text += "\n  " + std::to_string(k / 3) + ": ";
      write(solid->surface[k]);
    }
    text += '\n';
  }
  return text;
}

} // namespace reference
